#include <functional>
#include <gmock/gmock.h>
#include <string>

#include "ado/embedded/Factory.h"
#include "base/RuntimeError.h"
#include "jet/Errors.h"
#include "tests/support/Expect.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"

namespace ado::embedded {
namespace {

using base::Value;
using test::errorOf;

constexpr base::TextView kPath = u"C:\\Daten\\\\Probe.mdb";

class Embedded : public testing::Test {
protected:
    static base::Bytes file() {
        test::SampleTable table;
        table.design.name = u"Konto";
        table.design.columns = {{u"Nr", jet::ColumnType::Long},
                                {u"Name", jet::ColumnType::Text, 50},
                                {u"Recht", jet::ColumnType::Boolean},
                                {u"Notiz", jet::ColumnType::Memo}};
        table.rows = {{1, Value(base::Text(u"Müller")), true, Value(base::Text(9000, u'ß'))},
                      {2, Value(base::Null{}), false, Value(base::Null{})}};
        return test::sampleFile({table}, u"GeheiM");
    }

    /// The one file there is; `opened` counts.
    std::unique_ptr<jet::Storage> storageOf(const base::Text& path) {
        if (path != kPath) throw jet::fileNotFound(path);
        ++opened;
        return machine.storage();
    }

    void nameFile(Connection& connection, base::TextView password = u"GeheiM") {
        connection.setProvider(u"Microsoft.Jet.OLEDB.4.0");
        connection.Properties().Item(u"Data Source").setValue(base::Text(kPath));
        connection.Properties().Item(u"Jet OLEDB:Database Password").setValue(base::Text(password));
    }

    std::unique_ptr<ado::Connection> openConnection() {
        auto connection = factory.createConnection();
        nameFile(*connection);
        connection->Open(u"", u"", u"", -1);
        return connection;
    }

    std::unique_ptr<ado::Recordset> openAll(ado::Connection& connection, LockType lock = LockType::adLockReadOnly) {
        auto rows = factory.createRecordset();
        rows->Open(u"SELECT * FROM Konto", connection, CursorType::adOpenStatic, lock, -1);
        return rows;
    }

    using Connection = ado::Connection;

