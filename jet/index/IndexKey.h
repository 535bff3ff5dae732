#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/Value.h"
#include "jet/table/RowCodec.h"
#include "jet/table/TableDefinition.h"

/// Keys of index entries: for each column of the index a flag byte and the value, made so that comparing keys
/// byte by byte is the order of the values.
///
///     null                 00, descending FF; nothing follows
///     otherwise            7F and the value, descending 80 and the value inverted
///     Boolean              00 true, FF false; never null
///     Byte, Integer, Long, Currency   big-endian with the sign bit turned
///     Single, Double, DateTime        big-endian; positive ones with the sign bit turned, negative ones inverted
///     Numeric              FF and 16 bytes of magnitude, negative ones 00 and the magnitude inverted; descending
///                          the magnitude alone is inverted, not the sign
///     Binary, GUID         groups of 8 bytes and a count: 9 more follows, 1 to 8 bytes of the last group
///     Text, Memo           the sort key; descending all of it inverted, then 00
///
/// See docs/file-format.md, "Index keys".
namespace jet {

/// Appends the part of one column.
/// @param value  of the alternative that decodeValue gives for the column's type, or null
/// @throws RuntimeError if the column's type can be no part of an index
void appendKeyPart(base::Bytes& key, const Column& column, const base::Value& value, bool ascending);

/// The key of a row.
/// @return false if the index has no entry for the row: it ignores nulls and all its columns are null
/// @throws RuntimeError (damage)
bool keyOfRow(PageSource& source, const IndexDefinition& index, const RowView& row, base::Bytes& key);

/// Whether the row's key is known to be the one that is stored; see sortKeyIsCertain.
bool keyOfRowIsCertain(PageSource& source, const IndexDefinition& index, const RowView& row);

/// The part of a key that rows have whose column holds a value.
/// @param value  of the column's alternative; exact numbers of any kind for columns of whole numbers and of money
/// @return nothing if the column cannot hold it
std::optional<base::Bytes> keyPartFor(const Column& column, const base::Value& value, bool ascending);

/// The part of a key by which all rows are found whose column equals a value.
/// @return nothing if the index cannot answer: the column cannot hold the value, its text's key is not certain, or
///         equal values may have several keys
std::optional<base::Bytes> searchKeyPart(const Column& column, const base::Value& value, bool ascending);

}  // namespace jet
