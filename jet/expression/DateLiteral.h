#pragma once

#include <optional>

#include "base/Text.h"
#include "base/Value.h"

namespace jet {

/// The point in time between the number signs of a date literal: "month/day/year" or "year-month-day", a
/// time "hour:minute[:second] [AM|PM]", or both. The parts of a date may be joined by "/" or "-".
///
/// The order of month and day never follows the user's regional settings; they change places only where
/// the first cannot be a month. Years of two digits lie in 1930 to 2029.
/// @return nothing if the text is no such point in time between the years 100 and 9999
std::optional<base::Date> dateFromLiteral(base::TextView text);

}  // namespace jet
