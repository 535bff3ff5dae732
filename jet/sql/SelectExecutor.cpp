#include "jet/sql/SelectExecutor.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "jet/Errors.h"
#include "jet/expression/ExpressionErrors.h"
#include "jet/index/IndexKey.h"
#include "jet/page/DataPage.h"
#include "jet/sql/Parser.h"
#include "jet/sql/RowOrder.h"
#include "jet/sql/RowSearch.h"
#include "jet/sql/SqlError.h"
#include "jet/table/Catalog.h"

namespace jet::sql {

namespace {

class SelectExecutor {
public:
    SelectExecutor(PageSource& source, const Table& table, const Select& statement);

    ResultSet run();

private:
    void bindOrder(const Select& statement);
    const IndexDefinition* indexOfOrder() const;
    void takeRow(ResultSet& rows, const Row& row);

    PageSource& source_;
    const Table& table_;
    std::vector<const Column*> columns_;
    RowSearch search_;
    std::vector<OrderColumn> order_;
    const IndexDefinition* orderedBy_ = nullptr;  ///< stands as the order wants it; null if none does
};

SelectExecutor::SelectExecutor(PageSource& source, const Table& table, const Select& statement)
    : source_(source),
      table_(table),
      columns_(table.definition().columnsForDisplay()),
      search_(table_, statement.where) {
    bindOrder(statement);
    orderedBy_ = indexOfOrder();
}

void SelectExecutor::bindOrder(const Select& statement) {
    for (const OrderItem& item : statement.order) {
        const auto column = findColumn(columns_, item.name);
        const bool qualified = item.table.empty() || namesAreEqual(item.table, table_.name());
        if (!column || !qualified) throw missingParameter();
        order_.push_back({*column, item.descending});
    }
}

ResultSet SelectExecutor::run() {
    ResultSet rows(table_.definition());
    const std::size_t mostRows = std::size_t{source_.pageCount()} * kMaxSlotsOfPage;
    if (search_.wantsAll()) rows.reserve(std::min<std::size_t>(table_.definition().rowCount, mostRows));
    search_.forEach([&](const Row& row) { takeRow(rows, row); });
    if (order_.empty()) return rows;
    rows.arrange(orderedBy_ != nullptr ? orderByIndex(source_, rows, table_.definition(), *orderedBy_)
                                       : orderByKeys(rows, order_));
    return rows;
}

/// An index is no help with the order once the key of one row is not certain.
void SelectExecutor::takeRow(ResultSet& rows, const Row& row) {
    rows.append(source_, row);
    if (orderedBy_ != nullptr && !keyOfRowIsCertain(source_, *orderedBy_, row.view)) orderedBy_ = nullptr;
}

/// The index that stands as the order wants it, for all rows of the table.
const IndexDefinition* SelectExecutor::indexOfOrder() const {
    if (!search_.wantsAll() || order_.size() != 1) return nullptr;
    const Column& column = *columns_[order_[0].column];
    const bool standsInOrder =
        column.type == ColumnType::Numeric ? !order_[0].descending : column.type != ColumnType::Binary;
    if (!standsInOrder) return nullptr;
    for (const IndexDefinition& index : table_.definition().indexes) {
        const bool fits = index.columns.size() == 1 && index.columns[0].columnNumber == column.number &&
                          index.columns[0].ascending != order_[0].descending;
        if (fits && !index.ignoresNulls()) return &index;
    }
    return nullptr;
}

}  // namespace

ResultSet executeSelect(PageSource& source, const Select& statement) {
    const auto table = openTable(source, statement.table);
    if (!table) throw tableNotFound(statement.table);
    return SelectExecutor(source, *table, statement).run();
}

ResultSet executeSelect(PageSource& source, base::TextView statement) {
    const Statement parsed = parse(statement);
    const auto* select = std::get_if<Select>(&parsed);
    if (select == nullptr) throw notUpdatable();
    return executeSelect(source, *select);
}

}  // namespace jet::sql
