#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "jet/Creator.h"
#include "jet/PageIo.h"
#include "tests/kontodb/FakeConsole.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/ValueText.h"

namespace kontodb {
namespace {

using base::Text;
using base::Value;

class Query : public testing::Test {
protected:
    Query()
        : folder_(std::filesystem::temp_directory_path() /
                  ("kontodb-query-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(folder_);
        makeFile(protected_, u"Prüf wort");
        makeFile(open_, u"");
    }
    ~Query() override { std::filesystem::remove_all(folder_); }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    static void makeFile(const Text& path, const Text& password) {
        const auto io = jet::openFile(path, jet::OpenMode::CreateNew);
        jet::Creator creator(*io, password);
        jet::TableDesign design;
        design.name = u"Probe";
        design.columns = {{u"Nr", jet::ColumnType::Long},       {u"Ja\tNein", jet::ColumnType::Boolean},
                          {u"Text", jet::ColumnType::Text, 60}, {u"Geld", jet::ColumnType::Currency},
                          {u"Maß", jet::ColumnType::Double},    {u"Tag", jet::ColumnType::DateTime},
                          {u"Bytes", jet::ColumnType::Ole},     {u"Kennung", jet::ColumnType::Guid}};
        const base::Guid guid{{0x78, 0x56, 0x34, 0x12, 0xBC, 0x9A, 0xF0, 0xDE, 1, 2, 3, 4, 5, 6, 7, 8}};
        std::vector<std::vector<Value>> rows = {
            {1, true, Text(u"a\tb\\c\r\nd\"e"), base::Currency{-125000}, 0.1, base::Date{38143.573},
             base::Bytes{0, 255}, guid},
            {2, false, Text(u"Straße \U0001F600\x01"), base::Currency{1}, 1e300, base::Date{-1.25}, base::Null{},
             base::Null{}},
            {3, false, Text(u"\\N"), base::Currency{0}, -0.0, base::Date{0}, base::Null{}, base::Null{}},
            {4, false, Text(), base::Null{}, std::numeric_limits<double>::infinity(), base::Date{1e9}, base::Null{},
             base::Null{}},
            {5, true, base::Null{}, base::Null{}, base::Null{}, base::Null{}, base::Null{}, base::Null{}},
        };
        std::size_t next = 0;
        creator.addTable(design, [&](std::vector<Value>& row) {
            if (next == rows.size()) return false;
            row = rows[next++];
            return true;
        });
        creator.finish();
    }

    Text passwordFile(const std::string& content) const {
        const std::filesystem::path path = folder_ / "kennwort.txt";
        std::ofstream(path, std::ios::binary) << content;
        return path.u16string();
    }

    int call(std::vector<Text> arguments, std::optional<Text> answer = {}) {
        console_ = {};
        console_.answer = std::move(answer);
        arguments.insert(arguments.begin(), u"query");
        return run(arguments, console_);
    }

    std::filesystem::path folder_;
    Text protected_ = (folder_ / "geschützt.mdb").u16string();
    Text open_ = (folder_ / "offen.mdb").u16string();
    FakeConsole console_;
};

constexpr char16_t kAll[] = u"SELECT * FROM Probe";

TEST_F(Query, PrintsValuesPartedByTabs) {
    ASSERT_EQ(call({open_, kAll}), kExitSuccess) << console_.errors;
    EXPECT_EQ(
        console_.printed,
        "Nr\tJa\\tNein\tText\tGeld\tMaß\tTag\tBytes\tKennung\n"
        "1\t-1\ta\\tb\\\\c\\r\\nd\"e\t-12.5\t0.1\t2004-06-05T13:45:07\t00ff\t{12345678-9abc-def0-0102-030405060708}\n"
        "2\t0\tStraße \U0001F600\x01\t0.0001\t1e+300\t1899-12-29T06:00:00\t\\N\t\\N\n"
        "3\t0\t\\\\N\t0\t-0\t1899-12-30T00:00:00\t\\N\t\\N\n"
        "4\t0\t\t\\N\tinf\t1e+09\t\\N\t\\N\n"
        "5\t-1\t\\N\t\\N\t\\N\t\\N\t\\N\t\\N\n");
    EXPECT_EQ(console_.errors, "");
}

TEST_F(Query, PrintsOneObjectALine) {
    ASSERT_EQ(call({open_, u"--json", u"SELECT * FROM Probe WHERE Nr < 3 OR Nr = 4"}), kExitSuccess);
    EXPECT_EQ(console_.printed,
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

TEST_F(Query, PrintsDecimalsExactlyAndDatesToTheSecond) {
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
    };
    for (const auto& [value, text] : cases) {
        std::string line;
        appendPlain(line, value);
        EXPECT_EQ(line, text);
    }
}

TEST_F(Query, RefusesAFileBesideWhichAJournalLies) {
    std::ofstream(std::filesystem::path(open_ + u"-journal")) << "begun";
    EXPECT_EQ(call({open_, kAll}), kExitError);
    EXPECT_EQ(console_.printed, "");
    EXPECT_NE(console_.errors.find("offen.mdb-journal' hinterlassen."), std::string::npos) << console_.errors;
}

TEST_F(Query, TakesThePasswordFromOptionFileOrPrompt) {
    const std::string refused = "kontodb: -2147217843: Kein zulässiges Kennwort.\n";
    const Text none = u"SELECT * FROM Probe WHERE Nr = 0";
    EXPECT_EQ(call({protected_, none, u"--password", u"Prüf wort"}), kExitSuccess);
    EXPECT_EQ(call({protected_, none, u"--password-file", passwordFile("\xEF\xBB\xBFPrüf wort\r\nzweite Zeile")}),
              kExitSuccess);
    EXPECT_EQ(call({protected_, none}, u"Prüf wort"), kExitSuccess);
    EXPECT_EQ(call({open_, none, u"--password", u"irgendeins"}), kExitSuccess);
    EXPECT_EQ(call({open_, none}, u"darf nicht gefragt werden"), kExitSuccess);
    for (const std::vector<Text>& password : {std::vector<Text>{}, {u"--password", u"prüf wort"}, {u"--password="}}) {
        std::vector<Text> arguments = {protected_, none};
        arguments.insert(arguments.end(), password.begin(), password.end());
        EXPECT_EQ(call(arguments), kExitError);
        EXPECT_EQ(console_.errors, refused);
    }
    EXPECT_EQ(call({protected_, none}, u"falsch"), kExitError);
    EXPECT_EQ(console_.errors, refused);
    EXPECT_EQ(call({protected_, none, u"--password-file", u"gibt es nicht"}), kExitError);
    EXPECT_EQ(console_.errors, "kontodb: -2147467259: Datei 'gibt es nicht' nicht gefunden.\n");
    EXPECT_EQ(call({protected_, none, u"--password=a", u"--password-file=b"}), kExitError);
    EXPECT_EQ(call({protected_}), kExitError);
}

TEST_F(Query, SaysWhatTheEngineSaysAndPrintsNothing) {
    EXPECT_EQ(call({open_, u"SELECT * FROM Probe WHERE Text = 'O'Neil'"}), kExitError);
    EXPECT_EQ(console_.printed, "");
    EXPECT_EQ(console_.errors,
              "kontodb: -2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck 'Text = 'O'Neil''.\n");
}

}  // namespace
}  // namespace kontodb
