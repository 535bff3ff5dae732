#pragma once

#include <span>

#include "base/Value.h"
#include "jet/RowPointer.h"
#include "jet/value/Column.h"

/// Values of columns as stored in a row: numbers little-endian, text as TextCodec has it, money times 10,000,
/// dates as days since 1899-12-30, decimals as sign byte and four words, the highest first.
namespace jet {

/// @param stored  of a column that is neither null nor Boolean nor a long value
/// @param place   for error messages
/// @throws RuntimeError (damage) if the length does not fit the type
base::Value decodeValue(const Column& column, std::span<const std::uint8_t> stored, RowPointer place);

/// The stored bytes of a value. Long values: the bytes of the value itself, for LongValue to place.
/// Shorter text and bytes of a fixed length are filled up with blanks and zeros.
/// @param value  not null; of the alternative that decodeValue gives for this type, and within the column's length
/// @throws RuntimeError for texts that the format has no form for, see encodeText and encodePlainText
base::Bytes encodeValue(const Column& column, const base::Value& value);

}  // namespace jet
