#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "jet/page/Header.h"
#include "jet/salvage/Rebuild.h"
#include "jet/table/Catalog.h"
#include "jet/table/LongValue.h"
#include "tests/fuzz/Seeds.h"
#include "tests/jet/DefinitionPlaces.h"
#include "tests/jet/FileAtHand.h"
#include "tests/support/Environment.h"
#include "tests/support/MemoryIo.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace jet {
namespace {

/// Bytes of the file, from the first to the one after the last.
struct Range {
    std::size_t from;
    std::size_t to;
};

/// The values of a row by column number, and the bytes without which nobody can know it.
struct TrueRow {
    std::vector<base::Value> values;
    std::vector<Range> bytes;
};

struct TrueTable {
    std::vector<Range> definition;
    std::map<RowPointer, TrueRow> rows;
    std::map<RowPointer, RowPointer> moved;  ///< from the data to its row
};

std::size_t placeOf(RowPointer row) {
    return std::size_t{row.page} * kPageSize + slotPlace(row.slot);
}

/// The bytes of a row at its place, the words of its slot and of the slot above, which are its beginning and end, and
/// what its page says of itself.
void addSlot(FileAtHand& file, RowPointer row, std::vector<Range>& ranges) {
    const auto bytes = DataPage(file.page(row.page)).slot(row.slot).bytes;
    const auto from = static_cast<std::size_t>(bytes.data() - file.bytes.data());
    const std::size_t page = std::size_t{row.page} * kPageSize;
    ranges.insert(ranges.end(), {{from, from + bytes.size()},
                                 {placeOf(row) - (row.slot == 0 ? 0 : kSlotBytes), placeOf(row) + kSlotBytes},
                                 {page, page + 1},
                                 {page + kOwnerOffset, page + kOwnerOffset + 4}});
}

void addParts(FileAtHand& file, std::span<const std::uint8_t> stored, RowPointer place, std::vector<Range>& ranges) {
    if (stored.size() < kLongValueReferenceBytes) return;
    const LongValueReference reference = LongValueReference::read(stored, place);
    if (reference.kind == LongValueKind::Inline) return;
    for (RowPointer part = reference.first; !part.isNone();) {
        addSlot(file, part, ranges);
        const auto bytes = DataPage(file.page(part.page)).slot(part.slot).bytes;
        part = reference.kind == LongValueKind::Chain ? RowPointer::unpack(base::ByteView{bytes}.u32(0)) : RowPointer{};
    }
}

TrueRow trueRow(FileAtHand& file, const Table& table, const Row& row) {
    TrueRow known;
    known.values.resize(table.definition().columnsEver);
    for (const RowPointer place : std::set{row.pointer, row.view.place()})
        addSlot(file, place, known.bytes);
    for (const Column& column : table.definition().columns) {
        known.values[column.number] = table.value(row.view, column);
        if (column.isLongValue() && !row.view.isNull(column))
            addParts(file, row.view.stored(column), row.view.place(), known.bytes);
    }
    return known;
}

std::map<PageNumber, TrueTable> readTruth(FileAtHand& file) {
    std::map<PageNumber, TrueTable> tables;
    const Catalog catalog(file);
    for (const CatalogEntry& entry : catalog.entries()) {
        // Access's own lists name tables by numbers, which will be new ones.
        if (!entry.isLocalTable() || entry.isSystem()) continue;
        const Table table(file, entry);
        TrueTable& known = tables[entry.id];
        const auto& chain = table.definition().chain;
        const std::size_t columnBytes = placeInDefinition(table.definition(), DefinitionPart::Index);
        for (const PageNumber page : chain)
            known.definition.push_back(
                {page * kPageSize, page * kPageSize + (chain.size() == 1 ? columnBytes : kPageSize)});
        for (RowCursor cursor(table); cursor.next();) {
            const Row& row = cursor.row();
            known.rows.emplace(row.pointer, trueRow(file, table, row));
            if (row.view.place() != row.pointer) known.moved.emplace(row.view.place(), row.pointer);
        }
    }
    return tables;
}

/// A damaged copy of a file, and which of its bytes differ.
class DamagedCopy {
public:
    DamagedCopy(const base::Bytes& sound, std::mt19937& random) : file(sound) {
        const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
        if (below(8) == 0) file.resize(file.size() / 4 + below(file.size() * 3 / 4));
        for (std::size_t pages = below(8) == 0 ? 1 + below(3) : 0; pages > 0; --pages) {
            const std::size_t page = below(file.size() / kPageSize) * kPageSize;
            std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(page), kPageSize, std::uint8_t{0});
        }
        for (std::size_t changes = 1 + below(200); changes > 0; --changes)
            file[below(file.size())] = static_cast<std::uint8_t>(below(256));
        differences_.push_back(0);
        for (std::size_t i = 0; i < sound.size(); ++i) {
            const bool isHarmed = i >= file.size() || file[i] != sound[i];
            differences_.push_back(differences_.back() + (isHarmed ? 1 : 0));
        }
    }

