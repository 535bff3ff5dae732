#include <fstream>
#include <gtest/gtest.h>

#include "settings/cINI.h"
#include "tests/support/TempFolder.h"
#include "win32/SystemServices.h"

namespace {

/// A program folder of the test's own, which holds a settings file.
class Folder final : public platform::ProgramFolder {
public:
    explicit Folder(const std::string& settings) { std::ofstream(folder_ / "Tolv.ini", std::ios::binary) << settings; }

    base::Text path() const override { return folder_.path.u16string(); }

private:
    test::TempFolder folder_;
};

base::Text databaseFolder(const std::string& settings) {
    const Folder folder(settings);
    win32::SystemSettingsFile file;
    tolv::cINI ini(file, folder);
    return ini.GetINIString(tolv::INIKey::BenKtoPath);
}

TEST(SettingsFile, GivesTheFolderAsTheFileHoldsItInTheAnsiCodePage) {
    EXPECT_EQ(databaseFolder("[SETTINGS]\r\nBenKtoPath=D:\\Konten\r\n"), u"D:\\Konten");
    EXPECT_EQ(databaseFolder("[settings]\nBENKTOPATH = D:\\B\xFCro\\ \n"), u"D:\\Büro\\");
    EXPECT_EQ(databaseFolder("[SETTINGS]\r\nBenKtoPath=\r\n"), u"");
    EXPECT_EQ(databaseFolder("[SETTINGS]\r\nBenKtoPath=" + std::string(300, 'x')), base::Text(254, u'x'));
}

TEST(SettingsFile, FallsBackToTheProgramFolder) {
    const Folder folder("[MAIN]\r\nBenKtoPath=D:\\Konten\r\n");
    win32::SystemSettingsFile file;
    tolv::cINI ini(file, folder);
    EXPECT_EQ(ini.GetINIString(tolv::INIKey::BenKtoPath), folder.path());
}

TEST(ProgramFolder, IsTheFolderOfTheExe) {
    const base::Text path = win32::SystemProgramFolder().path();
    EXPECT_NE(path.back(), u'\\');
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(path) / L"win32_test.exe"));
}

TEST(FileSystem, KnowsFilesButNotFolders) {
    const Folder folder("");
    win32::SystemFileSystem fileSystem;
    const auto object = fileSystem.createObject();
    EXPECT_TRUE(object->FileExists(folder.path() + u"\\Tolv.ini"));
    EXPECT_FALSE(object->FileExists(folder.path()));
    EXPECT_FALSE(object->FileExists(folder.path() + u"\\nichts"));
}

}  // namespace
