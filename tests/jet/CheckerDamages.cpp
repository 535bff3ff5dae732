#include "tests/jet/CheckerDamages.h"

#include <algorithm>

#include "jet/Errors.h"
#include "jet/IndexNode.h"
#include "jet/LongValue.h"

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

/// Where the bytes of a column lie in the file.
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

/// Of an index of the account table; the one of the names is a node.
PageNumber rootOf(FileAtHand& file, base::TextView index) {
    return indexNamed(definitionOf(file, u"Konten"), index).rootPage;
}

PageNumber leafOf(FileAtHand& file, base::TextView index, std::size_t child) {
    const IndexPage root(file.page(rootOf(file, index)), definitionOf(file, u"Konten").page);
    return root.isLeaf() ? root.number() : root.child(child);
}

base::Text indexText(base::TextView index, PageNumber page) {
    return u"Index '" + base::Text(index) + u"', " + onPageText(page);
}

void flipMapBit(FileAtHand& file, RowPointer map, PageNumber page) {
    const auto row = rowBytes(file, map);
    const std::size_t bit = page - base::ByteView{row}.u32(1);
    row[5 + bit / 8] ^= static_cast<std::uint8_t>(1U << (bit % 8));
}

/// Flips bits on a definition page.
std::function<base::Text(FileAtHand&)> inDefinition(base::TextView table, std::size_t offset, std::uint8_t bits) {
    return [=, name = base::Text(table)](FileAtHand& file) {
        const PageNumber page = definitionOf(file, name).page;
        file.at(page)[offset] ^= bits;
        return onPageText(page);
    };
}

/// Flips bits on the first data page of the account table.
std::function<base::Text(FileAtHand&)> inDataPage(std::size_t offset, std::uint8_t bits) {
    return [=](FileAtHand& file) {
        const PageNumber page = firstPage(file, u"Konten");
        file.at(page)[offset] ^= bits;
        return onPageText(page);
    };
}

/// Flips bits in a row of the account table, from its end if the offset is negative.
std::function<base::Text(FileAtHand&)> inRow(std::ptrdiff_t offset, std::uint8_t bits) {
    return [=](FileAtHand& file) {
        const RowPointer row = rowNumber(file, u"Konten", 7);
        const auto bytes = rowBytes(file, row);
        bytes[static_cast<std::size_t>(offset < 0 ? static_cast<std::ptrdiff_t>(bytes.size()) + offset : offset)] ^=
            bits;
        return atRowText(row);
    };
}

/// Flips bits on the second leaf of the name index.
std::function<base::Text(FileAtHand&)> inLeaf(std::size_t offset, std::uint8_t bits) {
    return [=](FileAtHand& file) {
        const PageNumber leaf = leafOf(file, u"Name", 1);
        file.at(leaf)[offset] ^= bits;
        return indexText(u"Name", leaf);
    };
}

/// Flips bits of page 0.
std::function<base::Text(FileAtHand&)> inHeader(std::size_t offset, std::uint8_t bits) {
    return [=](FileAtHand& file) {
        file.at(0)[offset] ^= bits;
        return onPageText(0);
    };
}

/// Changes the reference of a memo.
std::function<base::Text(FileAtHand&)> inMemo(std::size_t row, std::size_t offset, std::uint8_t bits) {
    return [=](FileAtHand& file) {
        const RowPointer pointer = rowNumber(file, u"Konten", row);
        stored(file, u"Konten", pointer, u"Notiz")[offset] ^= bits;
        return atRowText(pointer);
    };
}

LongValueReference memo(FileAtHand& file, std::size_t row) {
    const RowPointer pointer = rowNumber(file, u"Konten", row);
    return LongValueReference::read(stored(file, u"Konten", pointer, u"Notiz"), pointer);
}

