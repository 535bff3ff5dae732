#include "jet/fresh/Creator.h"
#include "jet/page/UsageMap.h"
#include "jet/storage/MemoryIo.h"
#include "tests/jet/CheckerDamages.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/RelatedTables.h"

namespace jet {
namespace {

constexpr std::int32_t kAccounts = 400;
constexpr std::uint8_t kMovedSlot = 2;

TableDesign accounts() {
    return {.name = u"Konten",
            .columns = {{.name = u"ID", .type = ColumnType::Long, .isAutoNumber = true},
                        {.name = u"Name", .type = ColumnType::Text, .maxUnits = 100},
                        {.name = u"Merkmal", .type = ColumnType::Text, .maxUnits = 20},
                        {.name = u"Notiz", .type = ColumnType::Memo},
                        {.name = u"Aktiv", .type = ColumnType::Boolean}},
            .indexes = {{.name = u"PrimaryKey",
                         .columns = {{u"ID"}},
                         .isPrimary = true,
                         .flags = IndexDefinition::kUnique | IndexDefinition::kRequired},
                        {.name = u"Name", .columns = {{u"Name"}, {u"ID", false}}},
                        {.name = u"Merkmal", .columns = {{u"Merkmal"}}, .flags = IndexDefinition::kIgnoreNulls}}};
}

/// The memo of row i: none, in the row, in one row of a page, in a chain of three parts, and so on.
base::Value memoOf(std::int32_t i) {
    constexpr std::size_t kUnits[] = {0, 20, 300, 10000, 200};
    if (i == 0 || i >= static_cast<std::int32_t>(std::size(kUnits))) return base::Null{};
    return base::Text(kUnits[static_cast<std::size_t>(i)], u'm');
}

Creator::RowFeed accountRows() {
    return [i = 0](std::vector<base::Value>& row) mutable {
        if (i == kAccounts) return false;
        const base::Text number = base::decimal((i * 7919) % 10007);
        row = {i + 1, u"Bäckerei Müller & Söhne, Niederlassung Nr. " + number, base::Null{}, memoOf(i), i % 3 == 0};
        if (i % 4 == 0) row[2] = u"Merkmal " + number;
        ++i;
        return true;
    };
}

TableDesign second() {
    return {.name = u"Zweite",
            .columns = {{.name = u"Nr", .type = ColumnType::Long},
                        {.name = u"Text", .type = ColumnType::Text, .maxUnits = 50}},
            .indexes = {{.name = u"Nr", .columns = {{u"Nr"}}, .flags = IndexDefinition::kUnique}}};
}

Creator::RowFeed secondRows() {
    return [i = 0](std::vector<base::Value>& row) mutable {
        if (i == 10) return false;
        ++i;
        row = {i, u"Zeile " + base::decimal(i)};
        return true;
    };
}

/// Moves a row's data to another page, as for a row that has grown.
void moveRow(FileAtHand& file) {
    const PageNumber page = *openTable(file, u"Zweite")->ownedPages().next(0);
    const auto bytes = DataPage(file.page(page)).slot(kMovedSlot).bytes;
    const base::Bytes row(bytes.begin(), bytes.end());
    const int target = appendRow(file.at(page), row, SlotState::Hidden);
    const std::size_t slot = kDataPageHeaderBytes + kSlotBytes * kMovedSlot;
    const std::uint16_t offset = file.u16(page, slot);
    base::putU16(file.at(page), slot, static_cast<std::uint16_t>(offset | 0x4000U));
    base::putU32(file.at(page), offset, RowPointer{page, static_cast<std::uint8_t>(target)}.packed());
}

}  // namespace

base::Bytes fileToDamage() {
    MemoryIo io;
    Creator creator(io, {});
    creator.addTable(accounts(), accountRows());
    creator.addTable(second(), secondRows());
    creator.finish();
    test::MemoryPageStore store(io.bytes());
    test::relate(store, u"Zweite", u"Nr", u"Konten", u"ID", 0, test::kCascade);
    FileAtHand file(store.file());
    moveRow(file);
    return file.bytes;
}

}  // namespace jet
