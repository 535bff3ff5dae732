#include <functional>
#include <gmock/gmock.h>
#include <string>

#include "ado/embedded/Factory.h"
#include "base/RuntimeError.h"
#include "jet/sql/SelectExecutor.h"
#include "tests/support/Expect.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace ado::embedded {
namespace {

using base::Text;
using base::Value;
using test::errorOf;

constexpr std::int32_t kMultiStep = -2147217887;
constexpr std::int32_t kDuplicate = -2147467259;
constexpr std::int32_t kRowChanged = -2147217864;
constexpr std::int32_t kRowDeleted = -2147217885;

base::Bytes accounts() {
    test::SampleTable table;
    table.design.name = u"Konto";
    jet::ColumnDesign number{u"Nr", jet::ColumnType::Long};
    number.isAutoNumber = true;
    table.design.columns = {number,
                            {u"Name", jet::ColumnType::Text, 20},
                            {u"Recht", jet::ColumnType::Boolean},
                            {u"Klein", jet::ColumnType::Byte},
                            {u"Notiz", jet::ColumnType::Memo}};
    table.design.indexes = {
        {u"PrimaryKey", {{u"Nr"}}, true, jet::IndexDefinition::kUnique | jet::IndexDefinition::kRequired},
        {u"Name", {{u"Name"}}, false, jet::IndexDefinition::kUnique}};
    table.rows = {{1, Text(u"Müller"), true, std::uint8_t{7}, Text(3000, u'ß')},
                  {2, Text(u"Meier"), false, Value(base::Null{}), Value(base::Null{})}};
    return test::sampleFile({table});
}

/// Storage whose file cannot be opened for writing.
class RefusingStorage : public jet::Storage {
public:
    RefusingStorage(std::unique_ptr<jet::Storage> storage, const jet::Refusal& refusal)
        : storage_(std::move(storage)), refusal_(refusal) {}
    const Text& path() const override { return storage_->path(); }
    Text fileName() const override { return storage_->fileName(); }
    Text journalPath() const override { return storage_->journalPath(); }
    std::unique_ptr<jet::PageIo> openForReading() override { return storage_->openForReading(); }
    jet::OpenedFile openForWriting() override {
        if (refusal_ == jet::Refusal::None) return storage_->openForWriting();
        return {nullptr, refusal_};
    }
    std::optional<std::uint64_t> journalSizeBytes() override { return storage_->journalSizeBytes(); }
    std::unique_ptr<jet::PageIo> openJournal() override { return storage_->openJournal(); }
    jet::OpenedFile createJournal() override { return storage_->createJournal(); }
    bool removeJournal() override { return storage_->removeJournal(); }
    void syncFolder() override { storage_->syncFolder(); }
    std::optional<jet::FileUser> originalUser() override { return storage_->originalUser(); }

private:
    std::unique_ptr<jet::Storage> storage_;
    const jet::Refusal& refusal_;
};

class RecordsetWrite : public testing::Test {
protected:
    ~RecordsetWrite() override { EXPECT_EQ(test::faultsIn(machine.file()), ""); }
    RecordsetWrite() : connection(connect()) {}
    RecordsetWrite(const RecordsetWrite&) = delete;
    RecordsetWrite& operator=(const RecordsetWrite&) = delete;

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

    /// "1 Müller|2 Meier|", as the file has it now.
    std::string names() {
        std::string all;
        for (auto rows = open(u"ORDER BY Nr"); !rows->isEOF(); rows->MoveNext()) {
            const Value name = get(*rows, u"Name");
            const auto* text = std::get_if<Text>(&name);
            all += std::to_string(std::get<std::int32_t>(get(*rows, u"Nr"))) + " " +
                   (text != nullptr ? base::toUtf8(*text) : "-") + "|";
        }
        return all;
    }

