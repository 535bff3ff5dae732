#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "tests/comdouble/Apartment.h"
#include "tests/comdouble/RawCalls.h"
#include "tests/support/SampleFile.h"

namespace test {

inline constexpr base::TextView kAll = u"SELECT * FROM Konto";

/// The double over a file with two rows, in an apartment of its own.
class DoubleFixture : public testing::Test {
protected:
    using Object = test::Object;

    void SetUp() override {
        const base::Bytes bytes = sampleFile({kontoTable()}, u"geheim");
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    void TearDown() override {
        apartment.expectNothingLeft();
        std::filesystem::remove(path_);
    }

    static Object create(const CLSID& id) {
        void* object = nullptr;
        const HRESULT result = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &object);
        EXPECT_EQ(result, S_OK);
        return object == nullptr ? Object() : adopt(static_cast<IDispatch*>(object));
    }

    /// Names the provider, the file and the password.
    void prepare(const Object& connection, base::TextView password = u"geheim") const {
        invoke(connection, u"Provider", DISPATCH_PROPERTYPUT, {of(u"Microsoft.Jet.OLEDB.4.0")});
        const Object properties = get(connection, u"Properties").object();
        const base::Text path = path_.u16string();
        for (const auto& [name, value] : {std::pair<base::TextView, base::TextView>{u"Data Source", path},
                                          {u"Jet OLEDB:Database Password", password}})
            EXPECT_EQ(invoke(get(properties, u"Item", {of(name)}).object(), u"Value", DISPATCH_PROPERTYPUT, {of(value)})
                          .result,
                      S_OK);
    }

    Object openConnection() const {
        Object connection = create(comdouble::Registration::connectionClass());
        prepare(connection);
        EXPECT_EQ(invoke(connection, u"Open", kMethod, {}).number(), 0);
        return connection;
    }

    /// A static one. @param lockType  1 read-only, 2 pessimistic
    static Object openRecordset(const Object& connection, base::TextView source, std::int32_t lockType) {
        Object recordset = create(comdouble::Registration::recordsetClass());
        EXPECT_EQ(
            invoke(recordset, u"Open", kMethod, {of(source), of(connection), of(3), of(lockType), of(-1)}).number(), 0);
        return recordset;
    }

    static Object field(const Object& recordset, base::TextView name) {
        return get(get(recordset, u"Fields").object(), u"Item", {of(name)}).object();
    }

    comdouble::Apartment apartment;

private:
    static Object adopt(IDispatch* object) {
        Object adopted(*object);
        object->Release();
        return adopted;
    }

    const std::filesystem::path path_ =
        std::filesystem::temp_directory_path() / ("double-" + std::to_string(GetCurrentProcessId()) + ".mdb");
};

}  // namespace test
