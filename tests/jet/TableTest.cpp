#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

#include "jet/page/DataPageEditor.h"
#include "jet/space/UsageMapRow.h"
#include "jet/table/Catalog.h"
#include "jet/table/Table.h"
#include "jet/transaction/Database.h"
#include "jet/value/TextCodec.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

constexpr base::TextView kName = u"Straße";

/// A table with rows 1 to `count`. Each has a text that fills part of a page.
base::Bytes sampleFile(std::int32_t count) {
    test::SampleTable table;
    table.design.name = base::Text(kName);
    table.design.columns = {{u"Nr", ColumnType::Long}, {u"Text", ColumnType::Text, 255}};
    for (std::int32_t nr = 1; nr <= count; ++nr)
        table.rows.push_back({nr, base::Text(150, u'Ł')});
    return test::sampleFile({table});
}

class SampleTable {
public:
    explicit SampleTable(std::int32_t count) : pages(sampleFile(count)) {
        Table table(*openTable(pages, kName));
        for (auto page = table.ownedPages().next(0); page; page = table.ownedPages().next(*page + 1))
            dataPages.push_back(*page);
        definitionPage = table.definition().page;
    }

    void setState(RowPointer row, SlotState state) {
        DataPageEditor(pages, row.page, definitionPage).setState(row.slot, state);
    }

    /// Turns the row into a pointer.
    void pointTo(RowPointer row, RowPointer target) {
        base::Bytes pointer(4);
        base::putU32(pointer, 0, target.packed());
        DataPageEditor(pages, row.page, definitionPage).replace(row.slot, pointer);
        setState(row, SlotState::Moved);
    }

    /// Changes a word of the second data page.
    void put(std::size_t offset, std::uint16_t value) { base::putU16(pages.change(dataPages[1]), offset, value); }

    RowPointer row(std::size_t page, std::uint8_t slot) const { return {dataPages.at(page), slot}; }

    /// The numbers of all rows, as a scan finds them.
    std::vector<std::int32_t> scan() {
        const Table table(*openTable(pages, kName));
        const Column& number = *table.definition().column(u"nr");
        std::vector<std::int32_t> numbers;
        for (RowCursor cursor(table); cursor.next();)
            numbers.push_back(std::get<std::int32_t>(table.value(cursor.row().view, number)));
        return numbers;
    }

    PagesInMemory pages;
    std::vector<PageNumber> dataPages;
    PageNumber definitionPage = 0;
};

TEST(Table, IsScannedInTheOrderOfItsSlotsEvenIfRowsWereMoved) {
    SampleTable sample(30);
    ASSERT_EQ(sample.dataPages.size(), 3U);
    const std::int32_t secondPage = 13;  // 12 rows of about 320 bytes fill a page
    // The data of row 2 is in the slot of row 14. The data of row 3 moved twice, to that of row 15. Row 4 is deleted.
    sample.pointTo(sample.row(0, 1), sample.row(1, 1));
    sample.setState(sample.row(1, 1), SlotState::Hidden);
    sample.pointTo(sample.row(0, 2), sample.row(0, 3));
    sample.pointTo(sample.row(0, 3), sample.row(1, 2));
    sample.setState(sample.row(1, 2), SlotState::Hidden);
    const Table table(*openTable(sample.pages, u"STRASSE"));
    const Column& number = table.definition().columns[0];
    EXPECT_EQ(table.value(table.rowAt(sample.row(0, 1)).view, number), base::Value{secondPage + 1});
    EXPECT_EQ(table.rowAt(sample.row(0, 1)).pointer, sample.row(0, 1));
    EXPECT_EQ(table.value(table.rowAt(sample.row(0, 2)).view, number), base::Value{secondPage + 2});
    EXPECT_EQ(table.value(table.rowAt(sample.row(1, 0)).view, number), base::Value{secondPage});

    sample.setState(sample.row(0, 3), SlotState::Deleted);
    sample.pointTo(sample.row(0, 2), sample.row(1, 2));
    std::vector<std::int32_t> expected = {1, 14, 15};
    for (std::int32_t nr = 5; nr <= 30; ++nr)
        if (nr != 14 && nr != 15) expected.push_back(nr);
    EXPECT_EQ(sample.scan(), expected);
    for (const RowPointer lost : {sample.row(0, 3), sample.row(1, 1), sample.row(0, 200), RowPointer{999, 0}, {}})
        EXPECT_THROW(table.rowAt(lost), base::RuntimeError) << lost.page << "/" << int{lost.slot};
}

