#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "accounts/AccountTable.h"
#include "tests/conformance/Backend.h"
#include "tests/support/Expect.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"
#include "tools/kontodb/AccountFile.h"

namespace conformance {

using base::Text;
using base::Value;
using test::errorOf;

inline constexpr base::TextView kPassword = u"GeheiM";
inline constexpr base::TextView kAll = u"SELECT * FROM Benutzerkonto ORDER BY BenKTO_ID";

/// An account file of the test's own with three accounts and a table `Werte` with every kind of column, used through
/// the Backend of this program. After each test the file must be sound and no object may be held any more.
class Conformance : public testing::Test {
protected:
    Conformance() { write(test::sampleFile({accounts(), values()}, Text(kPassword))); }

    void TearDown() override {
        backend->expectNothingLeft();
        backend.reset();
        EXPECT_EQ(test::faultsIn(bytes(), Text(kPassword)), "");
        std::filesystem::remove(path);
    }

    static test::SampleTable accounts() {
        test::SampleTable table;
        table.design = kontodb::accountTableDesign();
        table.design.indexes[1].flags = jet::IndexDefinition::kUnique;
        table.rows = {{1, Text(u"Müller"), Text(u"p1"), Text(u"S:\\Eins\\"), true},
                      {2, Text(u"Aal"), Text(u"p2"), Value(base::Null{}), false},
                      {3, Text(u"Meier"), Value(base::Null{}), Text(u"S:\\Drei"), false}};
        return table;
    }

    static test::SampleTable values() {
        test::SampleTable table;
        table.design.name = u"Werte";
        table.design.columns = {{u"Nr", jet::ColumnType::Long},        {u"Byte", jet::ColumnType::Byte},
                                {u"Ganz", jet::ColumnType::Integer},   {u"Lang", jet::ColumnType::Long},
                                {u"Geld", jet::ColumnType::Currency},  {u"Einfach", jet::ColumnType::Single},
                                {u"Doppelt", jet::ColumnType::Double}, {u"Zeit", jet::ColumnType::DateTime},
                                {u"Text", jet::ColumnType::Text, 50},  {u"Recht", jet::ColumnType::Boolean},
                                {u"Notiz", jet::ColumnType::Memo},     {u"Roh", jet::ColumnType::Binary, 20}};
        return table;
    }

    void write(const base::Bytes& content) const {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    }
    base::Bytes bytes() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    ado::ConnectionFactory& factory() const { return *backend->connections; }

    /// A closed connection with the provider set.
    std::unique_ptr<ado::Connection> prepare(base::TextView password = kPassword, base::TextView file = {}) const {
        auto connection = factory().createConnection();
        connection->setProvider(u"Microsoft.Jet.OLEDB.4.0");
        connection->Properties().Item(u"Data Source").setValue(file.empty() ? path.u16string() : Text(file));
        connection->Properties().Item(u"Jet OLEDB:Database Password").setValue(Text(password));
        return connection;
    }
    std::unique_ptr<ado::Connection> connect() const {
        auto connection = prepare();
        connection->Open(u"", u"", u"", ado::adOptionUnspecified);
        return connection;
    }
    std::unique_ptr<ado::Recordset> open(ado::Connection& connection, base::TextView source,
                                         ado::LockType lock = ado::LockType::adLockReadOnly) const {
        auto rows = factory().createRecordset();
        rows->Open(source, connection, ado::CursorType::adOpenStatic, lock, ado::adOptionUnspecified);
        return rows;
    }
    std::unique_ptr<ado::Recordset> openToChange(ado::Connection& connection, base::TextView source) const {
        return open(connection, source, ado::LockType::adLockPessimistic);
    }

    static Value get(ado::Recordset& rows, base::TextView field) { return rows.Fields().Item(field).Value(); }
    static void set(ado::Recordset& rows, base::TextView field, const Value& value) {
        rows.Fields().Item(field).setValue(value);
    }

    /// "1 Müller|2 Aal|", as read from the file; a null is shown as a dash.
    std::string names(ado::Connection& connection, base::TextView source = kAll) const {
        std::string all;
        const auto rows = open(connection, source);
        for (; !rows->isEOF(); rows->MoveNext()) {
            const Value name = get(*rows, u"BenKTO_Name");
            all += std::to_string(std::get<std::int32_t>(get(*rows, u"BenKTO_ID"))) + " " +
                   (base::isNull(name) ? "-" : base::toUtf8(std::get<Text>(name))) + "|";
        }
        rows->Close();
        return all;
    }

    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("conformance-" + std::to_string(std::random_device()()) + ".mdb");
    std::optional<Backend> backend = makeBackend();
};

}  // namespace conformance
