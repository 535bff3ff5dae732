#include <algorithm>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

#include "jet/page/Header.h"
#include "jet/salvage/Rebuild.h"
#include "jet/table/Catalog.h"
#include "jet/table/LongValue.h"
#include "tests/fuzz/Seeds.h"
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

/// A row of the sound file, and the bytes without which nobody can know it: its own, the words of its slot and of the
/// slot above, which are its beginning and end, and the same for its pointer if it was moved.
struct TrueRow {
    std::vector<base::Value> values;
    std::vector<Range> bytes;
    std::vector<Range> owner;  ///< what the pages of its bytes say of themselves: kind and owner
    std::map<std::uint16_t, std::vector<Range>> longValues;  ///< by column number: the same of the parts
};

struct TrueTable {
    base::Text name;
    std::vector<Range> definition;  ///< counts, descriptors and names of the columns
    std::vector<Range> map;         ///< of its pages
    std::map<RowPointer, TrueRow> rows;
    std::map<RowPointer, RowPointer> moved;  ///< from the data to its row
};

std::size_t placeOf(RowPointer row) {
    return std::size_t{row.page} * kPageSize + slotPlace(row.slot);
}

/// The bytes of a row at its place, and the words that tell where it is.
void addSlot(FileAtHand& file, RowPointer row, std::vector<Range>& ranges) {
    const auto bytes = DataPage(file.page(row.page)).slot(row.slot).bytes;
    const auto from = static_cast<std::size_t>(bytes.data() - file.bytes.data());
    ranges.push_back({from, from + bytes.size()});
    ranges.push_back({placeOf(row) - (row.slot == 0 ? 0 : kSlotBytes), placeOf(row) + kSlotBytes});
}

void addOwner(PageNumber page, std::vector<Range>& ranges) {
    const std::size_t at = std::size_t{page} * kPageSize;
    ranges.insert(ranges.end(), {{at, at + 1}, {at + kOwnerOffset, at + kOwnerOffset + 4}});
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
    for (const RowPointer place : std::set{row.pointer, row.view.place()}) {
        addSlot(file, place, known.bytes);
        addOwner(place.page, known.owner);
    }
    for (const Column& column : table.definition().columns) {
        known.values[column.number] = table.value(row.view, column);
        if (column.isLongValue() && !row.view.isNull(column))
            addParts(file, row.view.stored(column), row.view.place(), known.longValues[column.number]);
    }
    return known;
}

/// Only definitions of one page are cut at the end of the column names; longer ones count whole.
std::vector<Range> columnBytes(const TableDefinition& definition) {
    std::vector<Range> ranges;
    for (const PageNumber page : definition.chain)
        ranges.push_back({std::size_t{page} * kPageSize, std::size_t{page + 1} * kPageSize});
    if (ranges.size() > 1) return ranges;
    std::size_t bytes = DefinitionAt::kStatistics + kStatisticsBytes * definition.indexes.size();
    for (const Column& column : definition.columns)
        bytes += Column::kDescriptorBytes + 2 + 2 * column.name.size();
    return {{ranges[0].from, ranges[0].from + bytes}};
}

