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
        writeFile(protected_, u"Prüf wort");
        writeFile(open_, u"");
    }

    static void writeFile(const Text& path, const Text& password) {
        test::SampleTable table;
        table.design.name = u"Probe";
        table.design.columns = {{u"Nr", jet::ColumnType::Long},       {u"Ja\tNein", jet::ColumnType::Boolean},
                                {u"Text", jet::ColumnType::Text, 60}, {u"Geld", jet::ColumnType::Currency},
                                {u"Maß", jet::ColumnType::Double},    {u"Tag", jet::ColumnType::DateTime},
                                {u"Bytes", jet::ColumnType::Ole},     {u"Kennung", jet::ColumnType::Guid}};
        const base::Guid guid{{0x78, 0x56, 0x34, 0x12, 0xBC, 0x9A, 0xF0, 0xDE, 1, 2, 3, 4, 5, 6, 7, 8}};
        table.rows = {
            {1, true, Text(u"a\tb\\c\r\nd\"e"), base::Currency{-125000}, 0.1, base::Date{38143.573},
             base::Bytes{0, 255}, guid},
            {2, false, Text(u"Straße \U0001F600\x01"), base::Currency{1}, 1e300, base::Date{-1.25}, base::Null{},
             base::Null{}},
            {3, false, Text(u"\\N"), base::Currency{0}, -0.0, base::Date{0}, base::Null{}, base::Null{}},
            {4, false, Text(), base::Null{}, std::numeric_limits<double>::infinity(), base::Date{1e9}, base::Null{},
             base::Null{}},
            {5, true, base::Null{}, base::Null{}, base::Null{}, base::Null{}, base::Null{}, base::Null{}},
        };
        jet::openFile(path, jet::OpenMode::CreateNew)->write(0, test::sampleFile({table}, password));
    }

    Text passwordFile(const std::string& content) const {
        const std::filesystem::path path = folder_ / "kennwort.txt";
        std::ofstream(path, std::ios::binary) << content;
        return path.u16string();
    }

    static Outcome query(std::vector<Text> arguments, std::optional<Text> answer = {}, const std::string& input = {}) {
        arguments.insert(arguments.begin(), u"query");
        return call(arguments, std::move(answer), input);
    }

    Text protected_ = path(u"geschützt.mdb");
    Text open_ = path(u"offen.mdb");
};

constexpr char16_t kAll[] = u"SELECT * FROM Probe";

TEST_F(Query, PrintsValuesPartedByTabs) {
    const Outcome outcome = query({open_, kAll});
    EXPECT_EQ(outcome.exitCode, kExitSuccess);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(
        outcome.printed,
        "Nr\tJa\\tNein\tText\tGeld\tMaß\tTag\tBytes\tKennung\n"
        "1\t-1\ta\\tb\\\\c\\r\\nd\"e\t-12.5\t0.1\t2004-06-05T13:45:07\t00ff\t{12345678-9abc-def0-0102-030405060708}\n"
        "2\t0\tStraße \U0001F600\x01\t0.0001\t1e+300\t1899-12-29T06:00:00\t\\N\t\\N\n"
        "3\t0\t\\\\N\t0\t-0\t1899-12-30T00:00:00\t\\N\t\\N\n"
        "4\t0\t\t\\N\tinf\t1e+09\t\\N\t\\N\n"
        "5\t-1\t\\N\t\\N\t\\N\t\\N\t\\N\t\\N\n");
}

