#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/Value.h"
#include "jet/RowCodec.h"
#include "jet/TableDefinition.h"

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

/// The part of a key by which rows are searched whose column equals a value.
/// @param value  whole numbers of any width are taken for columns of whole numbers
/// @return nothing if the index cannot answer: the value is of another kind or out of the column's range, or its
///         text's key is not certain
std::optional<base::Bytes> searchKeyPart(const Column& column, const base::Value& value, bool ascending);

}  // namespace jet
