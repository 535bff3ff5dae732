#pragma once

#include <vector>

#include "base/Text.h"
#include "jet/value/SortKey.h"

namespace jet {

/// The pattern of LIKE: "%" matches any number of units, "_" one unit, "[a-cx]" one unit of a list, "[!a-cx]" one unit
/// that is not in the list. Inside a list, "%" and "_" are ordinary characters. So is a bracket that is not closed.
///
/// Units are compared one by one, by their sort keys: case is ignored, accents are not, and "ß" does not match "ss". In
/// contrast to "=", blanks at the end matter.
class LikePattern {
public:
    LikePattern(base::TextView pattern, TextOrder order);

    bool matches(base::TextView text) const;

private:
    struct Range {
        char16_t first;
        char16_t last;
    };
    struct Part {
        enum class Kind { AnyRun, AnyUnit, Unit, List } kind = Kind::AnyUnit;
        bool negated = false;
        char16_t unit = 0;
        std::vector<Range> ranges;
    };

    Part listOf(base::TextView inside) const;
    bool matchesUnit(const Part& part, char16_t unit) const;
    bool isInRange(const Range& range, char16_t unit) const;

    std::vector<Part> parts_;
    TextOrder order_;
};

}  // namespace jet
