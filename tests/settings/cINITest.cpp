#include <gmock/gmock.h>

#include "settings/cINI.h"
#include "tests/support/FakeServices.h"

namespace tolv {
namespace {

/// tests/db tests the setting of the account file's folder.
TEST(cINITest, aSettingIsItsValueOrItsDefaultCutOffAfter254Characters) {
    test::Log log;
    test::FakeSettingsFile file(log);
    test::FakeProgramFolder folder;
    folder.folder = u"C:\\";  // a drive's root keeps its separator
    const cINI settings(file, folder);
    EXPECT_EQ(settings.GetINIString(static_cast<INIKey>(99)), u"") << "no such key";
    EXPECT_THAT(log, testing::IsEmpty()) << "the file is read only on request";
    EXPECT_EQ(settings.GetINIString(INIKey::ProgrammVersion), u"");
    folder.folder = u"D:\\Neu";
    EXPECT_EQ(settings.GetINIString(INIKey::BenKtoPath), u"D:\\Neu") << "the default is computed each time";

    file.settings[{u"C:\\\\Tolv.ini", u"MAIN", u"ProgrammVersion"}] = u"1.0";
    EXPECT_EQ(settings.GetINIString(INIKey::ProgrammVersion), u"1.0") << "the file's path is kept";
    const base::Text longest(254, u'x');
    for (const base::Text& path : {longest, longest + u"y"}) {
        file.settings[{u"C:\\\\Tolv.ini", u"SETTINGS", u"BenKtoPath"}] = path;
        EXPECT_EQ(settings.GetINIString(INIKey::BenKtoPath), longest);
    }
}

}  // namespace
}  // namespace tolv
