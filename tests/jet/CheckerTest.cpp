#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

#include "jet/check/Checker.h"
#include "jet/table/Catalog.h"
#include "jet/table/LongValue.h"
#include "jet/table/Table.h"
#include "jet/tree/IndexNode.h"
#include "tests/fuzz/Seeds.h"
#include "tests/jet/FileAtHand.h"

namespace jet {
namespace {

using base::Text;

std::string linesOf(const CheckResult& result) {
    std::ostringstream lines;
    for (const Finding& finding : result.findings.kept())
        lines << base::toUtf8(finding.line()) << "\n";
    return lines.str();
}

Text onPage(PageNumber page) {
    return u"Seite " + base::decimal(page);
}

Text atRow(RowPointer row) {
    return onPage(row.page) + u", Zeile " + base::decimal(row.slot);
}

/// A sound file of two tables (tests/fuzz/Seeds.h), and helpers to damage it.
class Checker : public testing::Test {
protected:
    CheckResult check() { return checkDatabase(file, file.bytes.size()); }

    void expectFault(const Text& part) {
        const CheckResult result = check();
        EXPECT_TRUE(std::ranges::any_of(result.findings.kept(),
                                        [&](const Finding& finding) {
                                            return finding.kind == Finding::Kind::Fault &&
                                                   finding.line().find(part) != Text::npos;
                                        }))
            << "wanted " << base::toUtf8(part) << "\n"
            << linesOf(result);
    }
    /// The same, and the file is sound again for the next damage.
    void expectOnly(const Text& part) {
        expectFault(part);
        file.bytes = sound;
    }

    Table table(base::TextView name) { return *openTable(file, name); }
    PageNumber firstPage(base::TextView name) { return *table(name).ownedPages().next(0); }
    RowPointer row(base::TextView name, std::size_t number) {
        const Table of = table(name);
        RowCursor cursor(of);
        for (std::size_t i = 0; i <= number; ++i)
            cursor.next();
        return cursor.row().pointer;
    }
    std::span<std::uint8_t> stored(base::TextView name, RowPointer pointer, base::TextView column) {
        const Table of = table(name);
        const Row found = of.rowAt(pointer);
        return file.at(found.view.stored(*of.definition().column(column)));
    }
    std::span<std::uint8_t> rowBytes(RowPointer pointer) {
        return file.at(DataPage(file.page(pointer.page)).slot(pointer.slot).bytes);
    }
    void flagSlot(RowPointer pointer, std::uint16_t flags) {
        const std::size_t at = kDataPageHeaderBytes + kSlotBytes * pointer.slot;
        base::putU16(file.at(pointer.page), at,
                     static_cast<std::uint16_t>((file.u16(pointer.page, at) & 0x1FFFU) | flags));
    }
    void flipMapBit(RowPointer map, PageNumber page) {
        const auto bytes = rowBytes(map);
        const std::size_t bit = page - base::ByteView{bytes}.u32(1);
        bytes[5 + bit / 8] ^= static_cast<std::uint8_t>(1U << (bit % 8));
    }
    RowPointer partOf(base::TextView name, RowPointer pointer, base::TextView column) {
        return LongValueReference::read(stored(name, pointer, column), pointer).first;
    }

