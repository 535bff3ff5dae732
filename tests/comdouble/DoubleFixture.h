#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>

#include "tests/comdouble/MemoryWatch.h"
#include "tests/comdouble/RawCalls.h"
#include "tests/support/SampleFile.h"

namespace test {

inline constexpr base::TextView kAll = u"SELECT * FROM Konto";

/// The double over a file with two rows, in an apartment of its own. After each test nobody may hold an object, owe a
/// record or have made a call that no caller may make.
class DoubleFixture : public testing::Test {
protected:
    using Object = test::Object;

    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        registration_.emplace();
        memory_.emplace();
        const base::Bytes bytes = sampleFile({accounts()}, u"geheim");
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    void TearDown() override {
        EXPECT_EQ(comdouble::liveObjects(), 0);
        EXPECT_EQ(comdouble::recordsNotFilledIn(), 0);
        EXPECT_EQ(comdouble::breaches() - breachesTaken_, 0);
        EXPECT_EQ(memory_->notFreed(), 0U);
        EXPECT_EQ(memory_->freedAgain(), 0U);
        memory_.reset();
        leaveCom();
        std::filesystem::remove(path_);
    }

    void leaveCom() {
        if (!registration_) return;
        registration_.reset();
        CoUninitialize();
    }

    /// Those that a test has made on purpose, since the last time it asked.
    std::int32_t takeBreaches() {
        const std::int32_t taken = comdouble::breaches() - breachesTaken_;
        breachesTaken_ += taken;
        return taken;
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

    static Object openRecordset(const Object& connection, base::TextView source, std::int32_t cursorType,
                                std::int32_t lockType) {
        Object recordset = create(comdouble::Registration::recordsetClass());
        EXPECT_EQ(
            invoke(recordset, u"Open", kMethod, {of(source), of(connection), of(cursorType), of(lockType), of(-1)})
                .number(),
            0);
        return recordset;
    }

    static Object field(const Object& recordset, base::TextView name) {
        return get(get(recordset, u"Fields").object(), u"Item", {of(name)}).object();
    }

private:
    static Object adopt(IDispatch* object) {
        Object adopted(*object);
        object->Release();
        return adopted;
    }

    static SampleTable accounts() {
        SampleTable table;
        table.design.name = u"Konto";
        jet::ColumnDesign number{u"Nr", jet::ColumnType::Long};
        number.isAutoNumber = true;
        table.design.columns = {number,
                                {u"Name", jet::ColumnType::Text, 20},
                                {u"Recht", jet::ColumnType::Boolean},
                                {u"Notiz", jet::ColumnType::Memo}};
        table.design.indexes = {
            {u"PrimaryKey", {{u"Nr"}}, true, jet::IndexDefinition::kUnique | jet::IndexDefinition::kRequired}};
        table.rows = {{1, base::Text(u"A\0B", 3), true, base::Text(u"lang")},
                      {2, base::Text(u"Meier"), false, base::Null{}}};
        return table;
    }

    const std::filesystem::path path_ =
        std::filesystem::temp_directory_path() / ("double-" + std::to_string(GetCurrentProcessId()) + ".mdb");
    std::optional<comdouble::Registration> registration_;
    std::optional<comdouble::MemoryWatch> memory_;
    std::int32_t breachesTaken_ = 0;
};

}  // namespace test
