#include "jet/sql/SelectExecutor.h"

#include <algorithm>
#include <optional>

#include "jet/Errors.h"
#include "jet/expression/ExpressionErrors.h"
#include "jet/index/IndexKey.h"
#include "jet/page/DataPage.h"
#include "jet/sql/Parser.h"
#include "jet/sql/RowOrder.h"
#include "jet/sql/SqlError.h"
#include "jet/table/Catalog.h"

namespace jet::sql {

namespace {

/// An index whose entries are in the order wanted and that has all rows of the table; null if there is none.
const IndexDefinition* indexOfOrder(const Table& table, const ResultSet& rows, const std::vector<OrderColumn>& order) {
    if (order.size() != 1) return nullptr;
    const Column& column = rows.column(order[0].column);
    const bool standsInOrder =
        column.type == ColumnType::Numeric ? !order[0].descending : column.type != ColumnType::Binary;
    if (!standsInOrder) return nullptr;
    for (const IndexDefinition& index : table.definition().indexes) {
        const bool fits = index.columns.size() == 1 && index.columns[0].columnNumber == column.number &&
                          index.columns[0].ascending != order[0].descending;
        if (fits && !index.ignoresNulls()) return &index;
    }
    return nullptr;
}

}  // namespace

std::size_t placeOf(const ColumnName& name, const Table& table, const std::vector<const Column*>& columns) {
    const auto column = findColumn(columns, name.name);
    const bool qualified = name.table.empty() || namesAreEqual(name.table, table.name());
    if (!column || !qualified) throw missingParameter(name.table, name.name, name.place);
    return *column;
}

void readRows(const Table& table, const RowSearch& search, const std::vector<OrderColumn>& order, ResultSet& rows) {
    PageSource& source = table.source();
    const IndexDefinition* orderedBy = nullptr;
    if (search.wantsAll()) {
        const std::size_t mostRows = std::size_t{source.pageCount()} * kMaxSlotsOfPage;
        rows.reserve(std::min<std::size_t>(table.definition().rowCount, mostRows));
        orderedBy = indexOfOrder(table, rows, order);
    }
    search.forEach([&](const Row& row) {
        rows.append(source, row);
        // If the key of one row is not certain, the place of this row in the index is not known.
        if (orderedBy != nullptr && !keyOfRowIsCertain(source, *orderedBy, row.view)) orderedBy = nullptr;
        return true;
    });
    if (order.empty()) return;
    rows.arrange(orderedBy != nullptr ? orderByIndex(source, rows, table.definition(), *orderedBy)
                                      : RowKeys(rows, order).sorted());
}

ResultSet executeSelect(PageSource& source, const Select& statement) {
    const auto table = openTable(source, statement.table);
    if (!table) throw tableNotFound(statement.table);
    const RowSearch search(*table, statement.where);
    const auto columns = table->definition().columnsForDisplay();
    std::vector<OrderColumn> order;
    for (const OrderItem& item : statement.order)
        order.push_back({placeOf(item.column, *table, columns), item.descending});
    ResultSet rows(table->definition());
    readRows(*table, search, order, rows);
    return rows;
}

ResultSet executeSelect(PageSource& source, base::TextView statement) {
    const Statement parsed = parse(statement);
    const auto* select = std::get_if<Select>(&parsed);
    if (select == nullptr) throw notUpdatable();
    return executeSelect(source, *select);
}

}  // namespace jet::sql
