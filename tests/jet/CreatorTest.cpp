#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "jet/index/IndexedRow.h"
#include "jet/page/UsageMap.h"
#include "jet/table/Catalog.h"
#include "jet/tree/IndexCursor.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"
#include "tests/support/SparseStorage.h"

namespace jet {
namespace {

using base::Value;
using test::Rows;

TableDesign everyTypeDesign() {
    TableDesign design;
    design.name = u"Übersicht";
    const auto add = [&](base::TextView name, ColumnType type, std::uint16_t maxUnits = 0) {
        design.columns.push_back({base::Text(name), type, maxUnits});
    };
    add(u"Nr", ColumnType::Long);
    design.columns.back().isAutoNumber = true;
    add(u"Ja", ColumnType::Boolean);
    add(u"Klein", ColumnType::Byte);
    add(u"Mittel", ColumnType::Integer);
    add(u"Geld", ColumnType::Currency);
    add(u"Einfach", ColumnType::Single);
    add(u"Doppelt", ColumnType::Double);
    add(u"Tag", ColumnType::DateTime);
    add(u"Bytes", ColumnType::Binary, 40);
    add(u"Name", ColumnType::Text, 150);
    add(u"Notiz", ColumnType::Memo);
    add(u"Anlage", ColumnType::Ole);
    add(u"Kennung", ColumnType::Guid);
    add(u"Genau", ColumnType::Text, 20);
    design.columns.back().compresses = false;
    design.indexes = {{u"PrimaryKey", {{u"Nr"}}, true, IndexDefinition::kUnique | IndexDefinition::kRequired},
                      {u"Abwärts", {{u"Name", false}, {u"Klein"}}, false, 0},
                      {u"AlleZahlen", {{u"Mittel"}, {u"Geld", false}, {u"Doppelt", false}, {u"Ja"}}, false, 0},
                      {u"Lücken", {{u"Tag", false}}, false, IndexDefinition::kIgnoreNulls},
                      {u"Roh", {{u"Bytes", false}, {u"Kennung"}}, false, 0}};
    return design;
}

Rows everyTypeRows(std::size_t count) {
    Rows rows;
    for (std::size_t i = 0; i < count; ++i) {
        const auto n = static_cast<std::int32_t>(i);
        const auto byte = static_cast<std::uint8_t>(i * 37);
        std::vector<Value> row = {n + 1,
                                  i % 3 == 0,
                                  byte,
                                  static_cast<std::int16_t>(500 - n * 13),
                                  base::Currency{(n - 20) * std::int64_t{1'000'000'000}},
                                  static_cast<float>(n) / 4,
                                  10.5 - n,
                                  base::Date{static_cast<double>(n * 7 - 50) + 0.25},
                                  base::Bytes(i % 41, byte),
                                  base::Text(i % 150, static_cast<char16_t>(u'a' + i % 26)) + u"ä",
                                  base::Text(i * 50, u'é'),
                                  base::Bytes(i * 211, byte),
                                  base::Guid{{byte, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}},
                                  base::Text(u"Ł")};
        // Every column except the number is null in some rows. A flag is never null.
        if (i % 5 == 4) row[2 + i % 12] = base::Null{};
        rows.push_back(std::move(row));
    }
    return rows;
}

base::Bytes fileWith(const TableDesign& design, const Rows& rows, const base::Text& password = {}) {
    return test::sampleFile({{design, rows}}, password);
}

Rows readAll(ReadOperation& operation, const Table& table) {
    Rows rows;
    for (RowCursor cursor(table); cursor.next();) {
        std::vector<Value>& row = rows.emplace_back();
        for (const Column* column : table.definition().columnsForDisplay())
            row.push_back(valueOf(operation, cursor.row().view, *column));
    }
    return rows;
}

std::vector<RowPointer> rowsByIndex(const Table& table, const IndexDefinition& index) {
    std::vector<RowPointer> rows;
    IndexCursor cursor(table.source(), table.definition().page, index.rootPage);
    for (bool there = cursor.first(); there; there = cursor.next())
        rows.push_back(rowAtEntry(table, index, cursor).pointer);
    return rows;
}

TEST(Creator, WhatItWritesIsReadBackFromASoundFile) {
    const Rows rows = everyTypeRows(120);
    const base::Bytes file = fileWith(everyTypeDesign(), rows, u"geheim");
    EXPECT_EQ(test::faultsIn(file, u"geheim"), "");
    auto database = Database::open(std::make_unique<MemoryIo>(file), u"neu.mdb", u"geheim");
    auto operation = database.beginRead();
    const auto table = openTable(operation, u"ÜBERSICHT");
    ASSERT_TRUE(table);
    EXPECT_EQ(readAll(operation, *table), rows);
    EXPECT_EQ(table->definition().lastAutoNumber, 120U);
    const PropertyBlob properties = table->properties();
    EXPECT_FALSE(properties.isRequired(u"Name"));
    EXPECT_TRUE(properties.allowsZeroLength(u"Name"));
}

TEST(Creator, RefusesWhatWouldMakeAnUnsoundFile) {
    TableDesign design;
    design.name = u"T";
    design.columns = {{u"Name", ColumnType::Text, 255}};
    design.indexes = {{u"Name", {{u"Name"}}, false, IndexDefinition::kUnique}};
    EXPECT_THROW(fileWith(design, {{base::Text(u"Straße")}, {base::Text(u"STRASSE ")}}), base::RuntimeError);
    EXPECT_NO_THROW(fileWith(design, {{base::Null{}}, {base::Null{}}}));  // nulls are not equal
    design.indexes[0].flags |= IndexDefinition::kRequired;
    EXPECT_THROW(fileWith(design, {{base::Null{}}}), base::RuntimeError);
    EXPECT_THROW(fileWith(design, {{base::Text{0xD83D, 0xDE00}}}), base::RuntimeError);
    EXPECT_THROW(fileWith(design, {}, u"einundzwanzig Zeichen"), base::RuntimeError);
    EXPECT_NO_THROW(fileWith(design, {{base::Text(u"Strasse")}, {base::Text(u"Straße 2")}}, u"zwanzig Zeichen lang"));
}

/// A flipped bit in an index may stay unnoticed only if the walk still gives every row in the same order.
TEST(Creator, NoFlippedBitOfAnIndexLosesARow) {
    TableDesign design;
    design.name = u"T";
    design.columns = {{u"Name", ColumnType::Text, 120}};
    design.indexes = {{u"Name", {{u"Name"}}, false, 0}};
    Rows rows;
    for (int i = 0; i < 60; ++i)
        rows.push_back({base::decimal(i * 37 % 60 + 10) + base::Text(110, u'm')});
    const base::Bytes sound = fileWith(design, rows);

    std::vector<RowPointer> expected;
    std::vector<PageNumber> pages;
    {
        auto database = test::openSample(sound);
        auto operation = database.beginRead();
        const auto table = openTable(operation, u"T");
        const IndexDefinition& index = table->definition().indexes[0];
        expected = rowsByIndex(*table, index);
        const UsageMap map = UsageMap::read(operation, index.usageMap);
        for (auto page = map.next(0); page; page = map.next(*page + 1))
            pages.push_back(*page);
    }
    ASSERT_EQ(expected.size(), rows.size());
    ASSERT_GE(pages.size(), 3U);

    const unsigned seed = 20240611;
    std::mt19937 random(seed);
    int noticed = 0;
    for (int round = 0; round < 1500; ++round) {
        base::Bytes file = sound;
        const std::size_t place = pages[random() % pages.size()] * kPageSize + random() % kPageSize;
        file[place] ^= static_cast<std::uint8_t>(1U << (random() % 8));
        auto database = test::openSample(file);
        auto operation = database.beginRead();
        const auto table = openTable(operation, u"T");
        try {
            EXPECT_EQ(rowsByIndex(*table, table->definition().indexes[0]), expected)
                << "seed " << seed << ", byte " << place;
        } catch (const base::RuntimeError&) {
            ++noticed;
        }
    }
    EXPECT_GT(noticed, 500);
}

TEST(Creator, UsageMapsOfEverySizeHoldTheirPages) {
    // The global map: usual row, longest row, one and two bitmap pages.
    for (const PageNumber count : {20U, 512U, 513U, 32032U, 32033U, 40000U}) {
        test::SparseFile sparse({}, 0);
        const auto io = sparse.storage()->openForReading();
        FreshPages pages(*io);
        while (pages.count() < count)
            pages.allocate();
        FreshMaps maps(pages);
        const std::vector<std::vector<PageNumber>> sets = {
            {}, {3, 511}, {500, 1000}, {8, 520}, {count - 5, count - 1}, {1, 32735, 32736, 70000}};
        std::vector<RowPointer> rows;
        for (const auto& set : sets) {
            rows.push_back(maps.reserve());
            maps.set(rows.back(), set);
        }
        maps.finish();
        writeGlobalMap(pages);
        io->resize(std::uint64_t{pages.count()} * kPageSize);

        PageFile file(*io, 0);
        const UsageMap global = UsageMap::read(file, {1, 0});
        for (PageNumber page = 0; page < pages.count(); ++page)
            ASSERT_FALSE(global.contains(page)) << count << ", page " << page;
        if (count != 512 && count != 32032) {
            EXPECT_TRUE(global.contains(pages.count()));
        }
        for (std::size_t i = 0; i < sets.size(); ++i) {
            const UsageMap map = UsageMap::read(file, rows[i]);
            std::vector<PageNumber> read;
            for (auto page = map.next(0); page; page = map.next(*page + 1))
                read.push_back(*page);
            EXPECT_EQ(read, sets[i]) << count;
        }
    }
}

}  // namespace
}  // namespace jet