TEST(Table, ReportsDamageInsteadOfLosingRows) {
    const struct {
        const char* what;
        std::function<void(SampleTable&)> harm;
        const char* found;
    } cases[] = {
        {"a row moved to itself", [](SampleTable& s) { s.pointTo(s.row(0, 1), s.row(0, 1)); }, "Schleife"},
        {"a row moved to a live one", [](SampleTable& s) { s.pointTo(s.row(0, 1), s.row(1, 1)); }, "verschobene Zeile"},
        {"two rows moved to one place",
         [](SampleTable& s) {
             s.setState(s.row(1, 1), SlotState::Hidden);
             s.pointTo(s.row(0, 1), s.row(1, 1));
             s.pointTo(s.row(0, 2), s.row(1, 1));
         },
         "Zwei Zeilen"},
        {"a row moved to another table",
         [](SampleTable& s) {
             s.pointTo(s.row(0, 1), {14, 0});
         },
         "gehört zu"},
        {"a page of another table", [](SampleTable& s) { s.put(kOwnerOffset, 2); }, "gehört zu 2"},
        {"a page that is no data page", [](SampleTable& s) { s.put(0, 0x0104); }, "Seitenart 4"},
        {"a row after the end of the page", [](SampleTable& s) { s.put(14, 0x1001); }, "Zeilenversatz"},
        {"rows in the offset table", [](SampleTable& s) { s.put(kSlotCountOffset, 250); }, "Zeilenversatz"},
        {"more slots than can be named", [](SampleTable& s) { s.put(kSlotCountOffset, 2000); }, "2000 Zeilen"},
        {"an unknown flag", [](SampleTable& s) { s.put(14, 0x2E00); }, "Zeilenversatz"},
        {"a page that the map has lost",
         [](SampleTable& s) {
             const Table table(*openTable(s.pages, kName));
             const std::vector<PageNumber> first{s.dataPages[0]};
             UsageMapRow(s.pages, table.definition().ownedPages).replace(UsageMap::inlineRow(0, first));
         },
         "fehlt in ihrer Belegungskarte; gelesen sind 12 von 30"},
        {"a map without its page",
         [](SampleTable& s) {
             base::putU32(s.pages.change(s.definitionPage), 55, RowPointer{500, 0}.packed());
         },
         "500"},
    };
    for (const auto& each : cases) {
        SampleTable sample(30);
        each.harm(sample);
        const std::string error = errorOf([&] { sample.scan(); });
        EXPECT_NE(error.find("beschädigt, Seite"), std::string::npos) << each.what << ": " << error;
        EXPECT_NE(error.find(each.found), std::string::npos) << each.what << ": " << error;
    }
    SampleTable counted(30);
    base::putU32(counted.pages.change(counted.definitionPage), DefinitionAt::kRowCount, 32);
    EXPECT_EQ(counted.scan().size(), 30U) << "an outdated row count hides no row";
}

TEST(Catalog, RefusesTwoTablesWithTheSameName) {
    const auto table = [](base::TextView name) {
        return test::SampleTable{{base::Text(name), {{u"Nr", ColumnType::Long}}, {}}, {}};
    };
    base::Bytes file = test::sampleFile({table(u"Konten"), table(u"Kontem")});
    const base::Bytes name = encodeText(u"Kontem", false);
    const auto found = std::search(file.begin(), file.end(), name.begin(), name.end());
    ASSERT_NE(found, file.end());
    *(found + 10) = 'N';
    PagesInMemory pages(file);
    EXPECT_NE(errorOf([&] { openTable(pages, u"Konten"); }).find("doppelt"), std::string::npos);
    EXPECT_FALSE(openTable(pages, u"Tables").has_value()) << "a container is no table";
}

}  // namespace
}  // namespace jet