    test::Machine machine{file()};
    int opened = 0;
    Factory factory{[this](const base::Text& path) { return storageOf(path); }};
};

TEST_F(Embedded, ReadsRowsAsASnapshotThatOutlivesTheConnection) {
    auto connection = openConnection();
    EXPECT_EQ(connection->State(), adStateOpen);
    auto rows = openAll(*connection);
    connection->Close();
    EXPECT_EQ(connection->State(), adStateClosed);
    connection.reset();

    ASSERT_EQ(rows->RecordCount(), 2);
    ado::Field& name = rows->Fields().Item(u"NAME");
    EXPECT_EQ(rows->Fields().Count(), 4);
    EXPECT_EQ(name.Name(), u"Name");
    EXPECT_EQ(name.Value(), Value(base::Text(u"Müller")));
    EXPECT_EQ(rows->Fields().Item(0).Value(), Value(1));
    EXPECT_EQ(rows->Fields().Item(u"recht").Value(), Value(true));
    EXPECT_EQ(rows->Fields().Item(u"Notiz").Value(), Value(base::Text(9000, u'ß')));
    rows->MoveNext();
    EXPECT_FALSE(rows->isEOF());
    EXPECT_EQ(name.Value(), Value(base::Null{}));
    EXPECT_EQ(rows->Fields().Item(u"Notiz").Value(), Value(base::Null{}));
    rows->MoveNext();
    EXPECT_TRUE(rows->isEOF());
    EXPECT_EQ(errorOf([&] { static_cast<void>(name.Value()); }), 3021);
    EXPECT_EQ(errorOf([&] { rows->MoveNext(); }), 3021);
    EXPECT_EQ(opened, 1);
}

TEST_F(Embedded, RefusesWhatAdoRefuses) {
    auto closed = factory.createConnection();
    auto open = openConnection();
    auto closedRows = factory.createRecordset();
    auto openRows = openAll(*open);
    auto batch = openAll(*open, LockType::adLockBatchOptimistic);
    auto updatable = openAll(*open, LockType::adLockPessimistic);
    updatable->MoveNext();
    updatable->MoveNext();
    const auto openWith = [&](base::TextView provider, base::TextView password, base::TextView path = kPath) {
        auto connection = factory.createConnection();
        if (!provider.empty()) nameFile(*connection, password);
        if (!provider.empty()) connection->Properties().Item(u"data source").setValue(base::Text(path));
        connection->Open(u"", u"", u"", -1);
    };
    const auto select = [&](ado::Recordset& rows, ado::Connection& connection, base::TextView source) {
        rows.Open(source, connection, CursorType::adOpenStatic, LockType::adLockReadOnly, -1);
    };
    const struct {
        std::string what;
        std::function<void()> action;
        std::int32_t number;
    } cases[] = {
        {"properties before the provider", [&] { closed->Properties().Item(u"Data Source"); }, 3265},
        {"no provider", [&] { openWith(u"", u""); }, 3706},
        {"another provider", [&] { closed->setProvider(u"MSDASQL"); }, 3706},
        {"the provider in small letters", [&] { closed->setProvider(u"microsoft.jet.oledb.4.0"); }, 0},
        {"no such property", [&] { closed->Properties().Item(u"Mode"); }, 3265},
        {"a property that is a number", [&] { closed->Properties().Item(u"Data Source").setValue(5); }, 13},
        {"no such file", [&] { openWith(u"Jet", u"GeheiM", u"X:\\Y.mdb"); }, -2147467259},
        {"wrong password", [&] { openWith(u"Jet", u"geheim"); }, -2147217843},
        {"some user", [&] { closed->Open(u"", u"Otto", u"", -1); }, -2147217843},
        {"connection string", [&] { closed->Open(u"Mode=1", u"", u"", -1); }, 3001},
        {"close while closed", [&] { closed->Close(); }, 3704},
        {"execute while closed", [&] { closed->Execute(u"DELETE FROM Konto"); }, 3704},
        {"open twice", [&] { open->Open(u"", u"", u"", -1); }, 3705},
        {"provider while open", [&] { open->setProvider(u"Microsoft.Jet.OLEDB.4.0"); }, 3705},
        {"property while open", [&] { open->Properties().Item(u"Data Source").setValue(base::Text()); }, 3705},
        {"rows of a closed connection", [&] { select(*closedRows, *closed, u"SELECT * FROM Konto"); }, 3709},
        {"rows of no table", [&] { select(*closedRows, *open, u"SELECT * FROM Kunde"); }, -2147217865},
        {"broken statement", [&] { select(*closedRows, *open, u"SELECT * FROM Konto WHERE 'a''"); }, -2147217900},
        {"rows opened twice", [&] { select(*openRows, *open, u"SELECT * FROM Konto"); }, 3705},
        {"count of closed rows", [&] { closedRows->RecordCount(); }, 3704},
        {"end of closed rows", [&] { closedRows->isEOF(); }, 3704},
        {"step in closed rows", [&] { closedRows->MoveNext(); }, 3704},
        {"fields of closed rows", [&] { closedRows->Fields(); }, 3704},
        {"close of closed rows", [&] { closedRows->Close(); }, 3704},
        {"no such field", [&] { openRows->Fields().Item(u"Name "); }, 3265},
        {"no such field number", [&] { openRows->Fields().Item(4); }, 3265},
        {"new row, read-only lock", [&] { openRows->AddNew(); }, 3251},
        {"value, read-only lock", [&] { openRows->Fields().Item(0).setValue(5); }, 3251},
        {"new row, batch lock", [&] { batch->AddNew(); }, 3251},
        {"update, read-only lock", [&] { openRows->Update(); }, 3251},
        {"update with nothing assigned", [&] { updatable->Update(); }, 0},
        {"value behind the last row", [&] { updatable->Fields().Item(0).setValue(5); }, 3021},
        {"new row in closed rows", [&] { closedRows->AddNew(); }, 3704},
        {"rows of an UPDATE", [&] { select(*closedRows, *open, u"UPDATE Konto SET Nr = 1"); }, -2147467259},
        {"execute on no table", [&] { open->Execute(u"DELETE FROM Kunde"); }, -2147217865},
        {"broken execute", [&] { open->Execute(u"DELETE Konto"); }, -2147217900},
        {"close, then open again",
         [&] {
             openRows->Close();
             select(*openRows, *open, u"SELECT * FROM Konto WHERE Nr = 2");
             EXPECT_EQ(openRows->RecordCount(), 1);
         },
         0},
    };
    for (const auto& [what, action, number] : cases)
        EXPECT_EQ(errorOf(action), number) << what;
    EXPECT_EQ(closedRows->State(), adStateClosed);
    EXPECT_EQ(openRows->State(), adStateOpen);
}

}  // namespace
}  // namespace ado::embedded
