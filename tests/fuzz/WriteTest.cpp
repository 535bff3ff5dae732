#include <algorithm>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "jet/change/TableWriter.h"
#include "jet/space/UsageMapRow.h"
#include "jet/table/Catalog.h"
#include "jet/transaction/Transaction.h"
#include "tests/fuzz/Mutator.h"
#include "tests/fuzz/Seeds.h"
#include "tests/support/Environment.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/RandomValues.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace jet {
namespace {

using base::Text;

/// Adds a row to a random table, or changes or removes some of its rows.
void changeRows(Database& database, Mutator& random) {
    Transaction transaction(database);
    std::vector<Text> tables;
    const Catalog catalog(transaction);
    for (const CatalogEntry& entry : catalog.entries())
        if (entry.isLocalTable() && !entry.isSystem() && !entry.name.starts_with(u"MSys")) tables.push_back(entry.name);
    if (tables.empty()) return;
    TableWriter writer(transaction, tables[random.below(tables.size())]);
    std::vector<Assignment> assignments;
    for (const Column& column : writer.table().definition().columns)
        if (!column.isAutoNumber() && random.below(2) == 0)
            assignments.push_back({column.number, test::RandomValues(random.engine()).value(column)});
    std::vector<RowPointer> rows;
    for (RowCursor cursor(writer.table()); cursor.next();)
        rows.push_back(cursor.row().pointer);
    const std::uint32_t kind = random.below(4);
    if (rows.empty() || kind == 0) {
        writer.insert(assignments);
    } else {
        const std::size_t first = random.below(2) == 0 ? 0 : random.below(rows.size());
        const std::size_t last = random.below(8) == 0 ? rows.size() : first + 1 + random.below(random.below(40) + 1);
        for (std::size_t i = first; i < std::min(last, rows.size()); ++i) {
            if (!writer.find(rows[i])) continue;  // removed with another row
            if (kind == 1)
                writer.remove(rows[i]);
            else
                writer.update(rows[i], assignments);
        }
    }
    transaction.commit();
}

struct Counts {
    std::size_t tried = 0, done = 0, shared = 0, unreadable = 0;
};

/// Random changes seldom hit the maps, but a wrong map is the worst damage for a writer. So this flips bits in maps of
/// all kinds, and marks used pages as free. Only for files that are not encoded.
void changeMaps(base::Bytes& file, Mutator& random) {
    if (Header::read(base::ByteView(file)).databaseKey != 0) return;
    std::vector<RowPointer> maps;
    test::MemoryPageStore store(file);
    for (PageNumber number = 1; number < store.pageCount(); ++number) {
        const PageView page = store.page(number);
        if (page.bytes.u8(0) != 1 || page.bytes.u32(4) > 1) continue;
        const DataPage rows(page);
        for (std::size_t slot = 0; slot < rows.slotCount(); ++slot)
            if (rows.slot(slot).state == SlotState::Live) maps.push_back({number, static_cast<std::uint8_t>(slot)});
    }
    for (std::uint32_t left = 1 + random.below(3); left > 0; --left) {
        const RowPointer row = random.below(2) == 0 ? maps.front() : maps[random.below(maps.size())];
        UsageMapRow map(store, row);
        const PageNumber page = random.below(store.pageCount());
        if (map.covers(page)) map.put(page, row == maps.front() || !map.contains(page));
    }
    file = store.file();
}

/// Random changes hit unused bytes and texts more often than the structure of a file. So this changes bytes of
/// definitions, and of index pages up to the last entry. Half of the changes are in page headers, where the links are.
void changeStructure(base::Bytes& file, Mutator& random) {
    if (Header::read(base::ByteView(file)).databaseKey != 0) return;
    constexpr std::size_t kPageHead = 27;
    const auto pages = static_cast<PageNumber>(file.size() / kPageSize);
    for (std::uint32_t left = 1 + random.below(2); left > 0;) {
        const std::size_t page = kPageSize * random.below(pages);
        if (file[page] < 2 || file[page] > 4) continue;
        const std::size_t used = kPageSize - base::ByteView(file).u16(page + 2);
        const std::size_t place = random.below(random.below(2) == 0 ? kPageHead : std::max<std::size_t>(used, 1));
        if (used > kPageHead) file[page + place] ^= static_cast<std::uint8_t>(1 + random.below(255));
        --left;
    }
}

/// Whether a fault says that a page or row has two owners, or may get a second owner later. Then a change of one owner
/// can cause a new fault of the other.
bool sharesPages(const std::string& faults) {
    const auto has = [&](const char* part) { return faults.find(part) != std::string::npos; };
    return has(" und auch ") || has(" mehr als einmal") || has(" schon ") || has("die Seite gehört der Spalte nicht") ||
           has("fehlt in seiner Karte") || has(", die Datei hat nur ") || has(" gibt es nicht.");
}

/// A damaged file and the changes of its rows.
class Trial {
public:
    /// @throws RuntimeError if the file cannot even be opened or checked
    Trial(const base::Bytes& file, Counts& counts)
        : machine_(file),
          counts_(counts),
          database_(Database::open(machine_.storage(), kSeedPassword, LeftJournalRule::RollBack)),
          faults_(check()) {}

