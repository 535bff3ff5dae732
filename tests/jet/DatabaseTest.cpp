#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>

#include "jet/table/Catalog.h"
#include "jet/transaction/Database.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"
#include "tests/support/TempFolder.h"

namespace jet {
namespace {

constexpr base::TextView kPassword = u"Geheim";

Database open(base::Bytes bytes, base::TextView password) {
    return Database::open(test::Machine(std::move(bytes)).storage(u"C:\\konten.mdb"), password);
}

TEST(Database, OpensOnlyJet4FilesAndSaysSo) {
    const base::Bytes sound = test::sampleFile({}, base::Text(kPassword));
    const auto expectRefused = [](const base::Bytes& file) {
        EXPECT_EQ(errorOf([&] { open(file, kPassword); }),
                  "-2147467259: Nicht erkennbares Datenbankformat 'C:\\konten.mdb'.");
    };
    // An older and two later formats, and bytes that are no database.
    for (const auto& [offset, value] : std::initializer_list<std::pair<std::size_t, std::uint8_t>>{
             {0x14, 0}, {0x14, 2}, {0x17, 1}, {0x05, 's'}, {0x13, ' '}, {0x00, 1}}) {
        base::Bytes changed = sound;
        changed[offset] = value;
        expectRefused(changed);
    }
    for (const base::Bytes& file :
         {base::Bytes(sound.begin(), sound.begin() + 4095), base::Bytes{}, base::Bytes(100000, 0)})
        expectRefused(file);
}

TEST(Database, RequiresTheExactPassword) {
    for (const base::TextView wrong : {u"", u"geheim", u"Geheim ", u"Gehei", u"GeheimX"})
        EXPECT_EQ(errorOf([&] { open(test::sampleFile({}, base::Text(kPassword)), wrong); }),
                  "-2147217843: Kein zulässiges Kennwort.");
    EXPECT_EQ(errorOf([&] { open(test::sampleFile({}, base::Text(kPassword)), kPassword); }), "no error");
    EXPECT_EQ(errorOf([&] { open(test::sampleFile({}), u"irgendeins"); }), "no error");
}

/// Each test has its own file.
class FileTest : public testing::Test {
protected:
    FileTest() {
        std::ofstream(file_, std::ios::binary).write(reinterpret_cast<const char*>(bytes_.data()), std::ssize(bytes_));
    }

    static base::Text text(const std::filesystem::path& path) { return path.u16string(); }

