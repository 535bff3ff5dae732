#include "jet/compact/Compactor.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "jet/Errors.h"
#include "jet/compact/ObjectNumbers.h"
#include "jet/fresh/FreshMaps.h"
#include "jet/fresh/FreshPages.h"
#include "jet/fresh/FreshTable.h"
#include "jet/table/Table.h"
#include "jet/value/SortKey.h"

namespace jet {
namespace {

constexpr PageNumber kFirstSystemTable = 2;

base::RuntimeError notCarried(base::TextView what) {
    return failure(base::Text(what) + u" lässt sich nicht in eine neue Datei übernehmen.");
}

/// An index over texts whose keys we cannot make would not be the same.
void requireKnownKeys(const Table& table) {
    for (const IndexDefinition& index : table.definition().indexes) {
        for (const IndexColumn& part : index.columns) {
            const Column& column = table.definition().columnOf(part);
            if (column.isText() && !sortKeyIsCertain({}, column.textOrder))
                throw notCarried(u"Der Index '" + index.name + u"' der Tabelle '" + table.name() +
                                 u"' hat eine unbekannte Sortierfolge; er");
        }
    }
}

class Compactor {
public:
    Compactor(PageSource& source, const Header& header, PageIo& io)
        : source_(source), header_(header), io_(io), pages_(io, header.databaseKey), maps_(pages_) {}

    void run() {
        readDesigns();
        giveNumbers();
        for (const Table& table : tables_)
            copy(table);
        maps_.finish();
        writeGlobalMap(pages_);
        writeHeader();
        io_.sync();
    }

private:
    void readDesigns();
    void giveNumbers();
    void copy(const Table& table);
    void writeHeader();

    PageSource& source_;
    const Header& header_;
    PageIo& io_;
    FreshPages pages_;
    FreshMaps maps_;
    std::vector<Table> tables_;
    std::vector<std::uint32_t> otherNumbers_;  ///< of objects that are no local tables
    ObjectNumbers numbers_;
};

void Compactor::readDesigns() {
    const Catalog catalog(source_);
    for (const CatalogEntry& entry : catalog.entries()) {
        if (entry.isLocalTable())
            tables_.emplace_back(source_, entry);
        else
            otherNumbers_.push_back(entry.id);
    }
    for (const Table& table : tables_)
        requireKnownKeys(table);
}

/// The first pages of all definitions, those of the system tables where every file has them.
void Compactor::giveNumbers() {
    pages_.allocate();  // header
    pages_.allocate();  // global map
    for (const PageNumber systemTable : header_.systemTables)
        numbers_.give(systemTable, pages_.allocate());
    for (const Table& table : tables_) {
        const PageNumber page = table.definition().page;
        if (std::ranges::find(header_.systemTables, page) == header_.systemTables.end())
            numbers_.give(page, pages_.allocate());
    }
    for (const Table& table : tables_) {
        const std::uint32_t number = numbers_.of(table.definition().page);
        if (std::ranges::find(otherNumbers_, number) != otherNumbers_.end())
            throw notCarried(u"Ein Objekt mit der Nummer " + base::decimal(number));
    }
}

void Compactor::copy(const Table& table) {
    TableDefinition definition = table.definition();
    definition.page = numbers_.of(definition.page);
    numbers_.renumber(definition.logicalIndexes);
    FreshTable fresh(pages_, maps_, table.name(), std::move(definition));
    std::vector<base::Value> row;
    for (RowCursor cursor(table); cursor.next();) {
        row.assign(table.definition().columnsEver, {});
        for (const Column& column : table.definition().columns)
            row[column.number] = table.value(cursor.row().view, column);
        numbers_.renumber(table.definition(), header_, row);
        fresh.addRow(row);
    }
    fresh.finish();
}

void Compactor::writeHeader() {
    Header header = header_;
    header.freeMap = {1, 0};
    header.secondMap = {1, 1};
    std::iota(header.systemTables.begin(), header.systemTables.end(), kFirstSystemTable);
    base::Bytes page(kPageSize);
    header.write(page);
    pages_.write(0, page);
}

}  // namespace

void compactDatabase(PageSource& source, const Header& header, PageIo& io) {
    Compactor(source, header, io).run();
}

}  // namespace jet
