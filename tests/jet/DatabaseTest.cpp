#include <gtest/gtest.h>
#include <string>

#include "jet/transaction/Database.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

constexpr base::TextView kPassword = u"Geheim";

Database open(base::Bytes bytes, base::TextView password) {
    return Database::open(test::Machine(std::move(bytes)).storage(u"C:\\konten.mdb"), password);
}

TEST(Database, RefusesEverythingExceptJet4Files) {
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

TEST(PageFile, ReadsAheadInAScanAndKeepsTheViewThatTheCallerHolds) {
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
    EXPECT_LT(machine.reads(), 310) << "in whole extents, except at the beginning";
    EXPECT_EQ(pages.page(160).bytes.u32(0), 160U);
    EXPECT_EQ(machine.pagesRead(), kPages + 1) << "a page far from the others is read alone";
    EXPECT_THROW(pages.page(kPages), base::RuntimeError);
    EXPECT_THROW(pages.page(0xFFFFFFFF), base::RuntimeError);
}

}  // namespace
}  // namespace jet