std::map<PageNumber, TrueTable> readTruth(FileAtHand& file) {
    std::map<PageNumber, TrueTable> tables;
    const Catalog catalog(file);
    for (const CatalogEntry& entry : catalog.entries()) {
        if (!entry.isLocalTable() || entry.id <= 5) continue;
        const Table table(file, entry);
        TrueTable& known = tables[entry.id];
        known.name = entry.name;
        known.definition = columnBytes(table.definition());
        addSlot(file, table.definition().ownedPages, known.map);
        addOwner(table.definition().ownedPages.page, known.map);
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

struct Figures {
    std::size_t copies = 0, refused = 0, unharmed = 0, found = 0, harmed = 0, harmedFound = 0, lostValues = 0;
};

constexpr std::uint32_t kPageKey = 0x5EED1234;

class SalvageSweep : public testing::Test {
protected:
    using FoundRows = std::map<RowPointer, std::vector<base::Value>>;

    /// The rows of the fresh file, by the places and column numbers that they had in the damaged one.
    static FoundRows foundRows(PageSource& fresh, const TableOfSalvage& table) {
        FoundRows found;
        const auto made = openTable(fresh, table.name);
        RowCursor cursor(*made);
        table.rows.eachRow([&](RowPointer place, DamagedRow& row) {
            EXPECT_TRUE(cursor.next());
            std::vector<base::Value>& values = found[place];
            values.resize(row.values.size());
            for (const Column& column : table.rows.definition().columns)
                values[column.number] = made->value(cursor.row().view, *made->definition().column(column.name));
        });
        EXPECT_FALSE(cursor.next());
        return found;
    }

    void check(const TrueTable& truth, const DamagedCopy& copy, const TableOfSalvage* table, PageSource& fresh) {
        const bool isReadable = !copy.isHarmed(truth.definition);
        const FoundRows found = table == nullptr ? FoundRows{} : foundRows(fresh, *table);
        for (const auto& [place, row] : truth.rows) {
            const auto salvaged = found.find(place);
            const bool isOwned = !copy.isHarmed(row.owner) || !copy.isHarmed(truth.map);
            const bool isUnharmed = isReadable && isOwned && !copy.isHarmed(row.bytes);
            ++(isUnharmed ? figures_.unharmed : figures_.harmed);
            if (salvaged == found.end()) {
                EXPECT_FALSE(isUnharmed) << base::toUtf8(truth.name) << " has lost row " << place.page << "/"
                                         << +place.slot;
                continue;
            }
            ++(isUnharmed ? figures_.found : figures_.harmedFound);
            if (isUnharmed) compare(truth, place, row, salvaged->second, copy, *table);
        }
        if (isReadable) expectNoOthers(truth, found, copy);
    }

    void compare(const TrueTable& truth, RowPointer place, const TrueRow& row, const std::vector<base::Value>& salvaged,
                 const DamagedCopy& copy, const TableOfSalvage& table) {
        for (const Column& column : table.rows.definition().columns) {
            const auto parts = row.longValues.find(column.number);
            const bool mayBeLost = parts != row.longValues.end() && copy.isHarmed(parts->second);
            figures_.lostValues += mayBeLost ? 1 : 0;
            const base::Value& value = salvaged[column.number];
            // Access's own lists name tables by their numbers, which are new.
            if (truth.name.starts_with(u"MSys") &&
                base::equalsIgnoringAsciiCase(column.name.substr(column.name.size() - 2), u"ID"))
                continue;
            EXPECT_TRUE(mayBeLost || value == row.values[column.number])
                << base::toUtf8(truth.name) << " row " << place.page << "/" << +place.slot << " column "
                << base::toUtf8(column.name);
        }
    }

    /// What was no row is none, unless the words that say so were changed.
    void expectNoOthers(const TrueTable& truth, const FoundRows& found, const DamagedCopy& copy) {
        for (const auto& [place, row] : found) {
            if (truth.rows.contains(place)) continue;
            const auto moved = truth.moved.find(place);
            const bool isOrphan = moved != truth.moved.end() && copy.isHarmed(truth.rows.at(moved->second).bytes);
            EXPECT_TRUE(isOrphan || copy.isHarmed({{placeOf(place), placeOf(place) + kSlotBytes}}))
                << base::toUtf8(truth.name) << " has a new row " << place.page << "/" << +place.slot;
        }
    }

    void keep(const base::Bytes& file, const std::string& folder) {
        std::ofstream out(folder + "/" + std::to_string(figures_.copies) + ".mdb", std::ios::binary);
        out.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    }

    void tryOne(const base::Bytes& sound, const std::map<PageNumber, TrueTable>& truth, std::mt19937& random) {
        const DamagedCopy copy(sound, random);
        ++figures_.copies;
        test::MemoryIo io(copy.file);
        try {
            const Header header = Header::read(base::ByteView{std::span(sound).first(kPageSize)});
            DamagedFile file(io, u"Probe.mdb", header.password);
            test::MemoryIo made;
            rebuild(file, made);
            EXPECT_EQ(test::faultsIn(made.bytes(), header.password), "");
            if (const char* folder = std::getenv("TOLV_SALVAGE_OUT")) keep(made.bytes(), folder);
            Database database =
                Database::open(std::make_unique<test::MemoryIo>(made.bytes()), u"Neu.mdb", header.password);
            auto fresh = database.beginRead();
            const Salvage salvage(file);
            for (const auto& [page, table] : truth) {
                const auto found = std::ranges::find_if(
                    salvage.tables(),
                    [&, wanted = page](const TableOfSalvage& each) { return each.rows.definition().page == wanted; });
                check(table, copy, found == salvage.tables().end() ? nullptr : &*found, fresh);
            }
        } catch (const base::RuntimeError&) {
            ++figures_.refused;
        }
    }

    Figures figures_;
};

/// TOLV_SALVAGE gives more copies, TOLV_RANDOM_SEED other ones, and TOLV_CORPUS adds files by other programs. The new
/// files are kept in the folder TOLV_SALVAGE_OUT.
TEST_F(SalvageSweep, EveryRowWhoseBytesAreUnharmedIsFoundAndNoOther) {
    const std::uint32_t count = test::environmentNumber("TOLV_SALVAGE", 60);
    const std::uint32_t randomSeed = test::environmentNumber("TOLV_RANDOM_SEED", 1);
    std::mt19937 random(randomSeed);
    std::vector<Seed> all = seeds();
    std::erase_if(all, [](const Seed& seed) { return seed.name.find("V1997") != std::string::npos; });
    for (std::size_t i = 0; i < all.size(); ++i) {
        FileAtHand sound(all[i].file);
        const auto truth = readTruth(sound);
        for (std::size_t copy = i; copy < count; copy += all.size()) {
            SCOPED_TRACE(all[i].name + ", random seed " + std::to_string(randomSeed) + ", copy " +
                         std::to_string(copy));
            std::mt19937 own(random());
            tryOne(copy % 3 == 0 ? test::encoded(all[i].file, kPageKey) : all[i].file, truth, own);
        }
    }
    std::printf("%zu copies, %zu refused; %zu of %zu unharmed rows found, %zu of %zu harmed ones; %zu values lost\n",
                figures_.copies, figures_.refused, figures_.found, figures_.unharmed, figures_.harmedFound,
                figures_.harmed, figures_.lostValues);
    EXPECT_LE(figures_.refused, 1 + count / 100);
}

}  // namespace
}  // namespace jet