/// Changes a number in a row of a system table.
std::function<base::Text(FileAtHand&)> inSystemRow(base::TextView table, base::TextView column, std::uint32_t number,
                                                   std::uint32_t newNumber) {
    return [=, table = base::Text(table), column = base::Text(column)](FileAtHand& file) {
        for (std::size_t i = 0;; ++i) {
            const RowPointer row = rowNumber(file, table, i);
            const auto bytes = stored(file, table, row, column);
            if (base::ByteView{bytes}.u32(0) != number && number != 0) continue;
            base::putU32(bytes, 0, newNumber);
            return u"Tabelle '" + table + u"', " + atRowText(row);
        }
    };
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

constexpr std::uint32_t kPairNumber = 7;

/// Gives a table the index of one side of a relationship, without anything else that belongs to one.
base::Text addSide(FileAtHand& file, base::TextView table, base::TextView partner, LogicalIndex::Side side,
                   std::uint8_t rule) {
    TableDefinition definition = definitionOf(file, table);
    LogicalIndex index;
    index.name = u"zweiteKonten";
    index.number = kPairNumber;
    index.kind = LogicalIndex::Kind::ForeignKey;
    index.side = side;
    index.partnerNumber = kPairNumber;
    index.partnerTable = definitionOf(file, partner).page;
    index.updateRule = rule;
    index.deleteRule = rule;
    definition.logicalIndexes.push_back(index);
    const auto pages = definitionPages(definition.encode(), definition.chain);
    std::copy(pages.at(0).begin(), pages.at(0).end(), file.at(definition.page).begin());
    return u"Tabelle '" + base::Text(table) + u"', Index 'zweiteKonten', " + onPageText(definition.page);
}

void addRelationships(std::vector<Damage>& all) {
    using enum LogicalIndex::Side;
    all.insert(all.end(), {{"a side of a relationship without the other",
                            [](FileAtHand& file) {
                                return addSide(file, u"Zweite", u"Konten", Referencing, 0) +
                                       u": Der Index einer Beziehung hat auf Seite " +
                                       base::decimal(definitionOf(file, u"Konten").page) + u" kein Gegenstück";
                            }},
                           {"sides of a relationship with different rules",
                            [](FileAtHand& file) {
                                addSide(file, u"Konten", u"Zweite", Referenced, 1);
                                return addSide(file, u"Zweite", u"Konten", Referencing, 0) +
                                       u": Der Index einer Beziehung und sein Gegenstück";
                            }},
                           {"both sides of a relationship are the referencing one",
                            [](FileAtHand& file) {
                                addSide(file, u"Konten", u"Zweite", Referencing, 0);
                                return addSide(file, u"Zweite", u"Konten", Referencing, 0) +
                                       u": Der Index einer Beziehung und sein Gegenstück";
                            }},
                           {"a relationship that is not listed", [](FileAtHand& file) {
                                addSide(file, u"Konten", u"Zweite", Referenced, 0);
                                return addSide(file, u"Zweite", u"Konten", Referencing, 0) +
                                       u": Die Beziehung steht nicht in MSysRelationships";
                            }}});
}

void addHeaderAndMaps(std::vector<Damage>& all) {
    all.insert(all.end(),
               {{"a commit word of 0", inHeader(0xE00 + 2 * 5 + 1, 0x01)},
                {"another constant", inHeader(0x98, 0x01)},
                {"another system table", inHeader(0x24, 0x08)},
                {"another map of free pages", inHeader(0x18, 0x02)},
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
                {"the map of free pages begins elsewhere",
                 [](FileAtHand& file) {
                     base::putU32(rowBytes(file, {1, 0}), 1, 8);
                     return onPageText(0) + u": Die Karte der freien Seiten reicht nicht";
                 }},
                {"free bytes of page 1",
                 [](FileAtHand& file) {
                     file.at(1)[2] ^= 1U;
                     return onPageText(1);
                 }},
                {"an owned page is missing in the map",
                 [](FileAtHand& file) {
                     const TableDefinition definition = definitionOf(file, u"Konten");
                     flipMapBit(file, definition.ownedPages, firstPage(file, u"Konten"));
                     return u"Tabelle 'Konten', " + onPageText(definition.page) + u": Die Zahl der Datensätze";
                 }},
                {"a map names a page of another table",
                 [](FileAtHand& file) {
                     const PageNumber page = firstPage(file, u"Zweite");
                     flipMapBit(file, definitionOf(file, u"Konten").ownedPages, page);
                     return onPageText(page) + u": Die Seite gehört zur Tabelle 'Zweite' und auch zur Tabelle 'Konten'";
                 }},
                {"a map names a page behind the end",
                 [](FileAtHand& file) {
                     const TableDefinition definition = definitionOf(file, u"Zweite");
                     flipMapBit(file, definition.ownedPages, file.pageCount() + 1);
                     return atRowText(definition.ownedPages) + u": Die Belegungskarte nennt " +
                            onPageText(file.pageCount() + 1);
                 }},
                {"a page with room is not owned",
                 [](FileAtHand& file) {
                     const TableDefinition definition = definitionOf(file, u"Konten");
                     flipMapBit(file, definition.pagesWithSpace, firstPage(file, u"Zweite"));
                     return base::Text(u"Tabelle 'Konten', ") + onPageText(firstPage(file, u"Zweite")) + u": Die Karte";
                 }},
                {"two tables have one map",
                 [](FileAtHand& file) {
                     const TableDefinition second = definitionOf(file, u"Zweite");
                     base::putU32(file.at(second.page), 55, definitionOf(file, u"Konten").ownedPages.packed());
                     return base::Text(u"Tabelle 'Zweite', Seite ");
                 }},
                {"free bytes of a page of maps", [](FileAtHand& file) {
                     const PageNumber page = definitionOf(file, u"Konten").ownedPages.page;
                     file.at(page)[2] ^= 4U;
                     return onPageText(page);
                 }}});
}

void addDefinitionsAndRows(std::vector<Damage>& all) {
    all.insert(all.end(), {{"length of a definition", inDefinition(u"Konten", 8, 0x02)},
                           {"a mark of a definition", inDefinition(u"Konten", 12, 0x01)},
                           {"free bytes of a definition", inDefinition(u"Konten", 2, 0x01)},
                           {"second byte of a definition", inDefinition(u"Konten", 1, 0x02)},
                           {"number of rows", inDefinition(u"Konten", 16, 0x01)},
                           {"kind of a table", inDefinition(u"Konten", 40, 'N' ^ 'S')},
                           {"columns ever added", inDefinition(u"Zweite", 41, 0x03)},
                           {"number of columns", inDefinition(u"Zweite", 45, 0x01)},
                           {"a definition with a second page that is none",
                            [](FileAtHand& file) {
                                file.at(definitionOf(file, u"Zweite").page)[4] ^= 0x01U;
                                return base::Text(u"Tabelle 'Zweite', Seite 1: Seitenart 1 statt 2");
                            }},
                           {"free bytes of a data page", inDataPage(2, 0x01)},
                           {"owner of a data page", inDataPage(4, 0x01)},
                           {"kind of a data page", inDataPage(0, 0x05)},
                           {"second byte of a data page", inDataPage(1, 0x01)},
                           {"number of slots", inDataPage(12, 0x01)},
                           {"offset of a slot", inDataPage(14 + 2 * 3, 0x40)},
                           {"an unknown flag of a slot", inDataPage(14 + 2 * 3 + 1, 0x20)},
                           {"column count of a row", inRow(0, 0x80)},
                           {"bits behind the null mask", inRow(-1, 0x80)},
                           {"number of variable columns", inRow(-3, 0x10)},
                           {"end of the data", inRow(-3 - 2 * 3 - 1, 0x04)},
                           {"a row that is deleted only in its slot",
                            [](FileAtHand& file) {
                                const RowPointer row = rowNumber(file, u"Konten", 9);
                                flagSlot(file, row, 0xC000);
                                return u"verweist auf " + atRowText(row) + u", die Zeile ist gelöscht";
                            }},
                           {"a row that claims to be the data of another one",
                            [](FileAtHand& file) {
                                const RowPointer row = rowNumber(file, u"Konten", 9);
                                flagSlot(file, row, 0x8000);
                                return atRowText(row) + u": Auf die Daten einer verschobenen Zeile verweist keine";
                            }},
                           {"a moved row points nowhere",
                            [](FileAtHand& file) {
                                RowPointer target;
                                const RowPointer row = movedRow(file, target);
                                base::putU32(rowBytes(file, row), 0, RowPointer{target.page, 0xF0}.packed());
                                return onPageText(target.page) + u": Die Zeile 240 gibt es nicht";
                            }},
                           {"the data of a moved row are a row of their own",
                            [](FileAtHand& file) {
                                RowPointer target;
                                const RowPointer row = movedRow(file, target);
                                flagSlot(file, target, 0);
                                return atRowText(row) + u": Die verschobene Zeile steht nicht auf Seite " +
                                       base::decimal(target.page);
                            }},
                           {"two rows are moved to one place",
                            [](FileAtHand& file) {
                                RowPointer target;
                                const RowPointer moved = movedRow(file, target);
                                const RowPointer other{moved.page, static_cast<std::uint8_t>(moved.slot + 1)};
                                flagSlot(file, other, 0x4000);
                                base::putU32(rowBytes(file, other), 0, target.packed());
                                return atRowText(other) + u": Auf die Daten der verschobenen Zeile";
                            }},
                           {"a value changed behind its index", [](FileAtHand& file) {
                                const RowPointer row = rowNumber(file, u"Konten", 9);
                                stored(file, u"Konten", row, u"ID")[1] ^= 0x10U;
                                return u"Der Schlüssel von " + atRowText(row);
                            }}});
}

void addIndexes(std::vector<Damage>& all) {
    all.insert(all.end(), {{"kind of an index page", inLeaf(0, 0x01)},
                           {"free bytes of a leaf", inLeaf(2, 0x01)},
                           {"owner of a leaf", inLeaf(4, 0x01)},
                           {"link to the leaf before", inLeaf(12, 0x01)},
                           {"link to the next leaf", inLeaf(16, 0x01)},
                           {"a leaf with a child", inLeaf(20, 0x01)},
                           {"prefix of a leaf", inLeaf(24, 0x03)},
                           {"end of an entry", inLeaf(27, 0x02)},
                           {"last byte of a leaf's first key", inLeaf(480 + 30, 0x04)},
                           {"first byte of a leaf", inLeaf(480, 0x01)},
                           {"a child that is not there",
                            [](FileAtHand& file) {
                                const PageNumber root = rootOf(file, u"Name");
                                const auto page = file.at(root);
                                const IndexPage node(file.page(root), definitionOf(file, u"Konten").page);
                                std::size_t end = 1;
                                while ((page[27 + end / 8] >> (end % 8) & 1U) == 0)
                                    ++end;
                                page[480 + end - 2] ^= 0x80U;
                                return base::Text(u"Index 'Name', Seite ");
                            }},
                           {"a separator that is too small",
                            [](FileAtHand& file) {
                                const PageNumber root = rootOf(file, u"Name");
                                file.at(root)[480 + 2] -= 1;
                                return indexText(u"Name", root);
                            }},
                           {"a node that has lost its last child",
                            [](FileAtHand& file) {
                                const PageNumber root = rootOf(file, u"Name");
                                base::putU32(file.at(root), 20, 0);
                                return base::Text(u"Index 'Name', Seite ");
                            }},
                           {"a node with one child twice",
                            [](FileAtHand& file) {
                                const PageNumber root = rootOf(file, u"Name");
                                const PageNumber leaf = leafOf(file, u"Name", 0);
                                base::putU32(file.at(root), 20, leaf);
                                return onPageText(leaf) +
                                       u": Die Seite gehört zum Index 'Name' der Tabelle 'Konten' mehr als einmal";
                            }},
                           {"a page that the index's map has not",
                            [](FileAtHand& file) {
                                const PageNumber leaf = leafOf(file, u"Name", 1);
                                flipMapBit(file, indexNamed(definitionOf(file, u"Konten"), u"Name").usageMap, leaf);
                                return indexText(u"Name", leaf) + u": Die Seite des Indexes fehlt";
                            }},
                           {"a page that only the index's map has",
                            [](FileAtHand& file) {
                                const PageNumber page = leafOf(file, u"PrimaryKey", 1);
                                flipMapBit(file, indexNamed(definitionOf(file, u"Konten"), u"Name").usageMap, page);
                                return indexText(u"Name", page);
                            }},
                           {"a row pointer of an entry",
                            [](FileAtHand& file) {
                                const PageNumber leaf = leafOf(file, u"PrimaryKey", 0);
                                file.at(leaf)[480 + 8] ^= 0x80U;
                                return indexText(u"PrimaryKey", leaf) + u": Ein Eintrag verweist auf";
                            }},
                           {"a row without an entry in an index that ignores nulls",
                            [](FileAtHand& file) {
                                const TableDefinition definition = definitionOf(file, u"Konten");
                                const PageNumber root = indexNamed(definition, u"Merkmal").rootPage;
                                IndexNode(true).write(file.at(root), definition.page, 0);
                                return base::Text(u"Index 'Merkmal', Seite ");
                            }},
                           {"a unique index with one value twice",
                            [](FileAtHand& file) {
                                const RowPointer row = rowNumber(file, u"Konten", 1);
                                const PageNumber leaf = leafOf(file, u"PrimaryKey", 0);
                                const auto page = file.at(leaf);
                                stored(file, u"Konten", row, u"ID")[0] = 1;
                                page[480 + 9 + 4] = 1;
                                return indexText(u"PrimaryKey", leaf) + u": Der Index verlangt eindeutige Werte";
                            }},
                           {"flags of an index", [](FileAtHand& file) {
                                const TableDefinition definition = definitionOf(file, u"Konten");
                                const auto page = file.at(definition.page);
                                const auto& block = indexNamed(definition, u"Name").block;
                                const auto at = std::search(page.begin(), page.end(), block.begin(), block.end());
                                at[46] = 0;
                                return indexText(u"Name", definition.page);
                            }}});
}

void addLongValuesAndCatalog(std::vector<Damage>& all) {
    all.insert(all.end(),
               {{"length of a chained memo", inMemo(3, 0, 0x01)},
                {"length of a memo in one row", inMemo(2, 0, 0x01)},
                {"kind of a memo", inMemo(2, 3, 0xC0)},
                {"length of a memo in its row", inMemo(1, 0, 0x01)},
                {"stamp of a chained memo", inMemo(3, 8, 0x01)},
                {"two rows share a memo",
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
                {"a part that is deleted",
                 [](FileAtHand& file) {
                     const RowPointer part = memo(file, 3).first;
                     flagSlot(file, part, 0xC000);
                     return atRowText(part);
                 }},
                {"a part that claims to be moved",
                 [](FileAtHand& file) {
                     const RowPointer part = memo(file, 2).first;
                     flagSlot(file, part, 0x4000);
                     return atRowText(part) + u": Der Teil eines langen Werts ist als verschoben";
                 }},
                {"a page that the column's map has not",
                 [](FileAtHand& file) {
                     const TableDefinition definition = definitionOf(file, u"Konten");
                     flipMapBit(file, definition.longValueMaps.at(0).owned, memo(file, 3).first.page);
                     return base::Text(u"Spalte 'Notiz', ") + atRowText(rowNumber(file, u"Konten", 3));
                 }},
                {"owner of a page of long values",
                 [](FileAtHand& file) {
                     const PageNumber page = memo(file, 2).first.page;
                     file.at(page)[4] ^= 1U;
                     return base::Text(u"Spalte 'Notiz', ") + onPageText(page);
                 }},
                {"a table's number in the catalog",
                 [](FileAtHand& file) {
                     const PageNumber page = definitionOf(file, u"Konten").page;
                     return inSystemRow(u"MSysObjects", u"Id", page, page + 1)(file).erase(0, 30);
                 }},
                {"an object without parent", inSystemRow(u"MSysObjects", u"ParentId", 0x0F000001, 0x0F0000FF)},
                {"two objects of one number", inSystemRow(u"MSysObjects", u"Id", 0x0F000003, 0x0F000002)},
                {"a system table that is not listed",
                 [](FileAtHand& file) {
                     inSystemRow(u"MSysObjects", u"Id", 4, 0x80000077)(file);
                     return base::Text(u"Die Systemtabelle auf Seite 4 ist nicht verzeichnet");
                 }},
                {"properties of a table",
                 [](FileAtHand& file) {
                     const RowPointer row = openTable(file, u"Konten")->entry().row;
                     const auto reference = LongValueReference::read(stored(file, u"MSysObjects", row, u"LvProp"), row);
                     rowBytes(file, reference.first)[4] ^= 0xFFU;
                     return base::Text(u"Tabelle 'Konten', Spalte 'LvProp'");
                 }},
                {"a column of a system table has another name",
                 [](FileAtHand& file) {
                     const std::u16string name = u"icolumn";
                     const auto page = file.at(5);
                     const auto* units = reinterpret_cast<const std::uint8_t*>(name.data());
                     *std::search(page.begin(), page.end(), units, units + 2 * name.size()) ^= 2U;
                     return base::Text(u"Tabelle 'MSysRelationships', Spalte 'icolumn', Seite 5");
                 }},
                {"rights to nothing", inSystemRow(u"MSysACEs", u"ObjectId", 5, 6)},
                {"rights to another nothing", inSystemRow(u"MSysACEs", u"ObjectId", 0x10000000, 0x10000001)}});
}

}  // namespace

PageView FileAtHand::page(PageNumber number) {
    if (number >= pageCount()) throw damaged(number, u"Die Datei endet vorher");
    return {number, base::ByteView(at(number)), nullptr};
}

std::vector<Damage> damages() {
    std::vector<Damage> all;
    addHeaderAndMaps(all);
    addDefinitionsAndRows(all);
    addIndexes(all);
    addLongValuesAndCatalog(all);
    addRelationships(all);
    return all;
}

}  // namespace jet
