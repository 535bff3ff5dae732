#include "jet/sql/QueryExecutor.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include "jet/Errors.h"
#include "jet/sql/Parser.h"
#include "jet/sql/SelectExecutor.h"
#include "jet/sql/SelectList.h"
#include "jet/sql/SqlError.h"
#include "jet/table/Catalog.h"
#include "jet/value/ValueCodec.h"

namespace jet::sql {

namespace {

/// The result looks like one row of a table that does not exist in the file.
ResultSet countRows(const Table& table, const RowSearch& search) {
    std::int32_t count = 0;
    search.forEach([&](const Row&) {
        ++count;
        return true;
    });
    TableDefinition definition;
    definition.columnsEver = 1;
    Column& column = definition.columns.emplace_back();
    column.name = u"Anzahl";
    column.lengthBytes = static_cast<std::uint16_t>(storedBytes(column.type));
    const base::Bytes row = encodeRow(definition, std::vector<Cell>{encodeValue(column, count)});
    ResultSet result(definition);
    result.append(table.source(), {{}, RowView(row, definition, {}), {}});
    return result;
}

/// The columns of a result: first those of the list, then those that only ORDER BY needs.
class Columns {
public:
    Columns(const Table& table, const Select& select) {
        const auto all = table.definition().columnsForDisplay();
        if (select.columns.empty()) {
            places_.resize(all.size());
            std::iota(places_.begin(), places_.end(), std::size_t{0});
        }
        for (const ColumnName& name : select.columns)
            places_.push_back(placeOf(name, table, all));
        shown_ = places_.size();
        for (const OrderItem& item : select.order)
            order_.push_back({placeInResult(placeOf(item.column, table, all)), item.descending});
    }

    /// The columns of ORDER BY, as positions in the result.
    const std::vector<OrderColumn>& order() const { return order_; }

    /// The caller calls this before it reads the first row,
    void prepare(ResultSet& rows) const { rows.keepColumns(places_); }

    /// and this when the rows are in order.
    void dropHidden(ResultSet& rows) const {
        std::vector<std::size_t> shown(shown_);
        std::iota(shown.begin(), shown.end(), std::size_t{0});
        rows.keepColumns(shown);
    }

private:
    std::size_t placeInResult(std::size_t column) {
        const auto found = std::ranges::find(places_, column);
        const auto place = static_cast<std::size_t>(found - places_.begin());
        if (found == places_.end()) places_.push_back(column);
        return place;
    }

    std::vector<std::size_t> places_;  ///< positions in the order of SELECT *
    std::size_t shown_ = 0;
    std::vector<OrderColumn> order_;
};

void readTop(const Table& table, const RowSearch& search, std::uint32_t top, const std::vector<OrderColumn>& order,
             ResultSet& rows) {
    if (top == 0) return;
    search.forEach([&](const Row& row) {
        rows.append(table.source(), row);
        return !order.empty() || rows.rowCount() < top;
    });
    if (order.empty()) return;
    RowKeys keys(rows, order);
    keys.keepTop(top);
    rows.arrange(keys.sorted());
}

}  // namespace

ResultSet executeQuery(PageSource& source, const Select& select) {
    const auto table = openTable(source, select.table);
    if (!table) throw tableNotFound(select.table);
    const RowSearch search(*table, select.where);
    if (select.countsRows) return countRows(*table, search);
    const Columns columns(*table, select);
    ResultSet rows(table->definition());
    columns.prepare(rows);
    if (select.top)
        readTop(*table, search, *select.top, columns.order(), rows);
    else
        readRows(*table, search, columns.order(), rows);
    columns.dropHidden(rows);
    return rows;
}

ResultSet executeQuery(PageSource& source, base::TextView statement) {
    const Statement parsed = parse(statement, parseSelectList);
    const auto* select = std::get_if<Select>(&parsed);
    if (select == nullptr) throw notUpdatable();
    return executeQuery(source, *select);
}

}  // namespace jet::sql