TEST_F(Query, PrintsOneObjectALine) {
    EXPECT_EQ(query({open_, u"--json", u"SELECT * FROM Probe WHERE Nr < 3 OR Nr = 4"}).printed,
              R"({"Nr": 1, "Ja\tNein": true, "Text": "a\tb\\c\r\nd\"e", "Geld": -12.5, "Maß": 0.1, )"
              R"("Tag": "2004-06-05T13:45:07", "Bytes": "00ff", "Kennung": "{12345678-9abc-def0-0102-030405060708}"})"
              "\n"
              R"({"Nr": 2, "Ja\tNein": false, "Text": "Straße )"
              "\U0001F600"
              R"(\u0001", "Geld": 0.0001, "Maß": 1e+300, "Tag": "1899-12-29T06:00:00", "Bytes": null, "Kennung": null})"
              "\n"
              R"({"Nr": 4, "Ja\tNein": false, "Text": "", "Geld": null, "Maß": "inf", "Tag": "1e+09", "Bytes": null, )"
              R"("Kennung": null})"
              "\n");
}

TEST_F(Query, PrintsForSpreadsheets) {
    EXPECT_EQ(query({open_, u"--csv", u"SELECT * FROM Probe WHERE Nr = 1 OR Nr > 3"}).printed,
              "Nr,Ja\tNein,Text,Geld,Maß,Tag,Bytes,Kennung\r\n"
              "1,-1,\"a\tb\\c\r\nd\"\"e\",-12.5,0.1,2004-06-05 13:45:07,00ff,{12345678-9abc-def0-0102-030405060708}\r\n"
              "4,0,\"\",,inf,1e+09,,\r\n"
              "5,-1,,,,,,\r\n");
    EXPECT_EQ(query({open_, u"--csv", u"--separator=;", u"--decimal-comma", u"--bom", u"--no-header", u"--null", u"a;b",
                     u"SELECT * FROM Probe WHERE Nr = 3"})
                  .printed,
              "\xEF\xBB\xBF"
              "3;0;\\N;0;-0;1899-12-30 00:00:00;\"a;b\";\"a;b\"\r\n");
    EXPECT_EQ(query({open_, u"--csv", u"--decimal-comma", u"--no-header", u"SELECT * FROM Probe WHERE Nr = 2"}).printed,
              "2,0,Straße \U0001F600\x01,\"0,0001\",1e+300,1899-12-29 06:00:00,,\r\n");
}

TEST_F(Query, PutsColumnsOneBelowTheOtherOnAScreen) {
    FakeConsole console;
    console.isScreen = true;
    console.input = "\xEF\xBB\xBFSELECT * FROM Probe\r\nWHERE Nr <= 2 OR Nr = 5\n";
    EXPECT_EQ(run(std::vector<Text>{u"query", open_, u"-", u"--null", u"-"}, console), kExitSuccess) << console.errors;
    EXPECT_EQ(
        console.printed,
        "Nr  Ja Nein  Text          Geld     Maß  Tag                  Bytes  Kennung\n"
        "--  -------  ----------  ------  ------  -------------------  -----  --------------------------------------\n"
        " 1       -1  a b\\c  d\"e   -12.5     0.1  2004-06-05T13:45:07  00ff   "
        "{12345678-9abc-def0-0102-030405060708}\n"
        " 2        0  Straße \U0001F600\uFFFD   0.0001  1e+300  1899-12-29T06:00:00  -      -\n"
        " 5       -1  -                -       -  -                    -      -\n"
        "(3 Zeilen)\n");
}

TEST_F(Query, PrintsTheRowsBeforeADamagedOneAndNoPartOfIt) {
    using namespace std::string_literals;
    std::string file = contentOf(open_);
    // Units of one byte each up to the zero, then of two.
    file.replace(file.find("S\0t\0r\0"s), 20, "\xFF\xFEsechzehn Zeichen\0x"s);
    std::ofstream(std::filesystem::path(open_), std::ios::binary) << file;
    for (const auto& [flag, lines] : {std::pair{u"--", 2}, std::pair{u"--json", 1}, std::pair{u"--csv", 3}}) {
        const Outcome outcome = query({open_, kAll, flag});
        EXPECT_EQ(outcome.exitCode, kExitError);
        EXPECT_NE(outcome.errors.find("endet mit einem halben Zeichen"), std::string::npos) << outcome.errors;
        EXPECT_EQ(std::ranges::count(outcome.printed, '\n'), lines) << outcome.printed;
        EXPECT_TRUE(outcome.printed.ends_with('\n')) << outcome.printed;
    }
}