    const base::Bytes sound = relatedTables();
    FileAtHand file{sound};
};

TEST_F(Checker, FindsNothingInSoundFiles) {
    const CheckResult result = check();
    EXPECT_EQ(linesOf(result), "");
    EXPECT_EQ(result.counts.tables, 6U);
    EXPECT_EQ(result.counts.longValues, 4U + 2U) << "memos, and the properties of two tables";
    for (const Seed& seed : seeds()) {
        if (seed.name.find('.') != std::string::npos) continue;  // made by other programs
        FileAtHand other(seed.file);
        EXPECT_EQ(linesOf(checkDatabase(other, other.bytes.size())), "") << seed.name;
    }
}

/// Damages that the sweeps over single bytes do not make (CheckerSweepTest.cpp).
TEST_F(Checker, NamesThePlaceOfADamagedPageOrMap) {
    file.at(0)[0xE00 + 2 * 5 + 1] ^= 1U;
    expectOnly(onPage(0));  // a commit word of 0
    file.bytes.resize(file.bytes.size() + 100);
    expectOnly(u"keine ganze Zahl");
    file.bytes.resize(file.bytes.size() - kPageSize);
    expectOnly(onPage(file.pageCount()));
    const PageNumber page = firstPage(u"Konten"), other = firstPage(u"Zweite");
    flipMapBit({1, 0}, page);
    expectOnly(onPage(page) + u": Die Seite gehört zur Tabelle 'Konten' und gilt");
    const PageNumber root = table(u"Konten").definition().indexes[1].rootPage;
    flipMapBit({1, 0}, root);
    expectOnly(onPage(root) + u": Die Seite gehört zum Index");
    rowBytes({1, 0})[0] = 1;  // another kind of map
    expectOnly(u"Seite ");
    flipMapBit(table(u"Konten").definition().pagesWithSpace, other);
    expectOnly(u"Tabelle 'Konten', " + onPage(other) + u": Die Karte");
}

TEST_F(Checker, NamesThePlaceOfADamagedRowOrEntry) {
    const RowPointer damaged = row(u"Konten", 7), ninth = row(u"Konten", 9);
    rowBytes(damaged)[0] ^= 0x80U;  // the number of columns
    expectOnly(atRow(damaged));
    // Bits after the null mask, the number of variable columns, the end of the data.
    for (const auto& [fromEnd, bits] : {std::pair<std::size_t, unsigned>(1, 0x80), {3, 0x10}, {10, 0x04}}) {
        const auto bytes = rowBytes(damaged);
        bytes[bytes.size() - fromEnd] ^= static_cast<std::uint8_t>(bits);
        expectOnly(atRow(damaged));
    }
    flagSlot(ninth, 0x8000);
    expectOnly(atRow(ninth) + u": Auf die Daten einer verschobenen Zeile verweist keine");
    const RowPointer moved{firstPage(u"Zweite"), 2}, next{moved.page, 3};
    flagSlot(next, 0x4000);
    std::ranges::copy(rowBytes(moved).first(4), rowBytes(next).begin());
    expectOnly(atRow(next) + u": Auf die Daten der verschobenen Zeile");

    const TableDefinition definition = table(u"Konten").definition();
    const auto root = [&](base::TextView name) {
        return std::ranges::find(definition.indexes, name, &IndexDefinition::name)->rootPage;
    };
    IndexNode(true).write(file.at(root(u"Merkmal")), definition.page, 0);
    expectOnly(u"Index 'Merkmal', Seite ");
    file.at(root(u"Name"))[480 + 2] -= 1;  // a separator that is too small
    expectOnly(u"Index 'Name', " + onPage(root(u"Name")));
    stored(u"Konten", row(u"Konten", 1), u"ID")[0] = 1;
    file.at(root(u"PrimaryKey"))[480 + 9 + 4] = 1;
    expectOnly(u"Index 'PrimaryKey', " + onPage(root(u"PrimaryKey")) + u": Der Index verlangt eindeutige Werte");

    file.at(root(u"PrimaryKey"))[480 + 9 + 8] = 0;  // the row of the second entry
    expectOnly(u"es ist nicht der einzige");
    flagSlot(ninth, 0xC000);
    expectOnly(u"die Zeile ist gelöscht");

    const RowPointer second = row(u"Konten", 2), third = row(u"Konten", 3), fourth = row(u"Konten", 4);
    base::putU32(stored(u"Konten", fourth, u"Notiz"), 4, partOf(u"Konten", second, u"Notiz").packed());
    expectOnly(u"Spalte 'Notiz', " + atRow(fourth) + u": Der Teil des langen Werts");
    const RowPointer first = partOf(u"Konten", third, u"Notiz");
    base::putU32(rowBytes(first), 0, first.packed());
    expectOnly(atRow(third) + u": Der Teil des langen Werts");
}

TEST_F(Checker, NamesThePlaceOfADamagedObject) {
    for (std::size_t number = 0; file.bytes == sound; ++number) {
        const auto id = stored(u"MSysObjects", row(u"MSysObjects", number), u"Id");
        if (base::ByteView{id}.u32(0) == 4) base::putU32(id, 0, 0x80000077);
    }
    expectOnly(u"Die Systemtabelle auf Seite 4 ist nicht verzeichnet");
    rowBytes(partOf(u"MSysObjects", table(u"Konten").entry().row, u"LvProp"))[4] ^= 0xFFU;
    expectOnly(u"Tabelle 'Konten', Spalte 'LvProp'");
    const RowPointer query = table(u"Konten").entry().row;  // as if it were one
    rowBytes(partOf(u"MSysObjects", query, u"LvProp"))[4] ^= 0xFFU;
    base::putU16(stored(u"MSysObjects", query, u"Type"), 0, 5);
    expectOnly(u"Tabelle 'MSysObjects', Spalte 'LvProp', " + onPage(query.page));
    const CatalogEntry second = table(u"Zweite").entry();
    flagSlot(second.row, 0xC000);
    expectOnly(onPage(second.id) + u": Die Seite ist die Definition einer Tabelle mit der Spalte 'Nr'");
    const base::Bytes halfACharacter = {0xFF, 0xFE, 'Z', 'w', 0, 0x34, 0xD8};
    std::ranges::copy(halfACharacter, stored(u"MSysObjects", second.row, u"Name").begin());
    expectOnly(atRow(second.row) + u": Das Objekt");
    flagSlot(row(u"MSysRelationships", 0), 0xC000);
    expectOnly(u": Die Beziehung steht nicht in MSysRelationships");
    const base::Bytes name = {'i', 0, 'c', 0, 'o', 0, 'l', 0, 'u', 0, 'm', 0, 'n', 0};
    const auto page = file.at(5);
    *std::search(page.begin(), page.end(), name.begin(), name.end()) ^= 2U;
    expectOnly(u"Tabelle 'MSysRelationships', Spalte 'icolumn', Seite 5");
}

TEST_F(Checker, GoesOnAfterAFault) {
    const RowPointer damaged = row(u"Konten", 7), fourth = row(u"Konten", 4);
    file.at(0)[0xE00 + 2 * 5 + 1] ^= 1U;
    rowBytes(damaged).back() ^= 0x80U;
    base::putU32(stored(u"Konten", fourth, u"Notiz"), 4, partOf(u"Konten", row(u"Konten", 2), u"Notiz").packed());
    flagSlot(row(u"MSysRelationships", 0), 0xC000);
    for (const Text& part : {onPage(0), atRow(damaged), atRow(fourth), Text(u"Die Beziehung steht nicht")})
        expectFault(part);
}

/// Known leftovers of other writers. Each is reported, and none is a fault.
TEST_F(Checker, ReportsHarmlessOdditiesAsNotes) {
    const PageNumber konten = table(u"Konten").definition().page;
    base::putU32(file.at(konten), 16, 152);
    base::putU32(file.at(konten), 20, 17);  // last auto number
    base::putU32(file.at(3), 16, 1);        // row count of a system table
    // The data of a moved row to which no row points.
    const PageNumber page = firstPage(u"Zweite");
    const auto first = rowBytes({page, 0});
    appendRow(file.at(page), base::Bytes(first.begin(), first.end()), SlotState::Hidden);
    // The map of free pages begins only at page 8. It calls the last page used, although nothing uses it.
    file.bytes.resize(file.bytes.size() + kPageSize);
    const auto map = rowBytes({1, 0});
    const PageNumber last = file.pageCount() - 1;
    map[5 + last / 8] &= static_cast<std::uint8_t>(~(1U << (last % 8)));
    std::shift_left(map.begin() + 5, map.end(), 1);
    base::putU32(map, 1, 8);
    const CheckResult result = check();
    EXPECT_TRUE(result.isSound()) << linesOf(result);
    EXPECT_EQ(result.findings.noteCount(), 6U) << linesOf(result);
}

TEST_F(Checker, KeepsABoundedNumberOfFindings) {
    for (std::size_t user = 0; user < 256; ++user)
        base::putU16(file.at(0), 0xE00 + 2 * user, 0);
    std::ranges::fill(file.at(table(u"Konten").definition().indexes[0].rootPage), std::uint8_t{0});
    const CheckResult result = check();
    EXPECT_GT(result.findings.faultCount(), 256U);
    EXPECT_LE(result.findings.kept().size(), 2 * Findings::kMaxKept);
    EXPECT_LT(result.findings.faultCount(), 300U) << "a lost tree is told in a few sentences";
}

}  // namespace
}  // namespace jet
