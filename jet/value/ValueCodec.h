#pragma once

#include <span>

#include "base/Value.h"
#include "jet/RowPointer.h"
#include "jet/value/Column.h"

/// Column values as stored in a row. Numbers are little-endian, text has the form of TextCodec, money is times 10,000,
/// dates are days since 1899-12-30, decimals are a sign byte and four words, the highest first.
namespace jet {

/// @param stored  bytes of a column that is neither null nor Boolean nor a long value
/// @param place   the row, for error messages
/// @throws RuntimeError (damage) if the length does not fit the type
base::Value decodeValue(const Column& column, std::span<const std::uint8_t> stored, RowPointer place);

/// The stored bytes of a value. For a long value: the bytes of the value itself, which LongValue then places. Shorter
/// text of a fixed length is filled with blanks, and shorter bytes with zeros.
/// @param value  not null; of the alternative that decodeValue returns for this type, and within the column's length
/// @throws RuntimeError if the format has no form for the text, see encodeText and encodePlainText
base::Bytes encodeValue(const Column& column, const base::Value& value);

}  // namespace jet
