#include <fstream>
#include <limits>

#include "jet/storage/PageIo.h"
#include "tests/kontodb/Command.h"
#include "tests/support/SampleFile.h"
#include "tools/kontodb/ValueText.h"

namespace kontodb {
namespace {

using base::Value;

class Query : public Command {
protected:
    Query() {
        test::SampleTable table;
        table.design.name = u"Probe";
        table.design.columns = {{u"Nr", jet::ColumnType::Long},       {u"Ja\tNein", jet::ColumnType::Boolean},
                                {u"Text", jet::ColumnType::Text, 60}, {u"Geld", jet::ColumnType::Currency},
                                {u"Maß", jet::ColumnType::Double},    {u"Tag", jet::ColumnType::DateTime},
                                {u"Bytes", jet::ColumnType::Ole},     {u"Kennung", jet::ColumnType::Guid}};
        const base::Guid guid{{0x78, 0x56, 0x34, 0x12, 0xBC, 0x9A, 0xF0, 0xDE, 1, 2, 3, 4, 5, 6, 7, 8}};
        const Value null = base::Null{};
        table.rows = {
            {1, true, Text(u"a\tb\\c\r\nd\"e"), base::Currency{-125000}, 0.1, base::Date{38143.573},
             base::Bytes{0, 255}, guid},
            {2, false, Text(u"Straße \U0001F600\x01"), base::Currency{1}, 1e300, base::Date{-1.25}, null, null},
            {3, false, Text(u"\\N"), base::Currency{0}, -0.0, base::Date{0}, null, null},
            {4, false, Text(), null, std::numeric_limits<double>::infinity(), base::Date{1e9}, null, null},
            {5, true, null, null, null, null, null, null},
        };
        jet::openFile(u"p.mdb", jet::OpenMode::CreateNew)->write(0, test::sampleFile({table}));
    }
};

TEST_F(Query, PrintsForPeopleProgramsAndSpreadsheets) {
    expect(R"(
$ query p.mdb "SELECT * FROM Probe"
Nr␉Ja\tNein␉Text␉Geld␉Maß␉Tag␉Bytes␉Kennung
1␉-1␉a\tb\\c\r\nd"e␉-12.5␉0.1␉2004-06-05T13:45:07␉00ff␉{12345678-9abc-def0-0102-030405060708}
2␉0␉Straße 😀␁␉0.0001␉1e+300␉1899-12-29T06:00:00␉\N␉\N
3␉0␉\\N␉0␉-0␉1899-12-30T00:00:00␉\N␉\N
4␉0␉␉\N␉inf␉1e+09␉\N␉\N
5␉-1␉\N␉\N␉\N␉\N␉\N␉\N
$ query p.mdb - --null - > tty
< SELECT * FROM Probe
< WHERE Nr <= 2 OR Nr = 5
Nr  Ja Nein  Text          Geld     Maß  Tag                  Bytes  Kennung
--  -------  ----------  ------  ------  -------------------  -----  --------------------------------------
 1       -1  a b\c  d"e   -12.5     0.1  2004-06-05T13:45:07  00ff   {12345678-9abc-def0-0102-030405060708}
 2        0  Straße 😀�   0.0001  1e+300  1899-12-29T06:00:00  -      -
 5       -1  -                -       -  -                    -      -
(3 Zeilen)
$ query p.mdb --json "SELECT * FROM Probe WHERE Nr > 3"
{"Nr": 4, "Ja\tNein": false, "Text": "", "Geld": null, "Maß": "inf", "Tag": "1e+09", "Bytes": null, "Kennung": null}
{"Nr": 5, "Ja\tNein": true, "Text": null, "Geld": null, "Maß": null, "Tag": null, "Bytes": null, "Kennung": null}
$ query p.mdb --json "SELECT Text, Geld, Maß, Tag, Bytes FROM Probe WHERE Nr < 3"
{"Text": "a\tb\\c\r\nd\"e", "Geld": -12.5, "Maß": 0.1, "Tag": "2004-06-05T13:45:07", "Bytes": "00ff"}
{"Text": "Straße 😀\u0001", "Geld": 0.0001, "Maß": 1e+300, "Tag": "1899-12-29T06:00:00", "Bytes": null}
$ query p.mdb --json "SELECT Kennung FROM Probe WHERE Nr = 1"
{"Kennung": "{12345678-9abc-def0-0102-030405060708}"}
$ query p.mdb --csv "SELECT * FROM Probe WHERE Nr = 1 OR Nr > 3"
Nr,Ja␉Nein,Text,Geld,Maß,Tag,Bytes,Kennung␍
1,-1,"a␉b\c␍
d""e",-12.5,0.1,2004-06-05 13:45:07,00ff,{12345678-9abc-def0-0102-030405060708}␍
4,0,"",,inf,1e+09,,␍
5,-1,,,,,,␍
$ query p.mdb --csv --separator=; --decimal-comma --no-header --null a;b "SELECT * FROM Probe WHERE Nr = 3"
3;0;\N;0;-0;1899-12-30 00:00:00;"a;b";"a;b"␍
$ query p.mdb --csv --decimal-comma --no-header "SELECT * FROM Probe WHERE Nr = 2"
2,0,Straße 😀␁,"0,0001",1e+300,1899-12-29 06:00:00,,␍
)");
    EXPECT_EQ(call({u"query", u"p.mdb", u"--csv", u"--bom", u"SELECT Nr FROM Probe WHERE Nr = 3"}).printed,
              "\xEF\xBB\xBFNr\r\n3\r\n");
}

TEST_F(Query, PrintsTheRowsBeforeADamagedOneAndNoPartOfIt) {
    using namespace std::string_literals;
    std::string file = contentOf("p.mdb");
    // Compressed text: units of one byte up to the zero byte, then of two bytes. The last one is incomplete.
    file.replace(file.find("S\0t\0r\0"s), 20, "\xFF\xFEsechzehn Zeichen\0x"s);
    write("p.mdb", file);
    expect(R"(
$ query p.mdb "SELECT Nr, Geld, Text FROM Probe"
Nr␉Geld␉Text
1␉-12.5␉a\tb\\c\r\nd"e
! kontodb: …endet mit einem halben Zeichen…
$ query p.mdb --json "SELECT Nr, Geld, Text FROM Probe"
{"Nr": 1, "Geld": -12.5, "Text": "a\tb\\c\r\nd\"e"}
! kontodb: …endet mit einem halben Zeichen…
$ query p.mdb --csv "SELECT Nr, Geld, Text FROM Probe"
Nr,Geld,Text␍
1,-12.5,"a␉b\c␍
d""e"␍
! kontodb: …endet mit einem halben Zeichen…
)");
}

TEST_F(Query, HintsAtTheRightWildcardsIfAPatternHasOthers) {
    expect(R"(
$ query p.mdb "SELECT * FROM Probe WHERE Text like 'Str*'" --no-header
! Hinweis: Bei LIKE steht % für beliebig viele Zeichen und _ für eines; * und ? sind Zeichen wie andere.
$ exec p.mdb "DELETE FROM Probe WHERE Text LIKE \"a?b\""
0
! Hinweis: Bei LIKE steht % …
$ query p.mdb "SELECT COUNT(*) FROM Probe WHERE Text LIKE '*e'" --no-header
0
! Hinweis: Bei LIKE steht % …
$ query p.mdb "SELECT Nr FROM Probe WHERE Text NOT LIKE 'Str*' AND Nr < 3" --no-header
1
2
! Hinweis: Bei LIKE steht % …
$ query p.mdb "SELECT * FROM Probe WHERE Text LIKE 'Str_X' OR Text = '*'" --no-header
$ query p.mdb "SELECT Nr FROM Probe WHERE Text LIKE 'Str%' OR Text LIKE '*'" --no-header
2
)");
}

TEST_F(Query, LetsOthersWriteWhileItPrints) {
    struct SlowReader final : FakeConsole {
        void print(std::string_view) override {
            written = call({u"exec", u"p.mdb", u"DELETE FROM Probe WHERE Nr = 1"});
        }
        Outcome written{};
    } console;
    EXPECT_EQ(run(std::vector<Text>{u"query", u"p.mdb", u"SELECT * FROM Probe"}, console), kExitSuccess);
    EXPECT_EQ(console.written.printed, "1\n") << console.written.errors;
}

TEST(ValueText, QuotesCsvFieldsWhereverTheSpecialUnitIs) {
    const std::pair<std::uint8_t, std::string> units[] = {{'"', "\"\""}, {'\n', "\n"}, {'\r', "\r"}, {';', ";"},
                                                          {',', ","},    {'\t', "\t"}, {0xFC, "ü"},  {'\\', "\\"}};
    for (const auto& [unit, written] : units) {
        for (std::size_t at = 0; at < 20; ++at) {
            base::Bytes text(20, 'x');
            text[at] = unit;
            std::string expected = std::string(at, 'x') + written + std::string(19 - at, 'x');
            if (std::string_view("\"\n\r;").find(static_cast<char>(unit)) != std::string_view::npos)
                expected.insert(0, "\"").append("\"");
            char room[kMostLatinBytes * 20 + 2];
            EXPECT_EQ(std::string(room, writeCsvLatin(room, text, ';')), expected);
        }
    }
}

TEST(ValueText, PrintsDecimalsExactlyAndDatesToTheSecond) {
    const std::pair<Value, std::string> cases[] = {
        {base::Decimal{true, 4, {15, 0, 0, 0}}, "-0.0015"},
        {base::Decimal{false, 2, {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0}}, "792281625142643375935439503.35"},
        {base::Decimal{false, 3, {7000, 0, 0, 0}}, "7"},
        {base::Currency{std::numeric_limits<std::int64_t>::min()}, "-922337203685477.5808"},
        {0.1F, "0.1"},
        {base::Date{36525.9999999}, "2000-01-01T00:00:00"},
        {base::Date{-0.75}, "1899-12-30T18:00:00"},
        {base::Date{2958465.5}, "9999-12-31T12:00:00"},
        {base::Date{2958465.9999999}, "9999-12-31T23:59:59"},
    };
    for (const auto& [value, text] : cases) {
        std::string line;
        appendPlain(line, value);
        EXPECT_EQ(line, text);
    }
}

TEST_F(Query, ReportsTheErrorOfTheEngineAndPrintsNoRow) {
    std::filesystem::copy("p.mdb", "begonnen.mdb");
    write("begonnen.mdb-journal", "begun");
    expect(R"(
$ query p.mdb "SELECT * FROM Probe WHERE Text = 'O'Neil'"
! kontodb: -2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck 'Text = 'O'Neil''.
!   SELECT * FROM Probe WHERE Text = 'O'Neil'
!                                       ^
! Ein Text steht in '...'; ein Apostroph darin wird doppelt geschrieben: 'O''Neil'.
$ query p.mdb -
< SELECT *
< FROM Probe WHERE [Maß] = 1 AND Tex = Straße
! …
!   FROM Probe WHERE [Maß] = 1 AND Tex = Straße
!                                  ^
! Die Tabelle 'Probe' hat keine Spalte 'Tex'. Meinten Sie 'Text'?
$ query p.mdb "SELECT Nr FROM Probe WHERE Text = Meier"
! …
! Die Tabelle 'Probe' hat keine Spalte 'Meier'. Sie hat: Nr, Ja Nein, Text, Geld, Maß, Tag, Bytes, Kennung.
! Ein Text steht in '...'…
$ query p.mdb -
< SELECT * FROM Probe WHERE Nr IN (1) AND (Nr = 1 OR Nr = 22 OR Nr = 333 OR Nr = 4444) AND Tex = 'ßßßßßßßßßßßßßßßßßßßßß'
! …
!   ...= 1 OR Nr = 22 OR Nr = 333 OR Nr = 4444) AND Tex = 'ßßßßßßßßßßßßßßßßßßßß...
!                                                   ^
! …
$ query p.mdb "SELECT * FROM Probe WHERE Text = 5"
! …
!   SELECT * FROM Probe WHERE Text = 5
!                                  ^
$ query p.mdb "SELECT * FROM Probe WHERE Trim(Text) = 'a'"
! …
!   SELECT * FROM Probe WHERE Trim(Text) = 'a'
!                             ^
$ query p.mdb -
< SELECT * FROM Probe WHERE Nr =
<
! …
!   SELECT * FROM Probe WHERE Nr =
!                                 ^
$ query begonnen.mdb "SELECT * FROM Probe"
! kontodb: -2147467259: …begonnen.mdb-journal' hinterlassen.…
)");
}

}  // namespace
}  // namespace kontodb
