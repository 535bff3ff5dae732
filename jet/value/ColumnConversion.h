#pragma once

#include "base/Value.h"
#include "jet/Errors.h"
#include "jet/value/Column.h"

namespace jet {

/// The value as the column holds it: of the alternative that decodeValue gives for its type, within its range and
/// length. Null stays null, but a yes/no column takes it for false; every number other than 0 is true there. Numbers
/// round half to even; texts that are numbers in the notation of statements become numbers, and those in the
/// form of a GUID become one.
/// @param kind  says which of its numbers an error has: of the assignment to a record set's field, or of a statement
/// @throws RuntimeError: text or bytes too long, number out of range, another type
base::Value convertToColumn(const Column& column, const base::Value& value, WriteKind kind);

}  // namespace jet
