#include "jet/change/TableWriter.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

#include "jet/WriteErrors.h"
#include "jet/change/ColumnRules.h"
#include "jet/change/Relationships.h"
#include "jet/change/RowDraft.h"
#include "jet/change/TableSet.h"
#include "jet/table/Catalog.h"
#include "jet/value/ColumnConversion.h"

namespace jet {

class TableWriter::Impl {
public:
    Impl(PageStore& store, base::TextView tableName)
        : tables_(store), table_(tables_.named(tableName)), rules_(table_.table()), relationships_(tables_) {
        const auto& entries = tables_.catalog().entries();
        if (std::ranges::any_of(entries,
                                [](const CatalogEntry& entry) { return entry.type == CatalogEntry::kCheckConstraint; }))
            throw tableNotWritable(table_.table().name(), u"CHECK-Einschränkungen kennt das Modul nicht");
    }

    TableStore& store() { return table_; }
    const TableStore& store() const { return table_; }

    RowOfValues defaults(std::span<const Assignment> assignments) const;
    RowOfValues startRow();
    RowPointer insert(const RowOfValues& started, std::span<const Assignment> assignments);
    void update(RowPointer row, std::span<const Assignment> assignments);
    void remove(RowPointer row);

private:
    using Columns = std::vector<const Column*>;

    const Column* autoNumberColumn() const;
    std::int32_t nextAutoNumber(const Column& column);
    Columns put(RowDraft& draft, std::span<const Assignment> assignments) const;
    void keepAutoNumber(const Column& column, const RowDraft& draft);

    TableSet tables_;
    TableStore& table_;
    ColumnRules rules_;
    Relationships relationships_;
};

const Column* TableWriter::Impl::autoNumberColumn() const {
    const auto& columns = table_.definition().columns;
    const auto found = std::ranges::find_if(
        columns, [](const Column& column) { return column.isAutoNumber() && column.type == ColumnType::Long; });
    return found == columns.end() ? nullptr : &*found;
}

std::int32_t TableWriter::Impl::nextAutoNumber(const Column& column) {
    const std::int32_t last = table_.lastAutoNumber(column);
    if (last == std::numeric_limits<std::int32_t>::max()) throw autoNumbersUsedUp();
    return last + 1;
}

/// Only for columns without an assignment.
RowOfValues TableWriter::Impl::defaults(std::span<const Assignment> assignments) const {
    RowOfValues values(table_.definition().columnsEver);
    for (const Column& column : table_.definition().columns) {
        const bool isAssigned = std::ranges::any_of(
            assignments, [&](const Assignment& assignment) { return assignment.column == column.number; });
        if (!isAssigned) values[column.number] = rules_.defaultOf(column);
    }
    return values;
}

RowOfValues TableWriter::Impl::startRow() {
    RowOfValues values = defaults({});
    rules_.requireUnderstood();
    table_.requireWritableIndexes();
    relationships_.requireUsable(table_);
    if (const Column* column = autoNumberColumn(); column != nullptr) {
        const std::int32_t number = nextAutoNumber(*column);
        table_.counters().setLastAutoNumber(static_cast<std::uint32_t>(number));
        values[column->number] = number;
    }
    return values;
}

/// @return the columns with an assignment, each once
TableWriter::Impl::Columns TableWriter::Impl::put(RowDraft& draft, std::span<const Assignment> assignments) const {
    Columns columns;
    for (const Assignment& assignment : assignments) {
        const Column* column = table_.definition().columnNumbered(assignment.column);
        assert(column != nullptr);
        draft.put(*column, convertToColumn(*column, assignment.value));
        if (std::ranges::find(columns, column) == columns.end()) columns.push_back(column);
    }
    return columns;
}

RowPointer TableWriter::Impl::insert(const RowOfValues& started, std::span<const Assignment> assignments) {
    assert(started.size() == table_.definition().columnsEver);
    RowDraft draft = table_.makeRow();
    Columns given;
    for (const Column& column : table_.definition().columns) {
        const base::Value& value = started[column.number];
        draft.put(column, convertToColumn(column, value));
        if (!base::isNull(value)) given.push_back(&column);
    }
    for (const Column* column : put(draft, assignments))
        if (std::ranges::find(given, column) == given.end()) given.push_back(column);
    const Column* numbered = autoNumberColumn();
    if (numbered != nullptr && base::isNull(draft.valueOf(*numbered))) draft.put(*numbered, nextAutoNumber(*numbered));
    rules_.check(draft, given, true);
    draft.checkLength();
    const TableStore::EntryChanges entries = table_.makeEntries(draft);
    relationships_.check(table_, draft);
    if (numbered != nullptr) keepAutoNumber(*numbered, draft);
    return table_.add(draft, entries);
}

/// If the number is greater than the counter, raises the counter, so that no other row gets the number.
void TableWriter::Impl::keepAutoNumber(const Column& column, const RowDraft& draft) {
    const base::Value value = draft.valueOf(column);
    const auto number = std::get<std::int32_t>(value);
    if (number > static_cast<std::int32_t>(table_.counters().lastAutoNumber()))
        table_.counters().setLastAutoNumber(static_cast<std::uint32_t>(number));
}

void TableWriter::Impl::update(RowPointer row, std::span<const Assignment> assignments) {
    RowDraft draft = table_.draftOf(row);
    const Columns given = put(draft, assignments);
    for (const Column* column : given) {
        if (column->isAutoNumber()) throw columnNotUpdatable(table_.table().name() + u"." + column->name);
    }
    if (!draft.isChanged()) return;
    rules_.check(draft, given, false);
    draft.checkLength();
    const TableStore::EntryChanges entries = table_.makeEntries(draft);
    relationships_.check(table_, draft);
    table_.replace(row, draft, entries);
}

void TableWriter::Impl::remove(RowPointer row) {
    for (const Relationships::TableRemoval& each : relationships_.removalsOf(table_, row))
        each.table->remove(each.removal);
}

TableWriter::TableWriter(PageStore& store, base::TextView tableName)
    : impl_(std::make_unique<Impl>(store, tableName)) {}

TableWriter::~TableWriter() = default;

const Table& TableWriter::table() const {
    return impl_->store().table();
}

std::optional<Row> TableWriter::find(RowPointer row) const {
    if (!impl_->store().contains(row)) return std::nullopt;
    return table().rowAt(row);
}

RowOfValues TableWriter::startRow() {
    return impl_->startRow();
}

RowPointer TableWriter::insert(const RowOfValues& started, std::span<const Assignment> assignments) {
    return impl_->insert(started, assignments);
}

RowPointer TableWriter::insert(std::span<const Assignment> assignments) {
    return impl_->insert(impl_->defaults(assignments), assignments);
}

void TableWriter::update(RowPointer row, std::span<const Assignment> assignments) {
    impl_->update(row, assignments);
}

void TableWriter::remove(RowPointer row) {
    impl_->remove(row);
}

}  // namespace jet