TEST_F(Query, HintsAtTheWildcardsWhereNothingIsFound) {
    const std::string hint = "Hinweis: Bei LIKE steht % ";
    EXPECT_TRUE(query({open_, u"SELECT * FROM Probe WHERE Text like 'Str*'"}).errors.starts_with(hint));
    EXPECT_TRUE(call({u"exec", open_, u"DELETE FROM Probe WHERE Text LIKE \"a?b\""}).errors.starts_with(hint));
    EXPECT_TRUE(query({open_, u"SELECT COUNT(*) FROM Probe WHERE Text LIKE '*e'"}).errors.starts_with(hint));
    EXPECT_TRUE(query({open_, u"SELECT * FROM Probe WHERE Text NOT LIKE 'Str*'"}).errors.starts_with(hint));
    EXPECT_EQ(query({open_, u"SELECT * FROM Probe WHERE Text LIKE 'Str_X' OR Text = '*'"}).errors, "");
    EXPECT_EQ(query({open_, u"SELECT * FROM Probe WHERE Text LIKE 'Str%' OR Text LIKE '*'"}).errors, "");
}

TEST_F(Query, KeepsNobodyFromWritingWhileItPrints) {
    struct SlowReader final : FakeConsole {
        void print(std::string_view) override { written = call({u"exec", file, u"DELETE FROM Probe WHERE Nr = 1"}); }
        Text file;
        Outcome written{};
    } console;
    console.file = open_;
    EXPECT_EQ(run(std::vector<Text>{u"query", open_, kAll}, console), kExitSuccess);
    EXPECT_EQ(console.written.printed, "1\n") << console.written.errors;
}