    test::Machine machine{accounts()};
    jet::Refusal refusal = jet::Refusal::None;
    Factory factory{[this](const Text&) { return std::make_unique<RefusingStorage>(machine.storage(), refusal); }};
    std::unique_ptr<ado::Connection> connection;
};

TEST_F(RecordsetWrite, ANewRowHasItsNumberAtOnceAndIsThereAfterUpdate) {
    auto rows = open(u"WHERE Nr = 0");
    EXPECT_TRUE(rows->isEOF());
    rows->AddNew();
    EXPECT_FALSE(rows->isEOF());
    EXPECT_EQ(get(*rows, u"Nr"), Value(3));
    EXPECT_EQ(get(*rows, u"Recht"), Value(false));
    EXPECT_TRUE(base::isNull(get(*rows, u"Name")));
    set(*rows, u"Name", Text(u"Schulze"));
    set(*rows, u"Recht", std::int16_t{1});
    set(*rows, u"Notiz", Text(5000, u'x'));
    EXPECT_EQ(get(*rows, u"Name"), Value(Text(u"Schulze")));
    EXPECT_EQ(get(*rows, u"Recht"), Value(true));
    EXPECT_EQ(names(), "1 Müller|2 Meier|");
    rows->Update();
    EXPECT_EQ(names(), "1 Müller|2 Meier|3 Schulze|");
    EXPECT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(get(*rows, u"Notiz"), Value(Text(5000, u'x')));
    rows->Close();
}

TEST_F(RecordsetWrite, ANumberIsNeverGivenTwice) {
    auto dropped = open();
    dropped->AddNew();
    EXPECT_EQ(get(*dropped, u"Nr"), Value(3));
    dropped.reset();
    auto first = open();
    auto second = open();
    first->AddNew();
    second->AddNew();
    set(*first, u"Name", Text(u"a"));
    set(*second, u"Name", Text(u"b"));
    second->Update();
    first->Update();
    connection->Execute(u"INSERT INTO Konto (Name) VALUES ('c')");
    EXPECT_EQ(names(), "1 Müller|2 Meier|4 a|5 b|6 c|");
}

TEST_F(RecordsetWrite, AChangedRowShowsInItsOwnRecordSetAndInLaterOnesOnly) {
    auto rows = open(u"ORDER BY Name");
    const auto before = open(u"ORDER BY Name");
    rows->MoveNext();
    EXPECT_EQ(get(*rows, u"Nr"), Value(1));
    set(*rows, u"NAME", Text(u"Aal"));
    set(*rows, u"Recht", std::int16_t{0});
    rows->Update();
    EXPECT_EQ(get(*rows, u"Name"), Value(Text(u"Aal")));
    EXPECT_EQ(get(*rows, u"Notiz"), Value(Text(3000, u'ß')));
    EXPECT_EQ(rows->RecordCount(), 2);
    before->MoveNext();
    EXPECT_EQ(get(*before, u"Name"), Value(Text(u"Müller")));
    // Once more, against the row as it has stored it itself.
    set(*rows, u"Notiz", Text(u"kurz"));
    rows->MoveNext();
    EXPECT_TRUE(rows->isEOF());
    EXPECT_EQ(names(), "1 Aal|2 Meier|");
    EXPECT_EQ(get(*open(u"WHERE Nr = 1"), u"Notiz"), Value(Text(u"kurz")));
}

TEST_F(RecordsetWrite, RefusesAValueThatTheColumnCannotHoldAndStaysUsable) {
    auto rows = open();
    EXPECT_EQ(errorOf([&] { set(*rows, u"Name", Text(21, u'x')); }), kMultiStep);
    EXPECT_EQ(errorOf([&] { set(*rows, u"Klein", 256); }), kMultiStep);
    EXPECT_EQ(errorOf([&] { set(*rows, u"Klein", Text(u"viel")); }), kMultiStep);
    EXPECT_EQ(errorOf([&] { set(*rows, u"Nr", 9); }), kMultiStep);
    rows->Close();
    rows = open();
    set(*rows, u"Name", Text(u"MEIER"));
    EXPECT_EQ(errorOf([&] { rows->Update(); }), kDuplicate);
    EXPECT_EQ(names(), "1 Müller|2 Meier|");
    set(*rows, u"Name", Text(u"Maier"));
    rows->Update();
    EXPECT_EQ(names(), "1 Maier|2 Meier|");
}

TEST_F(RecordsetWrite, ClosingWithAPendingRowIsAnErrorAndWritesNothing) {
    auto rows = open();
    rows->AddNew();
    const base::Bytes withNumber = machine.file();
    set(*rows, u"Name", Text(u"nie"));
    EXPECT_EQ(errorOf([&] { rows->Close(); }), 3219);
    EXPECT_EQ(rows->State(), adStateOpen);
    rows.reset();
    EXPECT_EQ(machine.file(), withNumber);
    rows = open();
    set(*rows, u"Name", Text(u"nie"));
    EXPECT_EQ(errorOf([&] { rows->Close(); }), 3219);
    rows.reset();
    EXPECT_EQ(machine.file(), withNumber);
}

TEST_F(RecordsetWrite, ARowThatSomebodyElseChangedOrDeletedIsNotOverwritten) {
    const struct {
        Text between;
        std::int32_t error;
        std::string after;
    } cases[] = {
        {u"UPDATE Konto SET Recht = FALSE WHERE Nr = 1", kRowChanged, "1 Müller|2 Meier|"},
        {u"UPDATE Konto SET Notiz = 'andere' WHERE Nr = 1", kRowChanged, "1 Müller|2 Meier|"},
        {u"UPDATE Konto SET Recht = TRUE WHERE Nr = 2", 0, "1 Ich|2 Meier|"},
        {u"DELETE FROM Konto WHERE Nr = 1", kRowDeleted, "2 Meier|"},
    };
    for (const auto& [between, error, after] : cases) {
        machine = test::Machine(accounts());
        connection = connect();
        auto rows = open();
        set(*rows, u"Name", Text(u"Ich"));
        connect()->Execute(between);
        EXPECT_EQ(errorOf([&] { rows->Update(); }), error) << base::toUtf8(between);
        EXPECT_EQ(names(), after) << base::toUtf8(between);
    }
}

TEST_F(RecordsetWrite, WhatCannotBeWrittenIsRefusedAtAddNew) {
    auto rows = open();
    const base::Bytes before = machine.file();
    for (const auto& [reason, number] :
         {std::pair(jet::Refusal::ReadOnly, -2147217911), {jet::Refusal::InUse, -2147217887}}) {
        refusal = reason;
        EXPECT_EQ(errorOf([&] { rows->AddNew(); }), number);
        EXPECT_EQ(errorOf([&] { connection->Execute(u"DELETE FROM Konto"); }), -2147467259);
    }
    EXPECT_EQ(machine.file(), before);
    EXPECT_EQ(machine.journal(), std::nullopt);
    // Nothing is pending, and reading goes on.
    EXPECT_EQ(get(*rows, u"Nr"), Value(1));
    rows->Close();
    refusal = jet::Refusal::None;
}

TEST_F(RecordsetWrite, WritesNothingOverAClosedConnection) {
    auto rows = open();
    set(*rows, u"Name", Text(u"zu spät"));
    connection->Close();
    EXPECT_EQ(errorOf([&] { rows->Update(); }), 3709);
    EXPECT_EQ(errorOf([&] { rows->AddNew(); }), 3709);
    connection = connect();
    EXPECT_EQ(names(), "1 Müller|2 Meier|");
}

TEST_F(RecordsetWrite, RollsBackWhatAnInterruptedWriterLeft) {
    const base::Bytes before = machine.file();
    const int steps = machine.steps();
    connection->Execute(u"DELETE FROM Konto WHERE Nr = 1");
    const int writing = machine.steps() - steps;
    ASSERT_GT(writing, 4);
    machine = test::Machine(before);
    connection = connect();
    machine.stopAt(writing - 2);  // pages are on the disk, but not all flushed
    EXPECT_NE(errorOf([&] { connection->Execute(u"DELETE FROM Konto WHERE Nr = 1"); }), 0);
    machine = machine.afterStop(test::Loss::LastSector, 1);
    ASSERT_NE(machine.journal(), std::nullopt);
    connection = connect();
    EXPECT_EQ(names(), "1 Müller|2 Meier|");
    EXPECT_EQ(machine.journal(), std::nullopt);
    EXPECT_EQ(machine.file(), before);
}

}  // namespace
}  // namespace ado::embedded
