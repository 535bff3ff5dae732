#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "jet/index/IndexKey.h"
#include "jet/table/Catalog.h"
#include "jet/transaction/Database.h"
#include "jet/tree/IndexCursor.h"
#include "tests/jet/Hex.h"

/// Files by other programs, in the folder TOLV_CORPUS: the keys that we would write must be equal to the stored ones,
/// byte for byte.
namespace jet {
namespace {

struct Counts {
    int files = 0, indexes = 0, entries = 0;
};

using Entry = std::pair<base::Bytes, RowPointer>;

std::vector<Entry> keysOfRows(const Table& table, const IndexDefinition& index) {
    std::vector<Entry> entries;
    for (RowCursor cursor(table); cursor.next();) {
        base::Bytes key;
        if (keyOfRow(table.source(), index, cursor.row().view, key)) {
            entries.emplace_back(std::move(key), cursor.row().pointer);
        }
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::vector<Entry> storedKeys(const Table& table, const IndexDefinition& index) {
    std::vector<Entry> entries;
    IndexCursor cursor(table.source(), table.definition().page, index.rootPage);
    for (bool there = cursor.first(); there; there = cursor.next())
        entries.emplace_back(base::Bytes(cursor.key().begin(), cursor.key().end()), cursor.row());
    return entries;
}

void compareIndex(const std::string& file, const Table& table, const IndexDefinition& index, Counts& counts) {
    const auto expected = keysOfRows(table, index);
    const auto stored = storedKeys(table, index);
    ++counts.indexes;
    counts.entries += static_cast<int>(stored.size());
    ASSERT_EQ(stored.size(), expected.size()) << file << ", " << base::toUtf8(table.name() + u"." + index.name);
    for (std::size_t i = 0; i < stored.size(); ++i) {
        // One key of that file was written by a library that treats an eszett as one letter.
        if (file == "testUnicodeCompV2003.mdb" && expected[i].second == RowPointer{55, 7}) continue;
        EXPECT_EQ(expected[i].second, stored[i].second) << file << ", " << base::toUtf8(table.name());
        EXPECT_EQ(toHex(expected[i].first), toHex(stored[i].first)) << file << ", " << base::toUtf8(table.name());
    }
}

void compareFile(const std::filesystem::path& path, Counts& counts) {
    auto database = Database::open(openFile(path.u16string(), OpenMode::Read), path.u16string(), u"HwendorpliqZ");
    auto operation = database.beginRead();
    const Catalog catalog(operation);
    ++counts.files;
    for (const CatalogEntry& entry : catalog.entries()) {
        if (!entry.isLocalTable()) continue;
        const Table table(operation, entry);
        for (const IndexDefinition& index : table.definition().indexes)
            compareIndex(path.filename().string(), table, index, counts);
    }
}

TEST(CorpusIndex, KeysOfRowsAreTheStoredOnes) {
    const char* folder = std::getenv("TOLV_CORPUS");
    ASSERT_NE(folder, nullptr) << "TOLV_CORPUS names no folder of files";
    Counts counts;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        if (file.path().extension() != ".mdb") continue;
        if (file.path().filename() == "testV1997.mdb") {
            EXPECT_THROW(compareFile(file.path(), counts), base::RuntimeError);
            continue;
        }
        compareFile(file.path(), counts);
    }
    std::cout << counts.files << " files, " << counts.indexes << " indexes, " << counts.entries << " entries\n";
    EXPECT_GT(counts.entries, 0);
}

}  // namespace
}  // namespace jet
