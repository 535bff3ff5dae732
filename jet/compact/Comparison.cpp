#include "jet/compact/Comparison.h"

#include <algorithm>
#include <bit>
#include <tuple>
#include <vector>

#include "jet/Errors.h"
#include "jet/compact/ObjectNumbers.h"
#include "jet/table/Table.h"

namespace jet {
namespace {

base::RuntimeError differs(base::TextView what) {
    return failure(u"Die neue Datei stimmt mit der alten nicht überein: " + base::Text(what) +
                   u". Das ist ein Fehler dieses Programms; die alte Datei ist unberührt.");
}

auto factsOf(const Header& header) {
    return std::tuple(header.codePage, header.databaseKey, header.password, header.engineBuild, header.textOrder.lcid,
                      header.textOrder.version, std::bit_cast<std::uint64_t>(header.created.days));
}

auto factsOf(const Column& column) {
    return std::tuple(column.name, column.descriptor);
}

auto factsOf(const IndexDefinition& index) {
    std::vector<std::pair<std::uint16_t, bool>> columns;
    for (const IndexColumn& part : index.columns)
        columns.emplace_back(part.columnNumber, part.ascending);
    return std::tuple(std::move(columns), index.flags, index.name, index.isPrimary);
}

auto factsOf(const LogicalIndex& index) {
    return std::tuple(index.name, index.number, index.dataBlock, index.kind, index.side, index.partnerNumber,
                      index.partnerTable, index.updateRule, index.deleteRule);
}

template <typename Parts>
bool areSame(const Parts& a, const Parts& b) {
    return std::ranges::equal(a, b, [](const auto& x, const auto& y) { return factsOf(x) == factsOf(y); });
}

template <typename Bits, typename Float>
bool sameBits(const base::Value& a, const base::Value& b) {
    const auto* x = std::get_if<Float>(&a);
    const auto* y = std::get_if<Float>(&b);
    return x != nullptr && y != nullptr && std::bit_cast<Bits>(*x) == std::bit_cast<Bits>(*y);
}

/// Unlike `==`, to the bit: a number that is none is the same as itself.
bool isSame(const base::Value& a, const base::Value& b) {
    return sameBits<std::uint32_t, float>(a, b) || sameBits<std::uint64_t, double>(a, b) ||
           sameBits<std::uint64_t, base::Date>(a, b) || a == b;
}

class Comparison {
public:
    Comparison(PageSource& original, const Header& header, PageSource& copy)
        : header_(header), originals_(tablesOf(original)), copies_(tablesOf(copy)) {}

    void run() {
        if (originals_.size() != copies_.size()) throw differs(u"Die Zahl der Tabellen ist eine andere");
        for (std::size_t i = 0; i < originals_.size(); ++i)
            numbers_.give(originals_[i].definition().page, copies_[i].definition().page);
        for (std::size_t i = 0; i < originals_.size(); ++i) {
            compareDefinitions(originals_[i], copies_[i]);
            compareRows(originals_[i], copies_[i]);
        }
    }

private:
    static std::vector<Table> tablesOf(PageSource& source) {
        std::vector<Table> tables;
        for (const CatalogEntry& entry : localTables(Catalog(source)))
            tables.emplace_back(source, entry);
        return tables;
    }

    void compareDefinitions(const Table& original, const Table& copy) const {
        const TableDefinition& a = original.definition();
        const TableDefinition& b = copy.definition();
        std::vector<LogicalIndex> logicalIndexes = a.logicalIndexes;
        numbers_.renumber(logicalIndexes);
        if (original.name() != copy.name() || a.kind != b.kind || a.kept != b.kept || a.columnsEver != b.columnsEver ||
            a.variableColumnsEver != b.variableColumnsEver || !areSame(a.columns, b.columns) ||
            !areSame(a.indexes, b.indexes) || !areSame(logicalIndexes, b.logicalIndexes))
            throw differs(u"die Tabelle '" + original.name() + u"' hat eine andere Definition");
        if (static_cast<std::int32_t>(b.lastAutoNumber) < static_cast<std::int32_t>(a.lastAutoNumber))
            throw differs(u"die Tabelle '" + original.name() + u"' hat einen anderen Autowert");
    }

    void compareRows(const Table& original, const Table& copy) const {
        RowCursor a(original);
        RowCursor b(copy);
        std::int64_t row = 0;
        for (bool there = a.next(); there == b.next(); there = a.next()) {
            if (!there) return;
            compareRow(original, a.row(), copy, b.row(), ++row);
        }
        throw differs(u"die Tabelle '" + original.name() + u"' hat eine andere Zahl von Datensätzen");
    }

    void compareRow(const Table& original, const Row& a, const Table& copy, const Row& b, std::int64_t row) const {
        std::vector<base::Value> wanted(original.definition().columnsEver);
        for (const Column& column : original.definition().columns)
            wanted[column.number] = original.value(a.view, column);
        numbers_.renumber(original.definition(), header_, wanted);
        for (const Column& column : copy.definition().columns) {
            if (!isSame(wanted[column.number], copy.value(b.view, column)))
                throw differs(u"in der Tabelle '" + original.name() + u"', Datensatz " + base::decimal(row) +
                              u", ist das Feld '" + column.name + u"' ein anderes");
        }
    }

    const Header& header_;
    std::vector<Table> originals_;
    std::vector<Table> copies_;
    ObjectNumbers numbers_;
};

}  // namespace

void requireSameContents(PageSource& original, const Header& originalHeader, PageSource& copy,
                         const Header& copyHeader) {
    if (factsOf(originalHeader) != factsOf(copyHeader)) throw differs(u"der Kopf der Datei ist ein anderer");
    Comparison(original, originalHeader, copy).run();
}

}  // namespace jet
