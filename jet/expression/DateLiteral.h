#pragma once

#include <optional>

#include "base/Text.h"
#include "base/Value.h"

namespace jet {

/// The point in time between the number signs of a date literal: "month/day/year" or "year-month-day", a
/// time "hour:minute[:second] [AM|PM]", or both. The parts of a date may be joined by "/" or "-".
///
/// The user's regional settings do not matter: the month comes first, unless the first number cannot be a month. Years
/// of two digits mean 1930 to 2029.
/// @return nothing if the text has another form, or the year is not in 100 to 9999
std::optional<base::Date> dateFromLiteral(base::TextView text);

}  // namespace jet
