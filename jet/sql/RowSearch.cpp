#include "jet/sql/RowSearch.h"

#include <algorithm>
#include <utility>

#include "jet/index/IndexKey.h"
#include "jet/index/IndexedRow.h"
#include "jet/tree/IndexCursor.h"

namespace jet::sql {

RowSearch::RowSearch(const Table& table, const std::optional<Expression>& where) : table_(table) {
    if (!where) return;
    condition_.emplace(*where, table.name(), table.definition().columnsForDisplay());
    condition_->expectCondition();
}

void RowSearch::forEach(const std::function<bool(const Row&)>& take) const {
    if (const auto range = rangeOfCondition()) {
        for (const RowPointer pointer : rowsInRange(*range)) {
            const Row row = table_.rowAt(pointer);
            if (isWanted(row) && !take(row)) return;
        }
        return;
    }
    for (RowCursor cursor(table_); cursor.next();)
        if (isWanted(cursor.row()) && !take(cursor.row())) return;
}

std::vector<RowPointer> RowSearch::rows() const {
    std::vector<RowPointer> rows;
    forEach([&](const Row& row) {
        rows.push_back(row.pointer);
        return true;
    });
    return rows;
}

bool RowSearch::isWanted(const Row& row) const {
    return !condition_ || condition_->holds(StoredValues(table_.source(), row.view));
}

/// An index for one of the equalities that the condition requires; a unique one if there is one.
std::optional<RowSearch::IndexRange> RowSearch::rangeOfCondition() const {
    std::optional<IndexRange> best;
    if (!condition_) return best;
    for (const RequiredEquality& equality : condition_->requiredEqualities()) {
        const Column& column = *equality.column;
        for (const IndexDefinition& index : table_.definition().indexes) {
            const bool fits = !index.columns.empty() && index.columns[0].columnNumber == column.number;
            // An index of several columns that ignores nulls may lack a row because another column is null.
            const bool whole = index.columns.size() == 1 || !index.ignoresNulls();
            if (!fits || !whole || (best && !index.isUnique())) continue;
            auto key = searchKeyPart(column, equality.value, index.columns[0].ascending);
            if (key) best = IndexRange{&index, std::move(*key)};
            if (best && best->index->isUnique()) return best;
        }
    }
    return best;
}

/// The index orders rows by their pointers only if their whole keys are equal, so the pointers must be sorted here.
std::vector<RowPointer> RowSearch::rowsInRange(const IndexRange& range) const {
    std::vector<RowPointer> pointers;
    IndexCursor cursor(table_.source(), table_.definition().page, range.index->rootPage);
    for (cursor.seek(range.key); cursor.isAtEntry() && cursor.keyStartsWith(range.key); cursor.next())
        pointers.push_back(rowAtEntry(table_, *range.index, cursor).pointer);
    std::sort(pointers.begin(), pointers.end());
    return pointers;
}

}  // namespace jet::sql
