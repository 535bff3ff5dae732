#pragma once

#include "base/Value.h"
#include "jet/table/RowCodec.h"
#include "jet/table/Table.h"
#include "jet/table/TableDefinition.h"

/// What keeps an index of texts from being written by keys that the original engine would not find: the order of text
/// is known for the usual sort order and the usual texts only. Whoever changes an index asks here before the first
/// change of anything.
namespace jet {

/// The entry that an index has for a row.
struct IndexEntryKey {
    base::Bytes key;
    bool hasEntry = true;  ///< false: the index ignores nulls, and all its columns are null
    bool hasNull = false;  ///< a column is null
};

/// For a row that is to be written.
/// @throws RuntimeError if the key of one of its texts is not certain (sortKeyIsCertain), if the key is too long, if it
///         holds null and the index wants values
IndexEntryKey keyToWrite(PageSource& source, const IndexDefinition& index, const RowView& row);

/// For an index with texts, once before the first change of a file that is open: makes the keys of the rows in its
/// first and its last leaf again.
/// @throws RuntimeError if one is not what stands in the index, unless it is not certain anyway; damage
void requireOwnKeys(const Table& table, const IndexDefinition& index);

}  // namespace jet
