#include "jet/sql/SelectExecutor.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "jet/Errors.h"
#include "jet/IndexCursor.h"
#include "jet/IndexKey.h"
#include "jet/sql/Condition.h"
#include "jet/sql/Parser.h"
#include "jet/sql/RowOrder.h"
#include "jet/sql/SqlError.h"

namespace jet::sql {

namespace {

constexpr std::size_t kMostRowsOfPage = 255;

ValueClass classOf(ColumnType type) {
    switch (type) {
        case ColumnType::Text:
        case ColumnType::Memo:
            return ValueClass::Text;
        case ColumnType::Binary:
        case ColumnType::Ole:
        case ColumnType::Block:
            return ValueClass::Bytes;
        case ColumnType::Guid:
            return ValueClass::Guid;
        default:
            return ValueClass::Number;
    }
}

/// A row's values in the order of SELECT *.
class ValuesOfRow final : public ColumnValues {
public:
    ValuesOfRow(const Table& table, const std::vector<const Column*>& columns, const Row& row)
        : table_(table), columns_(columns), row_(row) {}
    base::Value value(std::size_t column) const override { return table_.value(row_.view, *columns_[column]); }

private:
    const Table& table_;
    const std::vector<const Column*>& columns_;
    const Row& row_;
};

/// Part of an index where all rows with some value of a column must stand.
struct IndexRange {
    const IndexDefinition* index = nullptr;
    base::Bytes key;
};

class SelectExecutor {
public:
    SelectExecutor(PageSource& source, Table table, const Select& statement);

    ResultSet run();

private:
    void bindOrder(const Select& statement);
    void takeRow(ResultSet& rows, const Row& row);
    ResultSet scan();
    std::optional<IndexRange> rangeOfCondition() const;
    ResultSet search(const IndexRange& range);
    const IndexDefinition* indexOfOrder() const;

    PageSource& source_;
    Table table_;
    std::vector<const Column*> columns_;
    std::vector<ConditionColumn> names_;
    std::optional<Condition> condition_;
    std::vector<OrderColumn> order_;
    const IndexDefinition* orderedBy_ = nullptr;  ///< stands as the order wants it; null if none does
};

SelectExecutor::SelectExecutor(PageSource& source, Table table, const Select& statement)
    : source_(source), table_(std::move(table)), columns_(table_.definition().columnsForDisplay()) {
    for (const Column* column : columns_)
        names_.push_back({column->name, classOf(column->type), column->textOrder});
    if (statement.where) condition_.emplace(*statement.where, table_.name(), names_);
    bindOrder(statement);
    orderedBy_ = indexOfOrder();
}

void SelectExecutor::bindOrder(const Select& statement) {
    for (const OrderItem& item : statement.order) {
        const auto column = findColumn(names_, item.name);
        const bool qualified = item.table.empty() || namesAreEqual(item.table, table_.name());
        if (!column || !qualified) throw missingParameter();
        order_.push_back({*column, item.descending});
    }
}

ResultSet SelectExecutor::run() {
    const auto range = rangeOfCondition();
    ResultSet rows = range ? search(*range) : scan();
    if (order_.empty()) return rows;
    rows.arrange(orderedBy_ != nullptr ? orderByIndex(source_, rows, table_.definition(), *orderedBy_)
                                       : orderByKeys(rows, order_));
    return rows;
}

void SelectExecutor::takeRow(ResultSet& rows, const Row& row) {
    if (!condition_ || condition_->holds(ValuesOfRow(table_, columns_, row))) rows.append(source_, row);
}

/// An index is no help with the order once the key of one row is not certain.
ResultSet SelectExecutor::scan() {
    ResultSet rows(table_.definition());
    const std::size_t mostRows = std::size_t{source_.pageCount()} * kMostRowsOfPage;
    if (!condition_) rows.reserve(std::min<std::size_t>(table_.definition().rowCount, mostRows));
    for (RowCursor cursor(table_); cursor.next();) {
        takeRow(rows, cursor.row());
        if (orderedBy_ != nullptr && !keyOfRowIsCertain(source_, *orderedBy_, cursor.row().view)) orderedBy_ = nullptr;
    }
    return rows;
}

/// The first index that can answer one of the equalities that the condition asks for, best a unique one.
std::optional<IndexRange> SelectExecutor::rangeOfCondition() const {
    std::optional<IndexRange> best;
    if (!condition_) return best;
    for (const RequiredEquality& equality : condition_->requiredEqualities()) {
        const Column& column = *columns_[equality.column];
        for (const IndexDefinition& index : table_.definition().indexes) {
            const bool fits = !index.columns.empty() && index.columns[0].columnNumber == column.number;
            // With several columns an index that ignores nulls may leave out a row for the others' sake.
            const bool whole = index.columns.size() == 1 || !index.ignoresNulls();
            if (!fits || !whole || (best && !index.isUnique())) continue;
            auto key = searchKeyPart(column, equality.value, index.columns[0].ascending);
            if (key) best = IndexRange{&index, std::move(*key)};
            if (best && best->index->isUnique()) return best;
        }
    }
    return best;
}

/// Rows of equal keys stand in the index by their pointers, those of a longer key do not: hence the sorting.
ResultSet SelectExecutor::search(const IndexRange& range) {
    std::vector<RowPointer> pointers;
    IndexCursor cursor(source_, table_.definition(), *range.index);
    for (cursor.seek(range.key); cursor.isAtEntry() && cursor.keyStartsWith(range.key); cursor.next())
        pointers.push_back(rowAtEntry(table_, *range.index, cursor).pointer);
    std::sort(pointers.begin(), pointers.end());
    ResultSet rows(table_.definition());
    for (const RowPointer pointer : pointers)
        takeRow(rows, table_.rowAt(pointer));
    return rows;
}

/// The index that stands as the order wants it, for all rows of the table.
const IndexDefinition* SelectExecutor::indexOfOrder() const {
    if (condition_ || order_.size() != 1) return nullptr;
    const Column& column = *columns_[order_[0].column];
    for (const IndexDefinition& index : table_.definition().indexes) {
        const bool fits = index.columns.size() == 1 && index.columns[0].columnNumber == column.number &&
                          index.columns[0].ascending != order_[0].descending;
        if (fits && !index.ignoresNulls()) return &index;
    }
    return nullptr;
}

}  // namespace

ResultSet executeSelect(PageSource& source, const Select& statement) {
    auto table = openTable(source, statement.table);
    if (!table) throw tableNotFound(statement.table);
    return SelectExecutor(source, std::move(*table), statement).run();
}

ResultSet executeSelect(PageSource& source, base::TextView statement) {
    const Statement parsed = parse(statement);
    const auto* select = std::get_if<Select>(&parsed);
    if (select == nullptr) throw notUpdatable();
    return executeSelect(source, *select);
}

}  // namespace jet::sql
