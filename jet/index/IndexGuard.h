#pragma once

#include "base/Value.h"
#include "jet/table/RowCodec.h"
#include "jet/table/Table.h"
#include "jet/table/TableDefinition.h"

/// Protects an index of texts from keys that the original engine would not find. Our order of text is known to be right
/// only for the usual sort orders and the usual texts. Code that changes an index must call these functions before it
/// changes anything.
namespace jet {

/// The entry of an index for a row.
struct IndexEntryKey {
    base::Bytes key;
    bool hasEntry = true;  ///< false: the index ignores nulls, and all its columns are null in the row
    bool hasNull = false;  ///< one of its columns is null in the row
};

/// Makes the key of a new or changed row before it is written.
/// @throws RuntimeError if the key of one of its texts is not certain (sortKeyIsCertain), if the key is too long, or if
/// it contains null although the index requires values
IndexEntryKey keyToWrite(PageSource& source, const IndexDefinition& index, const RowView& row);

/// Checks an index of texts once, before the first change of an open file: makes the keys of the rows in its first and
/// its last leaf again.
/// @throws RuntimeError if a key that is certain differs from the stored one; (damage)
void requireOwnKeys(const Table& table, const IndexDefinition& index);

}  // namespace jet
