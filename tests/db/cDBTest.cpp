#include <gmock/gmock.h>

#include "app/mPublic.h"
#include "db/cDB.h"
#include "settings/cINI.h"
#include "tests/support/Expect.h"
#include "tests/support/Tool.h"

namespace tolv {
namespace {

using testing::ElementsAre;

class cDBTest : public testing::Test {
protected:
    cDBTest() { objINI = std::make_unique<cINI>(tool.services.settingsFile, tool.services.programFolder); }

    test::Tool tool;
};

TEST_F(cDBTest, theAccountFileInTheConfiguredFolderIsOpenAsLongAsTheObjectLives) {
    using Place = test::FakeSettingsFile::Place;
    const base::Text ini = u"C:\\Programm\\Tolv.ini";
    struct Case {
        std::map<Place, base::Text> settings;
        std::string file;
    };
    for (const Case& c : {Case{{}, "C:\\Programm\\BenKTO.mdb"},
                          {{{{ini, u"SETTINGS", u"BenKtoPath"}, u"D:\\Büro"}}, "D:\\Büro\\BenKTO.mdb"},
                          {{{{ini, u"SETTINGS", u"BenKtoPath"}, u"D:\\"}}, "D:\\\\BenKTO.mdb"},
                          {{{{ini, u"SETTINGS", u"BenKtoPath"}, u""}}, "\\BenKTO.mdb"},
                          {{{{ini, u"MAIN", u"BenKtoPath"}, u"D:"}}, "C:\\Programm\\BenKTO.mdb"}}) {
        tool.services.settingsFile.settings = c.settings;
        tool.log.clear();
        {
            const cDB db(tool.database, tool.services.regional);
            EXPECT_EQ(db.Connection().State(), ado::adStateOpen);
        }
        EXPECT_THAT(tool.log,
                    ElementsAre("provider Microsoft.Jet.OLEDB.4.0", "read setting BenKtoPath",
                                "open " + c.file + " HwendorpliqZ '' -1", "close connection", "connection released"));
    }
}

TEST_F(cDBTest, aConnectionThatIsNotOpenIsReleasedWithoutClose) {
    {
        const cDB db(tool.database, tool.services.regional);
        db.Connection().Close();
        tool.log.clear();
    }
    EXPECT_THAT(tool.log, ElementsAre("connection released"));
    tool.database.failingCall = "open ";
    EXPECT_EQ(test::errorOf([&] { const cDB db(tool.database, tool.services.regional); }), test::FakeDatabase::kLocked);
    EXPECT_EQ(tool.log.back(), "connection released");
}

TEST_F(cDBTest, valuesAreConvertedToTextsAndBack) {
    const cDB db(tool.database, tool.services.regional);
    for (const auto& [value, text] : std::vector<std::pair<base::Value, base::Text>>{
             {base::Null{}, u""}, {base::Text(), u""}, {base::Text(u" a "), u" a "}, {std::int32_t{0}, u"0"}}) {
        EXPECT_EQ(db.GiveTextBoxValueForFORM(value), text);
        EXPECT_EQ(NullToText(value), text);
    }
    EXPECT_EQ(test::errorOf([&] { db.GiveTextBoxValueForFORM(base::Bytes{1}); }), 13);
    for (const auto& [text, value] :
         std::vector<std::pair<base::Text, base::Value>>{{u"", base::Null{}},
                                                         {u"   ", base::Null{}},
                                                         {u"  a  b ", base::Text(u"a  b")},
                                                         {u"\t", base::Text(u"\t")},
                                                         {u"\u00A0", base::Text(u"\u00A0")}})
        EXPECT_EQ(db.GiveTextBoxValueForDB(text), value) << test::shown(text);
}

}  // namespace
}  // namespace tolv
