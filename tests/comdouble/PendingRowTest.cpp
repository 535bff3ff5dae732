#include <gmock/gmock.h>

#include "tests/comdouble/DoubleFixture.h"

namespace comdouble {
namespace {

using test::get;
using test::invoke;
using test::kAll;
using test::of;

constexpr std::int32_t kRowChanged = -2147217864;
constexpr std::int32_t kRowDeleted = -2147217885;

class PendingRowTest : public test::DoubleFixture {
protected:
    static std::int32_t method(const Object& object, base::TextView name) {
        return invoke(object, name, DISPATCH_METHOD, {}).number();
    }
    static std::int32_t assign(const Object& recordset, base::TextView column, VARIANT value) {
        return invoke(field(recordset, column), u"Value", DISPATCH_PROPERTYPUT, {value}).number();
    }
    static base::Text name(const Object& recordset) { return get(field(recordset, u"Name"), u"Value").text(); }
    static void execute(const Object& connection, base::TextView statement) {
        EXPECT_EQ(invoke(connection, u"Execute", DISPATCH_METHOD, {of(statement)}).number(), 0);
    }
    static std::size_t rowsIn(const Object& connection) {
        const auto recordset = openRecordset(connection, kAll, 1);
        std::size_t rows = 0;
        for (; !get(recordset, u"EOF").truth(); ++rows)
            method(recordset, u"MoveNext");
        return rows;
    }
};

TEST_F(PendingRowTest, NewRowHasItsNumberBeforeItIsStored) {
    const auto connection = openConnection();
    const auto recordset = openRecordset(connection, kAll, 2);
    ASSERT_EQ(method(recordset, u"AddNew"), 0);
    EXPECT_EQ(get(field(recordset, u"Nr"), u"Value").integer(), 3);
    EXPECT_EQ(assign(recordset, u"Nr", of(9)), -2147217887) << "the number is the provider's";
    EXPECT_EQ(assign(recordset, u"Name", of(u"Neu")), 0);
    EXPECT_EQ(assign(recordset, u"Recht", of(1)), 0);
    EXPECT_EQ(assign(recordset, u"Name", of(base::Text(21, u'x'))), -2147217887) << "too long";
    EXPECT_EQ(assign(recordset, u"Name", of(connection)), 3421);
    EXPECT_EQ(rowsIn(connection), 2U);
    EXPECT_EQ(method(recordset, u"Close"), 3219);
    EXPECT_EQ(get(recordset, u"State").integer(), 1);
    EXPECT_EQ(method(recordset, u"Update"), 0);
    EXPECT_EQ(name(recordset), u"Neu");
    EXPECT_TRUE(get(field(recordset, u"Recht"), u"Value").truth()) << "any number but 0 is true";
    EXPECT_EQ(rowsIn(connection), 3U);
    EXPECT_EQ(method(recordset, u"Close"), 0);
}

TEST_F(PendingRowTest, IsStoredBeforeAnotherRowAndElseDropped) {
    const auto connection = openConnection();
    auto recordset = openRecordset(connection, kAll, 2);
    method(recordset, u"AddNew");
    EXPECT_EQ(method(recordset, u"AddNew"), 0);
    EXPECT_EQ(rowsIn(connection), 3U);
    EXPECT_EQ(assign(recordset, u"Name", of(u"Anders")), 0);
    EXPECT_EQ(method(recordset, u"MoveNext"), 0);
    EXPECT_EQ(rowsIn(connection), 4U);

    method(recordset, u"AddNew");
    recordset = {};
    EXPECT_EQ(rowsIn(connection), 4U);
    EXPECT_EQ(name(openRecordset(connection, u"SELECT * FROM Konto WHERE Nr = 4", 1)), u"Anders");

    recordset = openRecordset(connection, kAll, 2);
    method(recordset, u"AddNew");
    EXPECT_EQ(method(connection, u"Close"), 0) << "closes the record set too, and drops the row";
    EXPECT_EQ(get(recordset, u"State").integer(), 0);
    EXPECT_EQ(rowsIn(openConnection()), 4U);
}

TEST_F(PendingRowTest, KeysetShowsWhatOthersWriteAndASnapshotDoesNot) {
    const auto connection = openConnection();
    const auto keyset = openRecordset(connection, kAll, 2);
    const auto snapshot = openRecordset(connection, kAll, 1);
    execute(connection, u"UPDATE Konto SET Name = 'Neuer' WHERE Nr = 2");
    method(keyset, u"MoveNext");
    method(snapshot, u"MoveNext");
    EXPECT_EQ(name(keyset), u"Neuer");
    EXPECT_EQ(name(snapshot), u"Meier");

    const auto another = openRecordset(connection, kAll, 2);
    execute(connection, u"DELETE FROM Konto WHERE Nr = 2");
    method(another, u"MoveNext");
    EXPECT_FALSE(get(another, u"EOF").truth());
    EXPECT_EQ(get(field(another, u"Name"), u"Value").number(), kRowDeleted);
    EXPECT_EQ(assign(another, u"Name", of(u"x")), kRowDeleted);
    EXPECT_EQ(method(another, u"MoveNext"), 0);
    EXPECT_EQ(assign(another, u"Name", of(u"x")), 3021) << "behind the last row";
}

TEST_F(PendingRowTest, ChangeOfAChangedRowIsRefusedAtItsBeginningAndAtItsEnd) {
    const auto connection = openConnection();
    const auto notYetEditing = openRecordset(connection, kAll, 2);
    const auto alreadyEditing = openRecordset(connection, kAll, 2);
    EXPECT_EQ(assign(alreadyEditing, u"Name", of(u"C")), 0);
    execute(connection, u"UPDATE Konto SET Notiz = 'anders' WHERE Nr = 1");
    EXPECT_EQ(assign(notYetEditing, u"Name", of(u"A")), kRowChanged);
    EXPECT_EQ(method(alreadyEditing, u"Update"), kRowChanged);
    EXPECT_EQ(name(openRecordset(connection, kAll, 1)), u"Müller");
    execute(connection, u"DELETE FROM Konto WHERE Nr = 1");
    EXPECT_EQ(method(alreadyEditing, u"Update"), kRowDeleted);
}

}  // namespace
}  // namespace comdouble
