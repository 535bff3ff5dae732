#include "jet/index/IndexedRow.h"

#include <algorithm>

#include "jet/Errors.h"
#include "jet/index/IndexKey.h"

namespace jet {

Row rowAtEntry(const Table& table, const IndexDefinition& index, const IndexCursor& cursor) {
    Row row = table.rowAt(cursor.row());
    base::Bytes key;
    const bool hasEntry = keyOfRow(table.source(), index, row.view, key);
    if (!hasEntry || (!std::ranges::equal(key, cursor.key()) && keyOfRowIsCertain(table.source(), index, row.view))) {
        throw damaged(cursor.leafPage(),
                      u"Ein Eintrag des Indexes '" + index.name + u"' passt nicht zu seinem Datensatz");
    }
    return row;
}

}  // namespace jet
