#pragma once

#include "base/Text.h"
#include "base/Value.h"

namespace jet {

/// The value of a column's default: a constant, or the current time or day for Now() and Date(). An equals sign before
/// it is ignored.
/// @throws base::RuntimeError if the expression is not understood
base::Value defaultValue(base::TextView expression);

}  // namespace jet