    base::Bytes bytes_ = test::sampleFile({}, base::Text(kPassword));
    test::TempFolder folder_;
    std::filesystem::path file_ = folder_ / u"Kontenübersicht.mdb";
};

TEST_F(FileTest, StaysAsItIsWhenItIsRead) {
    const auto yesterday = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24);
    std::filesystem::last_write_time(file_, yesterday);
    const auto before = std::filesystem::last_write_time(file_);
    for (const OpenMode mode : {OpenMode::Read, OpenMode::ReadWrite}) {
        Database database = Database::open(openFile(text(file_), mode), text(file_), kPassword);
        ReadOperation operation = database.beginRead();
        EXPECT_TRUE(openTable(operation, u"MSysACEs").has_value());
    }
    EXPECT_EQ(std::filesystem::last_write_time(file_), before);
    std::ifstream stream(file_, std::ios::binary);
    EXPECT_EQ(base::Bytes(std::istreambuf_iterator<char>(stream), {}), bytes_);
}

TEST_F(FileTest, SaysWhyItCannotBeOpened) {
    const auto error = [](const std::filesystem::path& path, OpenMode mode) {
        return errorOf([&] { openFile(text(path), mode); });
    };
    EXPECT_NE(error(folder_ / "fehlt.mdb", OpenMode::Read).find("nicht gefunden."), std::string::npos);
    EXPECT_NE(error(folder_ / "fehlt/fehlt.mdb", OpenMode::Read).find("ist kein zulässiger Pfad."), std::string::npos);
    EXPECT_NE(error(folder_.path, OpenMode::Read).find("Berechtigung"), std::string::npos);
    EXPECT_NE(error(file_, OpenMode::CreateNew), "no error") << "an existing file is never taken for a new one";
    EXPECT_EQ(error(folder_ / "neu.mdb", OpenMode::CreateNew), "no error");
}

TEST_F(FileTest, IsReadByManyAndWrittenByOne) {
    constexpr std::chrono::milliseconds kNow{0};
    const auto first = openFile(text(file_), OpenMode::ReadWrite);
    const auto second = openFile(text(file_), OpenMode::ReadWrite);
    EXPECT_TRUE(first->lock(LockKind::Shared, kNow));
    EXPECT_TRUE(second->lock(LockKind::Shared, kNow));
    EXPECT_FALSE(second->lock(LockKind::Exclusive, kNow));
    first->lock(LockKind::None, kNow);
    EXPECT_TRUE(second->lock(LockKind::Exclusive, kNow));
    EXPECT_FALSE(first->lock(LockKind::Shared, kNow));
    EXPECT_TRUE(second->lock(LockKind::Shared, kNow)) << "an exclusive lock can be lowered";
    EXPECT_TRUE(first->lock(LockKind::Shared, kNow));
}

TEST_F(FileTest, IsInUseWhileSomebodyWritesAndFreeWhenAnOperationFailed) {
    Database database = Database::open(openFile(text(file_), OpenMode::Read), text(file_), kPassword);
    const auto writer = openFile(text(file_), OpenMode::ReadWrite);
    ASSERT_TRUE(writer->lock(LockKind::Exclusive, {}));
    EXPECT_NE(errorOf([&] { database.beginRead(); }).find("wird bereits benutzt."), std::string::npos);
    writer->write(0x14, base::Bytes{9});
    writer->lock(LockKind::None, {});
    EXPECT_NE(errorOf([&] { database.beginRead(); }).find("Nicht erkennbares"), std::string::npos);
    EXPECT_TRUE(writer->lock(LockKind::Exclusive, {})) << "the failed operation kept its lock";
}

#ifndef _WIN32
TEST_F(FileTest, IsFreeWhenTheJournalCannotBeLookedFor) {
    const std::filesystem::path folder = folder_ / "Ordner";
    std::filesystem::create_directory(folder);
    std::filesystem::copy_file(file_, folder / "a.mdb");
    Database database = Database::open(fileStorage(text(folder / "a.mdb")), kPassword);
    const auto writer = openFile(text(folder / "a.mdb"), OpenMode::ReadWrite);
    std::filesystem::rename(folder, folder_ / "fort");
    std::ofstream(folder) << "kein Ordner";
    EXPECT_NE(errorOf([&] { database.beginRead(); }), "no error");
    EXPECT_TRUE(writer->lock(LockKind::Exclusive, {})) << "the failed operation kept its lock";
}
#endif

TEST(PageFile, ReadsAheadInAScanAndKeepsAViewWhileOthersComeAndGo) {
    constexpr PageNumber kPages = 16 * 300 + 5;  // more extents than the cache keeps
    base::Bytes bytes(kPages * kPageSize + 100);
    for (PageNumber page = 0; page < kPages; ++page)
        base::putU32(bytes, page * kPageSize, page);
    const test::Machine machine(std::move(bytes));
    const auto io = machine.io();
    PageFile pages(*io, 0);
    EXPECT_EQ(pages.pageCount(), kPages);
    const PageView first = pages.page(3);
    for (PageNumber page = 0; page < kPages; ++page)
        ASSERT_EQ(pages.page(page).bytes.u32(0), page);
    EXPECT_EQ(first.bytes.u32(0), 3U);
    EXPECT_EQ(machine.pagesRead(), kPages) << "each page once";
    EXPECT_LT(machine.reads(), 310) << "in whole extents but for the beginning";
    EXPECT_EQ(pages.page(160).bytes.u32(0), 160U);
    EXPECT_EQ(machine.pagesRead(), kPages + 1) << "a page far from the others is read alone";
    EXPECT_THROW(pages.page(kPages), base::RuntimeError);
    EXPECT_THROW(pages.page(0xFFFFFFFF), base::RuntimeError);
}

}  // namespace
}  // namespace jet
