#pragma once

#include "base/Text.h"
#include "base/Value.h"

namespace jet {

/// The value that a column's default stands for: a constant, or for Now() and Date() the present time or day. An
/// equals sign may stand before it.
/// @throws base::RuntimeError if the expression is not understood
base::Value defaultValue(base::TextView expression);

}  // namespace jet
