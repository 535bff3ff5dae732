#include "tests/jet/CheckerDamages.h"

#include <algorithm>

#include "jet/Errors.h"
#include "jet/table/LongValue.h"
#include "jet/tree/IndexNode.h"

namespace jet {
namespace {

base::Text onPageText(PageNumber page) {
    return u"Seite " + base::decimal(page);
}

base::Text atRowText(RowPointer row) {
    return onPageText(row.page) + u", Zeile " + base::decimal(row.slot);
}

TableDefinition definitionOf(FileAtHand& file, base::TextView table) {
    return openTable(file, table)->definition();
}

PageNumber firstPage(FileAtHand& file, base::TextView table) {
    return *openTable(file, table)->ownedPages().next(0);
}

RowPointer rowNumber(FileAtHand& file, base::TextView tableName, std::size_t number) {
    const Table table = *openTable(file, tableName);
    RowCursor cursor(table);
    for (std::size_t i = 0; i <= number; ++i)
        cursor.next();
    return cursor.row().pointer;
}

/// The bytes of a column, in place in the file.
std::span<std::uint8_t> stored(FileAtHand& file, base::TextView tableName, RowPointer pointer, base::TextView column) {
    const Table table = *openTable(file, tableName);
    const Row row = table.rowAt(pointer);
    const auto bytes = row.view.stored(*table.definition().column(column));
    return std::span(file.bytes).subspan(static_cast<std::size_t>(bytes.data() - file.bytes.data()), bytes.size());
}

std::span<std::uint8_t> rowBytes(FileAtHand& file, RowPointer pointer) {
    const DataPage page(file.page(pointer.page));
    const auto bytes = page.slot(pointer.slot).bytes;
    return std::span(file.bytes).subspan(static_cast<std::size_t>(bytes.data() - file.bytes.data()), bytes.size());
}

void flagSlot(FileAtHand& file, RowPointer row, std::uint16_t flags) {
    const std::size_t at = kDataPageHeaderBytes + kSlotBytes * row.slot;
    base::putU16(file.at(row.page), at, static_cast<std::uint16_t>((file.u16(row.page, at) & 0x1FFFU) | flags));
}

const IndexDefinition& indexNamed(const TableDefinition& definition, base::TextView name) {
    return *std::find_if(definition.indexes.begin(), definition.indexes.end(),
                         [&](const IndexDefinition& index) { return index.name == name; });
}

/// The root of an index of the account table. For the index of names this is a node.
PageNumber rootOf(FileAtHand& file, base::TextView index) {
    return indexNamed(definitionOf(file, u"Konten"), index).rootPage;
}

PageNumber leafOf(FileAtHand& file, base::TextView index, std::size_t child) {
    const IndexPage root(file.page(rootOf(file, index)), definitionOf(file, u"Konten").page);
    return root.isLeaf() ? root.number() : root.child(child);
}

void flipMapBit(FileAtHand& file, RowPointer map, PageNumber page) {
    const auto row = rowBytes(file, map);
    const std::size_t bit = page - base::ByteView{row}.u32(1);
    row[5 + bit / 8] ^= static_cast<std::uint8_t>(1U << (bit % 8));
}

/// Flips bits in a row of the account table. A negative offset counts from the end of the row.
std::function<base::Text(FileAtHand&)> inRow(std::ptrdiff_t offset, std::uint8_t bits) {
    return [=](FileAtHand& file) {
        const RowPointer row = rowNumber(file, u"Konten", 7);
        const auto bytes = rowBytes(file, row);
        bytes[static_cast<std::size_t>(offset < 0 ? static_cast<std::ptrdiff_t>(bytes.size()) + offset : offset)] ^=
            bits;
        return atRowText(row);
    };
}

/// Flips bits of page 0.
std::function<base::Text(FileAtHand&)> inHeader(std::size_t offset, std::uint8_t bits) {
    return [=](FileAtHand& file) {
        file.at(0)[offset] ^= bits;
        return onPageText(0);
    };
}

LongValueReference memo(FileAtHand& file, std::size_t row) {
    const RowPointer pointer = rowNumber(file, u"Konten", row);
    return LongValueReference::read(stored(file, u"Konten", pointer, u"Notiz"), pointer);
}

RowPointer movedRow(FileAtHand& file, RowPointer& target) {
    const PageNumber page = firstPage(file, u"Zweite");
    const DataPage data(file.page(page));
    for (std::size_t i = 0;; ++i) {
        const RowPointer row{page, static_cast<std::uint8_t>(i)};
        if (data.slot(i).state != SlotState::Moved) continue;
        target = RowPointer::unpack(base::ByteView{data.slot(i).bytes}.u32(0));
        return row;
    }
}

void addHeaderAndMaps(std::vector<Damage>& all) {
    all.insert(all.end(), {{"a commit word of 0", inHeader(0xE00 + 2 * 5 + 1, 0x01)},
                           {"half a page at the end",
                            [](FileAtHand& file) {
                                file.bytes.resize(file.bytes.size() + 100);
                                return base::Text(u"keine ganze Zahl");
                            }},
                           {"the last page is missing",
                            [](FileAtHand& file) {
                                file.bytes.erase(file.bytes.end() - kPageSize, file.bytes.end());
                                return onPageText(file.pageCount());
                            }},
                           {"a page in use is free",
                            [](FileAtHand& file) {
                                const PageNumber page = firstPage(file, u"Konten");
                                flipMapBit(file, {1, 0}, page);
                                return onPageText(page) + u": Die Seite gehört zur Tabelle 'Konten' und gilt";
                            }},
                           {"the root of an index is free",
                            [](FileAtHand& file) {
                                const PageNumber page = rootOf(file, u"Name");
                                flipMapBit(file, {1, 0}, page);
                                return onPageText(page) + u": Die Seite gehört zum Index";
                            }},
                           {"the map of free pages is of the other kind",
                            [](FileAtHand& file) {
                                rowBytes(file, {1, 0})[0] = 1;
                                return base::Text(u"Seite ");
                            }},
                           {"a page with room is not owned", [](FileAtHand& file) {
                                const TableDefinition definition = definitionOf(file, u"Konten");
                                flipMapBit(file, definition.pagesWithSpace, firstPage(file, u"Zweite"));
                                return base::Text(u"Tabelle 'Konten', ") + onPageText(firstPage(file, u"Zweite")) +
                                       u": Die Karte";
                            }}});
}

void addRows(std::vector<Damage>& all) {
    all.insert(all.end(), {{"column count of a row", inRow(0, 0x80)},
                           {"bits behind the null mask", inRow(-1, 0x80)},
                           {"number of variable columns", inRow(-3, 0x10)},
                           {"end of the data", inRow(-3 - 2 * 3 - 1, 0x04)},
                           {"a row that claims to be the data of another one",
                            [](FileAtHand& file) {
                                const RowPointer row = rowNumber(file, u"Konten", 9);
                                flagSlot(file, row, 0x8000);
                                return atRowText(row) + u": Auf die Daten einer verschobenen Zeile verweist keine";
                            }},
                           {"two rows are moved to one place", [](FileAtHand& file) {
                                RowPointer target;
                                const RowPointer moved = movedRow(file, target);
                                const RowPointer other{moved.page, static_cast<std::uint8_t>(moved.slot + 1)};
                                flagSlot(file, other, 0x4000);
                                base::putU32(rowBytes(file, other), 0, target.packed());
                                return atRowText(other) + u": Auf die Daten der verschobenen Zeile";
                            }}});
}

void addIndexes(std::vector<Damage>& all) {
    all.insert(all.end(), {{"a row without an entry in an index that ignores nulls",
                            [](FileAtHand& file) {
                                const TableDefinition definition = definitionOf(file, u"Konten");
                                const PageNumber root = indexNamed(definition, u"Merkmal").rootPage;
                                IndexNode(true).write(file.at(root), definition.page, 0);
                                return base::Text(u"Index 'Merkmal', Seite ");
                            }},
                           {"a unique index with one value twice", [](FileAtHand& file) {
                                const RowPointer row = rowNumber(file, u"Konten", 1);
                                const PageNumber leaf = leafOf(file, u"PrimaryKey", 0);
                                const auto page = file.at(leaf);
                                stored(file, u"Konten", row, u"ID")[0] = 1;
                                page[480 + 9 + 4] = 1;
                                return u"Index 'PrimaryKey', " + onPageText(leaf) +
                                       u": Der Index verlangt eindeutige Werte";
                            }}});
}

void addLongValuesAndCatalog(std::vector<Damage>& all) {
    all.insert(all.end(),
               {{"two rows share a memo",
                 [](FileAtHand& file) {
                     const RowPointer row = rowNumber(file, u"Konten", 4);
                     base::putU32(stored(file, u"Konten", row, u"Notiz"), 4, memo(file, 2).first.packed());
                     return base::Text(u"Spalte 'Notiz', ") + atRowText(row) + u": Der Teil des langen Werts";
                 }},
                {"a chain that leads back to its beginning",
                 [](FileAtHand& file) {
                     const RowPointer first = memo(file, 3).first;
                     base::putU32(rowBytes(file, first), 0, first.packed());
                     return atRowText(rowNumber(file, u"Konten", 3)) + u": Der Teil des langen Werts";
                 }},
                {"a system table that is not listed",
                 [](FileAtHand& file) {
                     std::size_t number = 0;
                     const auto id = [&] {
                         return stored(file, u"MSysObjects", rowNumber(file, u"MSysObjects", number), u"Id");
                     };
                     while (base::ByteView{id()}.u32(0) != 4)
                         ++number;
                     base::putU32(id(), 0, 0x80000077);
                     return base::Text(u"Die Systemtabelle auf Seite 4 ist nicht verzeichnet");
                 }},
                {"properties of a table",
                 [](FileAtHand& file) {
                     const RowPointer row = openTable(file, u"Konten")->entry().row;
                     const auto reference = LongValueReference::read(stored(file, u"MSysObjects", row, u"LvProp"), row);
                     rowBytes(file, reference.first)[4] ^= 0xFFU;
                     return base::Text(u"Tabelle 'Konten', Spalte 'LvProp'");
                 }},
                {"a table that the catalog has lost",
                 [](FileAtHand& file) {
                     const PageNumber page = definitionOf(file, u"Zweite").page;
                     flagSlot(file, openTable(file, u"Zweite")->entry().row, 0xC000);
                     return onPageText(page) + u": Die Seite ist die Definition einer Tabelle mit der Spalte 'Nr'";
                 }},
                {"half a character in the name of a table",
                 [](FileAtHand& file) {
                     const RowPointer row = openTable(file, u"Zweite")->entry().row;
                     base::Bytes half = {0xFF, 0xFE, 'Z', 'w', 0, 0x34, 0xD8};
                     std::ranges::copy(half, stored(file, u"MSysObjects", row, u"Name").begin());
                     return atRowText(row) + u": Das Objekt";
                 }},
                {"a relationship that is not described",
                 [](FileAtHand& file) {
                     flagSlot(file, rowNumber(file, u"MSysRelationships", 0), 0xC000);
                     return base::Text(u": Die Beziehung steht nicht in MSysRelationships");
                 }},
                {"a column of a system table has another name", [](FileAtHand& file) {
                     const std::u16string name = u"icolumn";
                     const auto page = file.at(5);
                     const auto* units = reinterpret_cast<const std::uint8_t*>(name.data());
                     *std::search(page.begin(), page.end(), units, units + 2 * name.size()) ^= 2U;
                     return base::Text(u"Tabelle 'MSysRelationships', Spalte 'icolumn', Seite 5");
                 }}});
}

}  // namespace

PageView FileAtHand::page(PageNumber number) {
    if (number >= pageCount()) throw damaged(number, u"Die Datei endet vorher");
    return {number, base::ByteView(at(number)), nullptr};
}

std::vector<Damage> damages() {
    std::vector<Damage> all;
    addHeaderAndMaps(all);
    addRows(all);
    addIndexes(all);
    addLongValuesAndCatalog(all);
    return all;
}

}  // namespace jet