    /// @return what is wrong. Empty if the work ended in an error and changed nothing, or left a file with no more
    /// faults than before.
    std::string run(Mutator& random) {
        const base::Bytes old = machine_.file();
        ++counts_.tried;
        bool isRefused = false;
        try {
            changeRows(database_, random);
        } catch (const base::RuntimeError&) {
            isRefused = true;
        }
        if (machine_.journal()) return "a journal is left";
        if (machine_.file() == old) return {};
        ++counts_.done;
        if (isRefused) return "refused, but the file has changed";
        if (machine_.file().size() > old.size() + kMostNewPages * kPageSize) return "too many new pages";
        const std::string before = std::exchange(faults_, check());
        hasSharedPages_ = hasSharedPages_ || sharesPages(before);
        if (hasSharedPages_)
            ++counts_.shared;
        else if (std::ranges::count(faults_, '\n') > std::ranges::count(before, '\n'))
            return "before:\n" + before + "after:\n" + faults_;
        return {};
    }

private:
    static constexpr std::size_t kMostNewPages = 1500;  // every row of the largest seed gets a long value

    std::string check() {
        ReadOperation operation = database_.beginRead();
        return test::faultsIn(operation, test::Writers::Others);
    }

    test::Machine machine_;
    Counts& counts_;
    Database database_;
    std::string faults_;
    bool hasSharedPages_ = false;  ///< now or earlier: even if one owner has given up the page
};

/// Changes of rows of a damaged file end in an error that changes nothing, or in a file with no more faults than
/// before. TOLV_WRITE_MUTATIONS gives longer runs, TOLV_RANDOM_SEED other ones.
TEST(DamagedFiles, AreNotMadeWorseByChanges) {
    std::vector<Seed> all = seeds();
    std::erase_if(all, [](const Seed& seed) { return seed.name.find("V1997") != std::string::npos; });
    const std::uint32_t count = test::environmentNumber("TOLV_WRITE_MUTATIONS", 400);
    const std::uint32_t randomSeed = test::environmentNumber("TOLV_RANDOM_SEED", 1);
    Mutator random(randomSeed);
    Counts counts;
    for (std::uint32_t i = 0; i < count; ++i) {
        const Seed& seed = all[random.below(all.size())];
        const std::uint32_t kind = random.below(5);
        base::Bytes file = kind < 3 ? seed.file : random.mutate(seed.file);
        if (kind == 0) changeMaps(file, random);
        if (kind == 1 || kind == 2) changeStructure(file, random);
        SCOPED_TRACE(seed.name + ", random seed " + std::to_string(randomSeed) + ", mutation " + std::to_string(i));
        try {
            Trial trial(file, counts);
            for (int tries = 0; tries < 4; ++tries)
                EXPECT_EQ(trial.run(random), "");
        } catch (const base::RuntimeError&) {
            ++counts.unreadable;
        }
    }
    std::cout << counts.tried << " changes, " << counts.done << " have written, " << counts.shared
              << " over shared pages, " << counts.unreadable << " files could not be opened or checked\n";
    EXPECT_GT(counts.done, counts.tried / 8);
}

}  // namespace
}  // namespace jet
