#include <fstream>
#include <gtest/gtest.h>
#include <optional>

#include "settings/cINI.h"
#include "tests/support/TempFolder.h"
#include "win32/SystemServices.h"

namespace {

/// A program folder of the test's own, which holds a settings file.
struct Folder final : platform::ProgramFolder {
    explicit Folder(const std::string& settings) {
        std::ofstream(folder.path / "Tolv.ini", std::ios::binary) << settings;
    }
    base::Text path() const override { return folder.path.u16string(); }

    test::TempFolder folder;
};

TEST(SettingsFile, GivesTheFolderFromAFileInTheAnsiCodePageOrTheProgramFolder) {
    for (const auto& [settings, wanted] : std::initializer_list<std::pair<std::string, std::optional<base::Text>>>{
             {"[SETTINGS]\r\nBenKtoPath=D:\\Konten\r\n", u"D:\\Konten"},
             {"[settings]\nBENKTOPATH = D:\\B\xFCro\\ \n", u"D:\\Büro\\"},
             {"[SETTINGS]\r\nBenKtoPath=\r\n", u""},
             {"[SETTINGS]\r\nBenKtoPath=" + std::string(300, 'x'), base::Text(254, u'x')},
             {"[MAIN]\r\nBenKtoPath=D:\\Konten\r\n", std::nullopt}}) {
        const Folder folder(settings);
        win32::SystemSettingsFile file;
        EXPECT_EQ(tolv::cINI(file, folder).GetINIString(tolv::INIKey::BenKtoPath), wanted.value_or(folder.path()));
    }
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
