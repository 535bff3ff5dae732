#include "jet/index/IndexGuard.h"

#include <algorithm>

#include "jet/WriteErrors.h"
#include "jet/index/IndexKey.h"
#include "jet/tree/IndexCursor.h"
#include "jet/tree/IndexNode.h"

namespace jet {
namespace {

void compare(const Table& table, const IndexDefinition& index, const IndexCursor& cursor) {
    const Row row = table.rowAt(cursor.row());
    base::Bytes key;
    const bool hasEntry = keyOfRow(table.source(), index, row.view, key);
    if (hasEntry && std::ranges::equal(key, cursor.key())) return;
    if (!hasEntry || keyOfRowIsCertain(table.source(), index, row.view)) throw foreignKeys(index.name);
}

}  // namespace

IndexEntryKey keyToWrite(PageSource& source, const IndexDefinition& index, const RowView& row) {
    IndexEntryKey entry;
    entry.hasEntry = keyOfRow(source, index, row, entry.key);
    if (entry.hasEntry && !keyOfRowIsCertain(source, index, row)) throw uncertainKey(index.name);
    entry.hasNull = std::ranges::any_of(
        index.columns, [&](const IndexColumn& part) { return row.isNull(row.definition().columnOf(part)); });
    if (entry.hasNull && (index.isRequired() || index.isPrimary)) throw nullInIndex();
    if (entry.key.size() + kIndexRowBytes > kLongestIndexEntry) throw keyTooLong(index.name);
    return entry;
}

void requireOwnKeys(const Table& table, const IndexDefinition& index) {
    const bool hasText = std::ranges::any_of(
        index.columns, [&](const IndexColumn& part) { return table.definition().columnOf(part).isText(); });
    if (!hasText) return;
    IndexCursor cursor(table.source(), table.definition().page, index.rootPage);
    if (!cursor.first()) return;
    const PageNumber first = cursor.leafPage();
    for (bool there = true; there && cursor.leafPage() == first; there = cursor.next())
        compare(table, index, cursor);
    if (!cursor.last() || cursor.leafPage() == first) return;
    const PageNumber last = cursor.leafPage();
    for (bool there = true; there && cursor.leafPage() == last; there = cursor.previous())
        compare(table, index, cursor);
}

}  // namespace jet
