#include <functional>
#include <limits>

#include "tests/conformance/Conformance.h"

namespace conformance {
namespace {

constexpr std::int32_t kMultiStep = -2147217887;

TEST_F(Conformance, FieldsFollowTheCurrentRow) {
    const auto connection = connect();
    const auto rows = open(*connection, kAll);
    EXPECT_EQ(rows->State(), ado::adStateOpen);
    EXPECT_EQ(rows->RecordCount(), 3);
    ado::Fields& fields = rows->Fields();
    EXPECT_EQ(fields.Count(), 5);
    ado::Field& name = fields.Item(u"benkto_NAME");
    EXPECT_EQ(name.Name(), u"BenKTO_Name");
    EXPECT_EQ(fields.Item(4).Name(), u"BenKTO_R_ProgUpdate");
    EXPECT_EQ(name.Value(), Value(Text(u"Müller")));
    EXPECT_EQ(fields.Item(0).Value(), Value(1));
    EXPECT_EQ(fields.Item(4).Value(), Value(true));
    rows->MoveNext();
    EXPECT_EQ(name.Value(), Value(Text(u"Aal")));
    EXPECT_EQ(fields.Item(3).Value(), Value(base::Null{}));
    EXPECT_EQ(fields.Item(4).Value(), Value(false));
    rows->MoveNext();
    EXPECT_FALSE(rows->isEOF());
    rows->MoveNext();
    EXPECT_TRUE(rows->isEOF());
    EXPECT_EQ(errorOf([&] { static_cast<void>(name.Value()); }), 3021);
    EXPECT_EQ(errorOf([&] { rows->MoveNext(); }), 3021);
    rows->Close();
    EXPECT_EQ(rows->State(), ado::adStateClosed);
}

TEST_F(Conformance, ARecordSetRefusesCallsThatDoNotFitItsState) {
    const auto connection = connect();
    const auto closed = factory().createRecordset();
    const auto readOnly = open(*connection, kAll);
    const auto empty = openToChange(*connection, u"SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 0");
    EXPECT_TRUE(empty->isEOF());
    EXPECT_EQ(empty->RecordCount(), 0);
    const struct {
        std::string what;
        std::function<void()> action;
        std::int32_t number;
    } cases[] = {
        {"count of closed rows", [&] { closed->RecordCount(); }, 3704},
        {"end of closed rows", [&] { closed->isEOF(); }, 3704},
        {"MoveNext of closed rows", [&] { closed->MoveNext(); }, 3704},
        {"new row in closed rows", [&] { closed->AddNew(); }, 3704},
        {"close of closed rows", [&] { closed->Close(); }, 3704},
        {"no such field", [&] { readOnly->Fields().Item(u"BenKTO_Name "); }, 3265},
        {"no such field number", [&] { readOnly->Fields().Item(5); }, 3265},
        {"new row, read-only lock", [&] { readOnly->AddNew(); }, 3251},
        {"value, read-only lock", [&] { set(*readOnly, u"BenKTO_Name", Text(u"x")); }, 3251},
        {"reading without a current row", [&] { static_cast<void>(get(*empty, u"BenKTO_Name")); }, 3021},
        {"setting without a current row", [&] { set(*empty, u"BenKTO_Name", Text(u"x")); }, 3021},
        {"opened twice",
         [&] {
             readOnly->Open(kAll, *connection, ado::CursorType::adOpenStatic, ado::LockType::adLockReadOnly,
                            ado::adOptionUnspecified);
         },
         3705},
    };
    for (const auto& [what, action, number] : cases)
        EXPECT_EQ(errorOf(action), number) << what;
    EXPECT_EQ(readOnly->RecordCount(), 3);
}

TEST_F(Conformance, ValuesComeBackAsTheyWereWritten) {
    const auto connection = connect();
    const base::Text withZeros(u"\0a\0", 3);
    const std::pair<base::TextView, std::vector<Value>> columns[] = {
        {u"Byte", {std::uint8_t{0}, std::uint8_t{255}, base::Null{}}},
        {u"Ganz", {std::int16_t{-32768}, std::int16_t{32767}, base::Null{}}},
        {u"Lang", {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max(), base::Null{}}},
        {u"Geld", {base::Currency{-1}, base::Currency{std::numeric_limits<std::int64_t>::max()}, base::Null{}}},
        {u"Einfach", {-1.5F, std::numeric_limits<float>::max(), base::Null{}}},
        {u"Doppelt", {0.1, -std::numeric_limits<double>::max(), base::Null{}}},
        {u"Zeit", {base::Date{45285.75}, base::Date{-1.25}, base::Null{}}},
        {u"Text", {withZeros, Text(u" Grüße \xD83D\xDE00 "), base::Null{}}},
        {u"Recht", {true, false, true}},
        {u"Notiz", {Text(70000, u'ß'), withZeros, base::Null{}}},
        {u"Roh", {base::Bytes{0, 1, 255}, base::Bytes{7}, base::Null{}}},
    };
    auto rows = openToChange(*connection, u"SELECT * FROM Werte");
    for (std::int32_t row = 0; row < 3; ++row) {
        rows->AddNew();
        set(*rows, u"Nr", row);
        for (const auto& [column, values] : columns)
            set(*rows, column, values[static_cast<std::size_t>(row)]);
        rows->Update();
    }
    rows->Close();
    rows = open(*connection, u"SELECT * FROM Werte ORDER BY Nr");
    ASSERT_EQ(rows->RecordCount(), 3);
    for (std::size_t row = 0; row < 3; ++row, rows->MoveNext())
        for (const auto& [column, values] : columns)
            EXPECT_EQ(get(*rows, column), values[row]) << base::toUtf8(column) << " of row " << row;
}

TEST_F(Conformance, ValuesAreConvertedToTheirColumn) {
    const auto connection = connect();
    const auto rows = openToChange(*connection, tolv::accountTable::selectById(1));
    for (const auto& [written, read] :
         {std::pair<Value, bool>{std::int16_t{0}, false}, {std::int16_t{1}, true}, {-1, true}, {false, false}}) {
        set(*rows, u"BenKTO_R_ProgUpdate", written);
        EXPECT_EQ(get(*rows, u"BenKTO_R_ProgUpdate"), Value(read));
    }
    set(*rows, u"BenKTO_ServerPath", Text());
    rows->Update();
    rows->Close();
    const auto again = open(*connection, tolv::accountTable::selectById(1));
    EXPECT_EQ(get(*again, u"BenKTO_R_ProgUpdate"), Value(false));
    EXPECT_EQ(get(*again, u"BenKTO_ServerPath"), Value(Text()));
}

TEST_F(Conformance, ANewRowGetsItsNumberAtOnceAndIsStoredByUpdate) {
    const auto connection = connect();
    const auto rows = openToChange(*connection, tolv::accountTable::selectById(0));
    rows->AddNew();
    EXPECT_FALSE(rows->isEOF());
    EXPECT_EQ(get(*rows, u"BenKTO_ID"), Value(4));
    set(*rows, u"BenKTO_Name", Text(u"Neu"));
    EXPECT_EQ(get(*rows, u"BenKTO_Name"), Value(Text(u"Neu")));
    EXPECT_EQ(names(*connection), "1 Müller|2 Aal|3 Meier|");
    rows->Update();
    EXPECT_EQ(get(*rows, u"BenKTO_ID"), Value(4));
    rows->Close();
    EXPECT_EQ(names(*connection), "1 Müller|2 Aal|3 Meier|4 Neu|");
}

TEST_F(Conformance, ARowWithoutUpdateIsNotWrittenAndItsNumberIsUsedUp) {
    const auto connection = connect();
    for (const bool isNew : {true, false}) {
        const auto rows = openToChange(*connection, tolv::accountTable::selectById(1));
        if (isNew) rows->AddNew();
        set(*rows, u"BenKTO_Name", Text(u"nie"));
        EXPECT_NE(errorOf([&] { rows->Close(); }), 0);
        EXPECT_EQ(rows->State(), ado::adStateOpen);
    }
    EXPECT_EQ(names(*connection), "1 Müller|2 Aal|3 Meier|");
    const auto rows = openToChange(*connection, kAll);
    rows->AddNew();
    EXPECT_EQ(get(*rows, u"BenKTO_ID"), Value(5));
}

TEST_F(Conformance, ValuesThatCannotBeStoredAreRefusedAndNotWritten) {
    const auto connection = connect();
    const base::Bytes before = bytes();
    const auto rows = openToChange(*connection, kAll);
    EXPECT_EQ(errorOf([&] { set(*rows, u"BenKTO_Name", Text(101, u'x')); }), kMultiStep);
    EXPECT_EQ(errorOf([&] { set(*rows, u"BenKTO_ID", 9); }), kMultiStep);
    set(*rows, u"BenKTO_Name", Text(u"MEIER"));
    EXPECT_EQ(errorOf([&] { rows->Update(); }), -2147467259);
    EXPECT_EQ(bytes(), before);
    set(*rows, u"BenKTO_Name", Text(100, u'x'));
    rows->Update();
    rows->Close();
    EXPECT_EQ(names(*connection), "1 " + std::string(100, 'x') + "|2 Aal|3 Meier|");
}

TEST_F(Conformance, ARowThatSomebodyElseChangedOrDeletedIsNotOverwritten) {
    const base::Bytes before = bytes();
    constexpr std::int32_t kRowChanged = -2147217864, kRowDeleted = -2147217885;
    const struct {
        Text between;
        std::int32_t error;
        std::string after;
    } cases[] = {
        {u"UPDATE Benutzerkonto SET BenKTO_Pass = 'x' WHERE BenKTO_ID = 1", kRowChanged, "1 Müller|2 Aal|3 Meier|"},
        {u"UPDATE Benutzerkonto SET BenKTO_Pass = 'x' WHERE BenKTO_ID = 2", 0, "1 Ich|2 Aal|3 Meier|"},
        {u"DELETE FROM Benutzerkonto WHERE BenKTO_ID = 1", kRowDeleted, "2 Aal|3 Meier|"},
    };
    for (const auto& [between, error, after] : cases) {
        write(before);
        const auto connection = connect();
        const auto rows = openToChange(*connection, kAll);
        set(*rows, u"BenKTO_Name", Text(u"Ich"));
        connect()->Execute(between);
        EXPECT_EQ(errorOf([&] { rows->Update(); }), error) << base::toUtf8(between);
        EXPECT_EQ(names(*connection), after) << base::toUtf8(between);
    }
    const auto connection = connect();
    connection->Execute(u"INSERT INTO Werte (Nr, Notiz) VALUES (1, '" + Text(9000, u'n') + u"')");
    const auto rows = openToChange(*connection, u"SELECT * FROM Werte");
    set(*rows, u"Text", Text(u"Ich"));
    connection->Execute(u"UPDATE Werte SET Notiz = 'x'");
    EXPECT_EQ(errorOf([&] { rows->Update(); }), kRowChanged) << "only a long value has changed";
}

}  // namespace
}  // namespace conformance
