#include "jet/sql/SelectExecutor.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
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
#include "jet/value/ValueCodec.h"

namespace jet::sql {

namespace {

class SelectExecutor {
public:
    SelectExecutor(PageSource& source, const Table& table, const Select& statement);

    ResultSet run();

private:
    std::size_t placeOf(const ColumnName& name) const;
    void bindColumns();
    void bindOrder();
    std::size_t placeInResult(std::size_t column);
    const IndexDefinition* indexOfOrder() const;
    ResultSet emptyResult() const;
    ResultSet count() const;
    bool takeRow(ResultSet& rows, const Row& row);
    void arrange(ResultSet& rows) const;

    PageSource& source_;
    const Table& table_;
    const Select& statement_;
    std::vector<const Column*> columns_;
    RowSearch search_;
    std::vector<std::size_t> selected_;  ///< places in columns_, the ones that only the order needs at the end
    std::size_t shownColumns_ = 0;       ///< of selected_
    std::vector<OrderColumn> order_;
    const IndexDefinition* orderedBy_ = nullptr;  ///< stands as the order wants it; null if none does
};

SelectExecutor::SelectExecutor(PageSource& source, const Table& table, const Select& statement)
    : source_(source),
      table_(table),
      statement_(statement),
      columns_(table.definition().columnsForDisplay()),
      search_(table_, statement.where) {
    bindColumns();
    bindOrder();
    orderedBy_ = indexOfOrder();
}

std::size_t SelectExecutor::placeOf(const ColumnName& name) const {
    const auto column = findColumn(columns_, name.name);
    const bool qualified = name.table.empty() || namesAreEqual(name.table, table_.name());
    if (!column || !qualified) throw missingParameter(name.table, name.name, name.place);
    return *column;
}

void SelectExecutor::bindColumns() {
    for (const ColumnName& name : statement_.columns)
        selected_.push_back(placeOf(name));
    if (statement_.columns.empty()) {
        selected_.resize(columns_.size());
        std::iota(selected_.begin(), selected_.end(), std::size_t{0});
    }
    shownColumns_ = selected_.size();
}

void SelectExecutor::bindOrder() {
    for (const OrderItem& item : statement_.order)
        order_.push_back({placeInResult(placeOf(item.column)), item.descending});
}

std::size_t SelectExecutor::placeInResult(std::size_t column) {
    const auto found = std::find(selected_.begin(), selected_.end(), column);
    const auto place = static_cast<std::size_t>(found - selected_.begin());
    if (found == selected_.end()) selected_.push_back(column);
    return place;
}

ResultSet SelectExecutor::run() {
    if (statement_.countsRows) return count();
    ResultSet rows = emptyResult();
    const std::size_t mostRows = std::size_t{source_.pageCount()} * kMaxSlotsOfPage;
    if (search_.wantsAll() && !statement_.top)
        rows.reserve(std::min<std::size_t>(table_.definition().rowCount, mostRows));
    if (statement_.top != 0U) search_.forEach([&](const Row& row) { return takeRow(rows, row); });
    if (!order_.empty()) arrange(rows);
    while (rows.columnCount() > shownColumns_)
        rows.dropColumn(shownColumns_);
    return rows;
}

ResultSet SelectExecutor::emptyResult() const {
    return statement_.columns.empty() ? ResultSet(table_.definition()) : ResultSet(table_.definition(), selected_);
}

/// A row of a table that is in no file.
ResultSet SelectExecutor::count() const {
    std::int32_t count = 0;
    search_.forEach([&](const Row&) {
        ++count;
        return true;
    });
    TableDefinition definition;
    definition.columnsEver = 1;
    Column& column = definition.columns.emplace_back();
    column.name = u"Anzahl";
    column.lengthBytes = static_cast<std::uint16_t>(storedBytes(column.type));
    const base::Bytes row = encodeRow(definition, std::vector<Cell>{encodeValue(column, count)});
    ResultSet result(definition, {0});
    result.append(source_, {{}, RowView(row, definition, {}), {}});
    return result;
}

/// An index is no help with the order once the key of one row is not certain.
bool SelectExecutor::takeRow(ResultSet& rows, const Row& row) {
    rows.append(source_, row);
    if (orderedBy_ != nullptr && !keyOfRowIsCertain(source_, *orderedBy_, row.view)) orderedBy_ = nullptr;
    return !order_.empty() || !statement_.top || rows.rowCount() < *statement_.top;
}

void SelectExecutor::arrange(ResultSet& rows) const {
    rows.arrange(orderedBy_ != nullptr ? orderByIndex(source_, rows, table_.definition(), *orderedBy_)
                                       : orderByKeys(rows, order_, statement_.top));
}

/// The index that stands as the order wants it, for all rows of the table.
const IndexDefinition* SelectExecutor::indexOfOrder() const {
    if (!search_.wantsAll() || statement_.top || order_.size() != 1) return nullptr;
    const Column& column = *columns_[selected_[order_[0].column]];
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