    bool isHarmed(const std::vector<Range>& ranges) const {
        return std::ranges::any_of(ranges, [&](const Range& range) {
            const auto at = [&](std::size_t place) { return differences_[std::min(place, differences_.size() - 1)]; };
            return at(range.to) != at(range.from);
        });
    }

    base::Bytes file;

private:
    std::vector<std::uint32_t> differences_;  ///< before each byte
};

using FoundRows = std::map<RowPointer, std::vector<base::Value>>;

/// The rows of the rebuilt file, by the places and column numbers that they had in the damaged one.
FoundRows foundRows(PageSource& fresh, const TableOfSalvage& table) {
    FoundRows found;
    const Table made = *openTable(fresh, table.name);
    RowCursor cursor(made);
    table.rows.eachRow([&](RowPointer place, DamagedRow& row) {
        EXPECT_TRUE(cursor.next());
        std::vector<base::Value>& values = found[place];
        values.resize(row.values.size());
        for (const Column& column : table.rows.definition().columns)
            values[column.number] = made.value(cursor.row().view, *made.definition().column(column.name));
    });
    EXPECT_FALSE(cursor.next());
    return found;
}

/// Every unharmed row is there with all its values. What was no row is none, unless the words that say so were changed.
/// @return the number of unharmed rows
std::size_t compare(const TrueTable& truth, const FoundRows& found, const DamagedCopy& copy) {
    std::size_t unharmed = 0;
    for (const auto& [place, row] : truth.rows) {
        if (copy.isHarmed(row.bytes)) continue;
        ++unharmed;
        const auto salvaged = found.find(place);
        EXPECT_TRUE(salvaged != found.end() && salvaged->second == row.values) << place.page << "/" << +place.slot;
    }
    for (const auto& [place, row] : found) {
        if (truth.rows.contains(place)) continue;
        const auto moved = truth.moved.find(place);
        const bool isOrphan = moved != truth.moved.end() && copy.isHarmed(truth.rows.at(moved->second).bytes);
        EXPECT_TRUE(isOrphan || copy.isHarmed({{placeOf(place), placeOf(place) + kSlotBytes}}))
            << "new: " << place.page << "/" << +place.slot;
    }
    return unharmed;
}

/// Rebuilds a damaged copy into a sound file. @return the number of unharmed rows, or nothing if the copy is refused
std::optional<std::size_t> tryOne(const base::Bytes& sound, const std::map<PageNumber, TrueTable>& truth,
                                  const DamagedCopy& copy) {
    std::size_t unharmed = 0;
    test::MemoryIo io(copy.file), made;
    const Header header = Header::read(base::ByteView{std::span(sound).first(kPageSize)});
    try {
        DamagedFile file(io, u"Probe.mdb", header.password);
        rebuild(file, made);
        EXPECT_EQ(test::faultsIn(made.bytes(), header.password), "");
        Database database = Database::open(std::make_unique<test::MemoryIo>(made.bytes()), u"Neu.mdb", header.password);
        auto fresh = database.beginRead();
        const Salvage salvage(file);
        for (const auto& [page, table] : truth) {
            if (copy.isHarmed(table.definition)) continue;
            SCOPED_TRACE("table on page " + std::to_string(page));
            const auto found =
                std::ranges::find(salvage.tables(), page, [](const auto& each) { return each.rows.definition().page; });
            unharmed += compare(table, found == salvage.tables().end() ? FoundRows{} : foundRows(fresh, *found), copy);
        }
    } catch (const base::RuntimeError&) {
        return std::nullopt;
    }
    return unharmed;
}

/// TOLV_SALVAGE gives more copies, TOLV_RANDOM_SEED other ones, and TOLV_CORPUS adds files by other programs.
TEST(SalvageSweep, EveryRowWhoseBytesAreUnharmedIsFoundAndNoOther) {
    constexpr std::uint32_t kPageKey = 0x5EED1234;
    const std::uint32_t count = test::environmentNumber("TOLV_SALVAGE", 60);
    const std::uint32_t randomSeed = test::environmentNumber("TOLV_RANDOM_SEED", 1);
    std::mt19937 random(randomSeed);
    std::vector<Seed> all = seeds();
    std::erase_if(all, [](const Seed& seed) { return seed.name.find("V1997") != std::string::npos; });
    std::size_t refused = 0, unharmed = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        FileAtHand sound(all[i].file);
        const auto truth = readTruth(sound);
        for (std::size_t number = i; number < count; number += all.size()) {
            SCOPED_TRACE(all[i].name + ", random seed " + std::to_string(randomSeed) + ", copy " +
                         std::to_string(number));
            const base::Bytes file = number % 3 == 0 ? test::encoded(all[i].file, kPageKey) : all[i].file;
            const auto found = tryOne(file, truth, DamagedCopy(file, random));
            refused += found ? 0 : 1;
            unharmed += found.value_or(0);
        }
    }
    EXPECT_LE(refused, 1 + count / 100);
    EXPECT_GT(unharmed, 10U * count);
}

}  // namespace
}  // namespace jet
