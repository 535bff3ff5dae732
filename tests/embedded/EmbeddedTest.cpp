#include <functional>
#include <gmock/gmock.h>
#include <string>

#include "ado/embedded/AdoError.h"
#include "ado/embedded/Factory.h"
#include "base/RuntimeError.h"
#include "tests/support/Expect.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace ado::embedded {
namespace {

using base::Text;
using base::Value;
using test::errorOf;

/// Behaviour of the embedded engine only; tests/conformance has what both ways to the database share.
class Embedded : public testing::Test {
protected:
    ~Embedded() override { EXPECT_EQ(test::faultsIn(machine.file()), ""); }
    Embedded() : connection(connect()) {}
    Embedded(const Embedded&) = delete;
    Embedded& operator=(const Embedded&) = delete;

    std::unique_ptr<ado::Connection> connect() {
        auto made = factory.createConnection();
        made->setProvider(u"Microsoft.Jet.OLEDB.4.0");
        made->Open(u"", u"", u"", -1);
        return made;
    }

    std::unique_ptr<ado::Recordset> open(base::TextView rest = {}, LockType lock = LockType::adLockPessimistic) {
        auto rows = factory.createRecordset();
        rows->Open(u"SELECT * FROM Konto " + Text(rest), *connection, CursorType::adOpenStatic, lock, -1);
        return rows;
    }

    static Value get(ado::Recordset& rows, base::TextView field) { return rows.Fields().Item(field).Value(); }
    static void set(ado::Recordset& rows, base::TextView field, const Value& value) {
        rows.Fields().Item(field).setValue(value);
    }

    /// The name of account 1 in the file now.
    Value storedName() { return get(*open(u"WHERE Nr = 1"), u"Name"); }

    test::Machine machine{test::sampleFile({test::kontoTable()})};
    Factory factory{[this](const Text&) { return machine.storage(); }};
    std::unique_ptr<ado::Connection> connection;
};

TEST_F(Embedded, ASnapshotOutlivesItsConnection) {
    const auto rows = open(u"ORDER BY Nr");
    ado::Field& note = rows->Fields().Item(u"NOTIZ");
    connection->Close();
    connection.reset();
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(note.Value(), Value(Text(3000, u'ß')));
    rows->MoveNext();
    EXPECT_EQ(note.Value(), Value(base::Null{}));
}

TEST_F(Embedded, RefusesWhatAdoRefuses) {
    const auto closed = factory.createConnection();
    const auto closedRows = factory.createRecordset();
    const auto readOnly = open({}, LockType::adLockReadOnly);
    const auto batch = open({}, LockType::adLockBatchOptimistic);
    const auto pending = open();
    pending->AddNew();
    const auto atEnd = open(u"WHERE Nr = 1");
    atEnd->MoveNext();
    const struct {
        const char* what;
        std::function<void()> action;
        std::int32_t number;
    } cases[] = {
        {"no provider", [&] { closed->Open(u"", u"", u"", -1); }, 3706},
        {"another provider", [&] { closed->setProvider(u"MSDASQL"); }, 3706},
        {"the provider in small letters", [&] { closed->setProvider(u"microsoft.jet.oledb.4.0"); }, 0},
        {"a property that is a number", [&] { closed->Properties().Item(u"Data Source").setValue(5); }, 13},
        {"a user name", [&] { closed->Open(u"", u"Otto", u"", -1); }, -2147217843},
        {"connection string", [&] { closed->Open(u"Mode=1", u"", u"", -1); }, 3001},
        {"fields of closed rows", [&] { closedRows->Fields(); }, 3704},
        {"new row, batch lock", [&] { batch->AddNew(); }, 3251},
        {"update, read-only lock", [&] { readOnly->Update(); }, 3251},
        {"update with nothing assigned", [&] { atEnd->Update(); }, 0},
        {"value after the last row", [&] { set(*atEnd, u"Name", Text(u"x")); }, 3021},
        {"close with a pending row", [&] { pending->Close(); }, 3219},
        {"rows of an UPDATE",
         [&] {
             closedRows->Open(u"UPDATE Konto SET Nr = 1", *connection, CursorType::adOpenStatic,
                              LockType::adLockReadOnly, -1);
         },
         -2147467259},
    };
    for (const auto& [what, action, number] : cases)
        EXPECT_EQ(errorOf(action), number) << what;
    EXPECT_EQ(closedRows->State(), adStateClosed);
}

TEST_F(Embedded, MoveNextWritesTheChangedRow) {
    auto rows = open(u"WHERE Nr = 1");
    set(*rows, u"NAME", Text(u"Aal"));
    rows->MoveNext();
    EXPECT_TRUE(rows->isEOF());
    EXPECT_EQ(storedName(), Value(Text(u"Aal")));
}

TEST_F(Embedded, AddNewIsRefusedIfTheFileCannotBeWritten) {
    auto rows = open();
    const base::Bytes before = machine.file();
    for (const auto& [reason, number] :
         {std::pair(test::Machine::Refusal::ReadOnly, -2147217911), {test::Machine::Refusal::InUse, -2147217887}}) {
        machine.refuseWriting(reason);
        EXPECT_EQ(errorOf([&] { rows->AddNew(); }), number);
        EXPECT_EQ(errorOf([&] { connection->Execute(u"DELETE FROM Konto"); }), -2147467259);
    }
    EXPECT_EQ(recordsetError(jet::readOnly()).description(),
              u"Aktualisieren nicht möglich. Datenbank oder Objekt ist schreibgeschützt.");
    EXPECT_EQ(machine.file(), before);
    EXPECT_EQ(machine.journal(), std::nullopt);
    // Nothing is pending, and reading still works.
    EXPECT_EQ(get(*rows, u"Nr"), Value(1));
    rows->Close();
}

TEST_F(Embedded, WritesNothingOverAClosedConnection) {
    auto rows = open();
    set(*rows, u"Name", Text(u"zu spät"));
    connection->Close();
    EXPECT_EQ(errorOf([&] { rows->Update(); }), 3709);
    EXPECT_EQ(errorOf([&] { rows->AddNew(); }), 3709);
    connection = connect();
    EXPECT_EQ(storedName(), Value(Text(u"Müller")));
}

}  // namespace
}  // namespace ado::embedded
