#pragma once

#include <vector>

#include "base/Text.h"
#include "jet/value/SortKey.h"

namespace jet {

/// The pattern of LIKE: "%" stands for any run of units, "_" for one unit, "[a-cx]" for one out of a list,
/// "[!a-cx]" for one that is not in it; within a list the wildcards stand for themselves. A bracket that is
/// not closed stands for itself.
///
/// Units are compared one by one by their sort keys: case does not count, accents do, and "ß" is not "ss"
/// here. Unlike in "=", blanks at the end count.
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
