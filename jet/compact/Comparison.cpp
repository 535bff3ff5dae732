#include "jet/compact/Comparison.h"

#include <algorithm>
#include <bit>
#include <span>
#include <tuple>
#include <vector>

#include "jet/Errors.h"
#include "jet/fresh/ObjectNumbers.h"
#include "jet/table/LongValue.h"
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

bool isSame(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
    return std::ranges::equal(a, b);
}

/// The bytes of a value, those of a long value included.
class Stored {
public:
    Stored(const Table& table, const RowView& row, const Column& column) {
        bytes_ = row.stored(column);
        if (!column.isLongValue() || bytes_.empty()) return;
        longValue_ = readLongValue(table.source(), bytes_, row.place());
        bytes_ = longValue_;
    }
    std::span<const std::uint8_t> bytes() const { return bytes_; }

private:
    std::span<const std::uint8_t> bytes_;
    base::Bytes longValue_;
};

class Comparison {
public:
    Comparison(PageSource& original, PageSource& copy)
        : originals_(localTables(original)), copies_(localTables(copy)) {}

    void run() {
        if (originals_.size() != copies_.size()) throw differs(u"die Zahl der Tabellen ist eine andere");
        for (std::size_t i = 0; i < originals_.size(); ++i)
            numbers_.give(originals_[i].definition().page, copies_[i].definition().page);
        for (std::size_t i = 0; i < originals_.size(); ++i) {
            compareDefinitions(originals_[i], copies_[i]);
            compareRows(originals_[i], copies_[i]);
        }
    }

private:
    void compareDefinitions(const Table& original, const Table& copy) const {
        const TableDefinition& a = original.definition();
        const TableDefinition& b = copy.definition();
        std::vector<LogicalIndex> logicalIndexes = a.logicalIndexes;
        numbers_.renumber(logicalIndexes);
        if (original.name() != copy.name() || a.kind != b.kind || a.kept != b.kept || a.columnsEver != b.columnsEver ||
            a.variableColumnsEver != b.variableColumnsEver || !areSame(a.columns, b.columns) ||
            !areSame(a.indexes, b.indexes) || !areSame(logicalIndexes, b.logicalIndexes))
            throw differs(u"die Tabelle '" + original.name() + u"' hat eine andere Definition");
        if (a.lastAutoNumber != b.lastAutoNumber)
            throw differs(u"die Tabelle '" + original.name() + u"' hat einen anderen letzten Autowert");
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
        const auto numberColumns = ObjectNumbers::columnsIn(original.entry(), original.definition());
        for (const Column& column : original.definition().columns) {
            const bool isNumber = std::ranges::find(numberColumns, &column) != numberColumns.end();
            if (isNumber ? isSameNumber(original, a, copy, b, column) : isSameValue(original, a, copy, b, column))
                continue;
            throw differs(u"in der Tabelle '" + original.name() + u"', Datensatz " + base::decimal(row) +
                          u", ist das Feld '" + column.name + u"' ein anderes");
        }
    }

    static bool isSameValue(const Table& original, const Row& a, const Table& copy, const Row& b,
                            const Column& column) {
        if (column.type == ColumnType::Boolean) return a.view.flag(column) == b.view.flag(column);
        if (a.view.isNull(column) || b.view.isNull(column)) return a.view.isNull(column) == b.view.isNull(column);
        return isSame(Stored(original, a.view, column).bytes(), Stored(copy, b.view, column).bytes());
    }

    bool isSameNumber(const Table& original, const Row& a, const Table& copy, const Row& b,
                      const Column& column) const {
        std::vector<base::Value> wanted(original.definition().columnsEver);
        wanted[column.number] = original.value(a.view, column);
        numbers_.renumber({&column}, wanted);
        return wanted[column.number] == copy.value(b.view, column);
    }

    std::vector<Table> originals_;
    std::vector<Table> copies_;
    ObjectNumbers numbers_;
};

}  // namespace

void requireSameContents(PageSource& original, const Header& originalHeader, PageSource& copy,
                         const Header& copyHeader) {
    if (factsOf(originalHeader) != factsOf(copyHeader)) throw differs(u"der Kopf der Datei ist ein anderer");
    Comparison(original, copy).run();
}

}  // namespace jet
