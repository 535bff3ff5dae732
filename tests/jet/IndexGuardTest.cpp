#include <algorithm>
#include <gtest/gtest.h>

#include "jet/index/IndexGuard.h"
#include "jet/table/Catalog.h"
#include "jet/tree/IndexCursor.h"
#include "jet/tree/IndexNode.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

const base::Text kLongText(255, u'ß');
const base::Text kSurrogates = u"Smiley \U0001F600";

/// Texts in an index of two columns, numbers in another index.
test::SampleTable sampleTable(const std::vector<base::Value>& texts, bool indexesTexts) {
    test::SampleTable table;
    table.design.name = u"Probe";
    table.design.columns = {{.name = u"Text", .type = ColumnType::Text, .maxUnits = 255},
                            {.name = u"Zahl", .type = ColumnType::Long},
                            {.name = u"Zusatz", .type = ColumnType::Text, .maxUnits = 255}};
    table.design.indexes = {{.name = u"IZahl", .columns = {{u"Zahl"}}}};
    if (indexesTexts) table.design.indexes.push_back({.name = u"ITexte", .columns = {{u"Text", false}, {u"Zusatz"}}});
    std::int32_t number = 0;
    for (const base::Value& text : texts)
        table.rows.push_back({text, ++number, base::Null{}});
    return table;
}

struct Sample {
    explicit Sample(const std::vector<base::Value>& texts, bool indexesTexts = true)
        : store(test::sampleFile({sampleTable(texts, indexesTexts)})), table(*openTable(store, u"Probe")) {}

    const IndexDefinition& index(base::TextView name) const {
        const auto& all = table.definition().indexes;
        return *std::find_if(all.begin(), all.end(), [&](const IndexDefinition& one) { return one.name == name; });
    }

    /// Gives the first or last entry of an index another key.
    void forge(base::TextView name, bool first) {
        IndexCursor cursor(store, table.definition().page, index(name).rootPage);
        ASSERT_TRUE(first ? cursor.first() : cursor.last());
        const PageNumber page = cursor.leafPage();
        IndexNode leaf(IndexPage(store.page(page), table.definition().page));
        // Without their common prefix, not all of the other entries fit on the page.
        while (leaf.size() > 2)
            leaf.erase(1);
        const std::size_t at = first ? 0 : leaf.size() - 1;
        base::Bytes forged(leaf.entry(at).begin(), leaf.entry(at).end());
        forged[1] = static_cast<std::uint8_t>(first ? forged[1] - 1 : forged[1] + 1);
        leaf.replaceEntry(at, forged);
        leaf.write(store.change(page), table.definition().page, 0);
    }

    /// The first row's key in an index of texts that is not part of the file.
    IndexEntryKey textKey(std::uint8_t flags) {
        IndexDefinition texts;
        texts.name = u"ITexte";
        texts.columns = {{table.definition().column(u"Text")->number, false},
                         {table.definition().column(u"Zusatz")->number, true}};
        texts.flags = static_cast<std::uint8_t>(flags | IndexDefinition::kAlways);
        RowCursor cursor(table);
        EXPECT_TRUE(cursor.next());
        return keyToWrite(store, texts, cursor.row().view);
    }

    test::MemoryPageStore store;
    Table table;
};

std::vector<base::Value> manyTexts() {
    std::vector<base::Value> texts;
    for (int i = 1000; i < 1600; ++i)
        texts.emplace_back(u"Name " + base::decimal(i));
    return texts;
}

TEST(IndexGuard, FindsForeignKeysAtBothEndsOfAnIndexOfTexts) {
    for (const bool first : {true, false}) {
        Sample sample(manyTexts());
        for (const auto& index : sample.table.definition().indexes)
            EXPECT_NO_THROW(requireOwnKeys(sample.table, index));
        sample.forge(u"ITexte", first);
        const std::string error = errorOf([&] { requireOwnKeys(sample.table, sample.index(u"ITexte")); });
        EXPECT_NE(error.find("'ITexte'"), std::string::npos) << "first: " << first;
        // The keys of numbers are certain. A wrong one is damage, which the checker reports.
        sample.forge(u"IZahl", first);
        EXPECT_NO_THROW(requireOwnKeys(sample.table, sample.index(u"IZahl")));
    }
}

TEST(IndexGuard, RefusesKeysThatAnIndexMustNotTake) {
    const std::string kNone = "no error";
    const struct {
        const char* what;
        base::Value text;
        std::string error;  ///< a part of the message
        std::uint8_t flags;
        bool hasEntry = true;
    } cases[] = {
        {"a name", u"Müller", kNone, IndexDefinition::kUnique},
        {"surrogates", kSurrogates, "nicht sicher bekannt", 0},
        {"a key too long to be certain", kLongText, "nicht sicher bekannt", 0},
        {"null", base::Null{}, kNone, IndexDefinition::kUnique},
        {"null where the index wants values", base::Null{}, "Nullwert", IndexDefinition::kRequired},
        {"nulls that the index ignores", base::Null{}, kNone, IndexDefinition::kIgnoreNulls, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Sample sample({c.text}, false);
        IndexEntryKey entry;
        const std::string error = errorOf([&] { entry = sample.textKey(c.flags); });
        EXPECT_NE(error.find(c.error), std::string::npos) << error;
        if (error != kNone) continue;
        EXPECT_EQ(entry.hasEntry, c.hasEntry);
        EXPECT_TRUE(entry.hasNull) << "the further column";
    }
}

}  // namespace
}  // namespace jet
