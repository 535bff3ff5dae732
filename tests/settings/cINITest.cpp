#include <gmock/gmock.h>

#include "settings/cINI.h"
#include "tests/support/FakeServices.h"

namespace tolv {
namespace {

TEST(cINITest, aSettingIsItsValueOrItsDefaultCutAfter254Characters) {
    const base::Text path = u"C:\\Programm\\Tolv.ini";
    const base::Text longest(254, u'x');
    struct Case {
        const char* name;
        std::map<test::FakeSettingsFile::Place, base::Text> settings;
        INIKey key;
        base::Text value;
    };
    const std::vector<Case> cases{
        {"no file, folder", {}, INIKey::BenKtoPath, u"C:\\Programm"},
        {"no file, version", {}, INIKey::ProgrammVersion, u""},
        {"folder", {{{path, u"SETTINGS", u"BenKtoPath"}, u"D:\\Büro\\"}}, INIKey::BenKtoPath, u"D:\\Büro\\"},
        {"version", {{{path, u"MAIN", u"ProgrammVersion"}, u"1.0"}}, INIKey::ProgrammVersion, u"1.0"},
        {"present and empty", {{{path, u"SETTINGS", u"BenKtoPath"}, u""}}, INIKey::BenKtoPath, u""},
        {"other section", {{{path, u"MAIN", u"BenKtoPath"}, u"D:"}}, INIKey::BenKtoPath, u"C:\\Programm"},
        {"254", {{{path, u"SETTINGS", u"BenKtoPath"}, longest}}, INIKey::BenKtoPath, longest},
        {"255", {{{path, u"SETTINGS", u"BenKtoPath"}, longest + u"y"}}, INIKey::BenKtoPath, longest},
    };
    for (const Case& c : cases) {
        test::Log log;
        test::FakeSettingsFile file(log);
        test::FakeProgramFolder folder;
        file.settings = c.settings;
        EXPECT_EQ(cINI(file, folder).GetINIString(c.key), c.value) << c.name;
    }
}

TEST(cINITest, thePathIsKeptAndTheDefaultFolderIsAskedForAnew) {
    test::Log log;
    test::FakeSettingsFile file(log);
    test::FakeProgramFolder folder;
    folder.folder = u"C:\\";
    file.settings[{u"C:\\\\Tolv.ini", u"MAIN", u"ProgrammVersion"}] = u"2";
    const cINI settings(file, folder);
    EXPECT_EQ(settings.GetINIString(static_cast<INIKey>(99)), u"") << "no such key";
    EXPECT_THAT(log, testing::IsEmpty()) << "nothing is read before it is asked for";
    folder.folder = u"D:\\Neu";
    EXPECT_EQ(settings.GetINIString(INIKey::ProgrammVersion), u"2") << "a drive's root keeps its separator";
    EXPECT_EQ(settings.GetINIString(INIKey::BenKtoPath), u"D:\\Neu");
}

}  // namespace
}  // namespace tolv
