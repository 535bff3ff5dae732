#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/Value.h"
#include "jet/table/RowCodec.h"
#include "jet/table/TableDefinition.h"

/// Keys of index entries. Each column of the index adds a flag byte and the value. Comparing keys byte by byte gives
/// the order of the values.
///
///     null                 00, descending FF; nothing follows
///     otherwise            7F and the value, descending 80 and the value inverted
///     Boolean              00 true, FF false; never null
///     Byte, Integer, Long, Currency   big-endian with the sign bit inverted
///     Single, Double, DateTime        big-endian; positive ones with the sign bit inverted, negative ones all inverted
///     Numeric              FF and 16 bytes of magnitude, negative ones 00 and the magnitude inverted; descending
///                          only the magnitude is inverted, not the sign
///     Binary, GUID         groups of 8 bytes and a count: 9 more follows, 1 to 8 bytes of the last group
///     Text, Memo           the sort key; descending all of it inverted, then 00
///
/// See docs/file-format.md, "Index keys".
namespace jet {

/// Appends the part of one column to a key.
/// @param value  of the alternative that decodeValue returns for the column's type, or null
/// @throws RuntimeError if a column of this type cannot be part of an index
void appendKeyPart(base::Bytes& key, const Column& column, const base::Value& value, bool ascending);

/// Appends the key of a row.
/// @return false if the index has no entry for the row, because it ignores nulls and all its columns are null
/// @throws RuntimeError (damage)
bool keyOfRow(PageSource& source, const IndexDefinition& index, const RowView& row, base::Bytes& key);

/// Whether our key of the row is known to be the one that the original engine stores; see sortKeyIsCertain.
bool keyOfRowIsCertain(PageSource& source, const IndexDefinition& index, const RowView& row);

/// The key part that is stored for rows whose column holds this value.
/// @param value  of the column's alternative; for columns of whole numbers and of money also any exact number
/// @return nothing if the column cannot hold the value
std::optional<base::Bytes> keyPartFor(const Column& column, const base::Value& value, bool ascending);

/// The key part that finds all rows whose column equals the value.
/// @return nothing if the index cannot answer: the column cannot hold the value, the key of its text is not certain, or
/// equal values may have different keys
std::optional<base::Bytes> searchKeyPart(const Column& column, const base::Value& value, bool ascending);

}  // namespace jet
