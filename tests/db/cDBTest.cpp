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

TEST_F(cDBTest, theFileInTheFolderOfTheSettingsIsOpenAsLongAsTheObjectLives) {
    struct Case {
        std::optional<base::Text> setting;
        const char* dataSource;
    };
    for (const Case& c :
         {Case{std::nullopt, "Data Source=C:\\Programm\\BenKTO.mdb"},
          Case{u"D:\\Konten", "Data Source=D:\\Konten\\BenKTO.mdb"},
          Case{u"D:\\Konten\\", "Data Source=D:\\Konten\\\\BenKTO.mdb"}, Case{u"", "Data Source=\\BenKTO.mdb"}}) {
        tool.services.settingsFile.settings.clear();
        if (c.setting) {
            tool.services.settingsFile.settings[{u"C:\\Programm\\Tolv.ini", u"SETTINGS", u"BenKtoPath"}] = *c.setting;
        }
        tool.log.clear();
        {
            const cDB db(tool.database, tool.services.regional);
            EXPECT_EQ(db.Connection().State(), ado::adStateOpen);
        }
        EXPECT_THAT(tool.log, ElementsAre("provider Microsoft.Jet.OLEDB.4.0", "read setting BenKtoPath", c.dataSource,
                                          "Jet OLEDB:Database Password=HwendorpliqZ", "open connection '' -1",
                                          "close connection", "connection released"));
    }
}

TEST_F(cDBTest, aConnectionThatIsNotOpenIsReleasedWithoutClose) {
    tool.database.openFailure = -2147467259;
    EXPECT_EQ(test::errorOf([&] { const cDB db(tool.database, tool.services.regional); }), -2147467259);
    EXPECT_EQ(tool.log.back(), "connection released");

    tool.database.openFailure = 0;
    {
        const cDB db(tool.database, tool.services.regional);
        db.Connection().Close();
        tool.log.clear();
    }
    EXPECT_THAT(tool.log, ElementsAre("connection released"));
}

TEST_F(cDBTest, valuesBecomeTextsAndTextsValues) {
    const cDB db(tool.database, tool.services.regional);
    struct FromField {
        base::Value value;
        base::Text text;
    };
    for (const FromField& c : {FromField{base::Null{}, u""},
                               {base::Text(), u""},
                               {base::Text(u" a "), u" a "},
                               {std::int32_t{5}, u"5"},
                               {std::int32_t{0}, u"0"},
                               {true, u"Wahr"}}) {
        EXPECT_EQ(db.GiveTextBoxValueForFORM(c.value), c.text);
        EXPECT_EQ(NullToText(c.value), c.text);
    }
    EXPECT_EQ(test::errorOf([&] { db.GiveTextBoxValueForFORM(base::Bytes{1}); }), 13);

    struct FromText {
        base::Text text;
        base::Value value;
    };
    for (const FromText& c : {FromText{u"", base::Null{}},
                              {u"   ", base::Null{}},
                              {u"  a  b ", base::Text(u"a  b")},
                              {u"O'Neil", base::Text(u"O'Neil")},
                              {u"\t", base::Text(u"\t")},
                              {u"\u00A0", base::Text(u"\u00A0")}}) {
        EXPECT_EQ(db.GiveTextBoxValueForDB(c.text), c.value) << test::shown(c.text);
    }
}

}  // namespace
}  // namespace tolv