TEST(ValueText, QuotesForSpreadsheetsWhereverTheUnitStands) {
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
    const struct {
        Value value;
        std::string text;
    } cases[] = {
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

TEST_F(Query, TakesThePasswordFromOptionFileOrPrompt) {
    const std::string refused = "kontodb: -2147217843: Kein zulässiges Kennwort.\n";
    const Text file = path(u"kennwort.txt");
    std::ofstream(std::filesystem::path(file), std::ios::binary) << "\xEF\xBB\xBFPrüf wort\r\nzweite Zeile";
    const struct {
        Text database;
        std::vector<Text> options;
        std::optional<Text> answer;
        std::string errors;
        std::string input = {};
    } cases[] = {
        {protected_, {u"--password", u"Prüf wort"}, {}, ""},
        {protected_, {u"--password-file", file}, {}, ""},
        {protected_, {}, u"Prüf wort", ""},
        {open_, {u"--password", u"irgendeins"}, {}, ""},
        {open_, {}, u"darf nicht gefragt werden", ""},
        {protected_, {}, {}, refused},
        {protected_, {u"--password", u"prüf wort"}, {}, refused},
        {protected_, {u"--password="}, {}, refused},
        {protected_, {}, u"falsch", refused},
        {protected_,
         {u"--password-file", u"gibt es nicht"},
         {},
         "kontodb: -2147467259: Datei 'gibt es nicht' nicht gefunden.\n"},
        {protected_, {u"--password=a", u"--password-file=b"}, {}, "kontodb: 5: "},
        {protected_, {u"--password-file", u"-"}, {}, "", "Prüf wort\nzweite Zeile"},
        {protected_, {u"--password-file", u"-"}, u"Prüf wort", "", "am Terminal wird gefragt"},
        {protected_, {u"--password-file", u"-"}, {}, refused, "\n"},
        {protected_, {u"--password-file", u"-"}, {}, "kontodb: 5: Für --password-file - fehlt das Kennwort"},
    };
    for (const auto& [database, options, answer, errors, input] : cases) {
        std::vector<Text> arguments{database, u"SELECT * FROM Probe WHERE Nr = 0"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = query(arguments, answer, input);
        EXPECT_EQ(outcome.exitCode, errors.empty() ? kExitSuccess : kExitError);
        EXPECT_TRUE(outcome.errors.starts_with(errors)) << outcome.errors << "\nwanted: " << errors;
        EXPECT_EQ(outcome.errors.empty(), errors.empty()) << outcome.errors;
    }
}

TEST_F(Query, SaysWhatTheEngineSaysAndPrintsNothing) {
    std::ofstream(std::filesystem::path(protected_ + u"-journal")) << "begun";
    const struct {
        std::vector<Text> arguments;
        std::string error;
    } cases[] = {
        {{open_, u"SELECT * FROM Probe WHERE Text = 'O'Neil'"},
         "kontodb: -2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck 'Text = 'O'Neil''.\n"
         "  SELECT * FROM Probe WHERE Text = 'O'Neil'\n"
         "                                      ^\n"
         "Ein Text steht in '...'; ein Apostroph darin wird doppelt geschrieben: 'O''Neil'.\n"},
        {{open_, u"SELECT *\r\n\tFROM Probe WHERE [Maß] = 1\tAND Tex = Straße\r\n"},
         "  FROM Probe WHERE [Maß] = 1 AND Tex = Straße\n"
         "                                 ^\n"
         "Die Tabelle 'Probe' hat keine Spalte 'Tex'. Meinten Sie 'Text'?\n"},
        {{open_, u"SELECT Nr FROM Probe WHERE Text = Meier"},
         "Die Tabelle 'Probe' hat keine Spalte 'Meier'. Sie hat: Nr, Ja Nein, Text, Geld, Maß, Tag, Bytes, Kennung.\n"
         "Ein Text steht in '...'"},
        {{open_, u"SELECT * FROM Probe WHERE Nr IN (1) AND (Nr = 1 OR Nr = 22 OR Nr = 333 OR Nr = 4444) AND Tex = '" +
                     Text(60, u'ß') + u"'"},
         "  ...= 1 OR Nr = 22 OR Nr = 333 OR Nr = 4444) AND Tex = 'ßßßßßßßßßßßßßßßßßßßß...\n"
         "                                                  ^\n"},
        {{open_, u"SELECT * FROM Probe WHERE Text = 5"},
         "  SELECT * FROM Probe WHERE Text = 5\n"
         "                                 ^\n"},
        {{open_, u"SELECT * FROM Probe WHERE Trim(Text) = 'a'"},
         "WHERE Trim(Text) = 'a'\n"
         "                            ^\n"},
        {{open_, u"SELECT * FROM Probe WHERE Nr =\n\n"},
         "WHERE Nr =\n"
         "                                ^\n"},
        {{open_, u"DELETE FROM Probe"}, "kontodb: 5: query zeigt Zeilen; UPDATE, DELETE und INSERT führt exec aus."},
        {{protected_, kAll, u"--password", u"Prüf wort"}, "geschützt.mdb-journal' hinterlassen."},
        {{open_}, "kontodb: 5: "},
        {{open_, u"-"}, "In der Standardeingabe steht keine Anweisung."},
        {{open_, u"-", u"--password-file=-"}, "entweder die Anweisung oder das Kennwort."},
        {{open_, kAll, u"--bom"}, "Die Option --bom gibt es nur mit --csv."},
        {{open_, kAll, u"--json", u"--null", u"x"}, "Die Option --null passt nicht zu --json."},
        {{open_, kAll, u"--csv", u"--separator", u"ab"}, "--separator verlangt ein Zeichen"},
    };
    for (const auto& [arguments, error] : cases) {
        const Outcome outcome = query(arguments);
        EXPECT_EQ(outcome.exitCode, kExitError);
        EXPECT_EQ(outcome.printed, "");
        EXPECT_NE(outcome.errors.find(error), std::string::npos) << outcome.errors;
    }
}

}  // namespace
}  // namespace kontodb
