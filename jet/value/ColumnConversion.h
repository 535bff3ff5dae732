#pragma once

#include "base/Value.h"
#include "jet/Errors.h"
#include "jet/value/Column.h"

namespace jet {

/// Converts a value to what the column holds: the alternative that decodeValue returns for its type, within range and
/// length. Null stays null, except in a yes/no column, where it becomes false. In a yes/no column every number other
/// than 0 is true. Numbers are rounded half to even. A text that is a number as statements write it becomes a number,
/// and a text in the form of a GUID becomes a GUID.
/// @throws WriteRefused if a text or bytes are too long, a number is out of range, or the type does not fit
base::Value convertToColumn(const Column& column, const base::Value& value);

}  // namespace jet
