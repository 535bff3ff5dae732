#include "jet/expression/LikePattern.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <utility>

namespace jet {

namespace {

/// False for units that have no sort key of their own: the blank and control characters.
bool countsInKeys(char16_t unit) {
    return unit > u' ' && unit != 0x7F;
}

bool isAscii(char16_t unit) {
    return unit < 0x80;
}

bool sameUnit(char16_t a, char16_t b, TextOrder order) {
    if (a == b) return true;
    if (isAscii(a) && isAscii(b)) return base::asciiLower(a) == base::asciiLower(b);
    if (!countsInKeys(a) || !countsInKeys(b)) return false;
    const base::Bytes key = sortKey({&a, 1}, order);
    return key == sortKey({&b, 1}, order) && key != sortKey({}, order);
}

}  // namespace

LikePattern::LikePattern(base::TextView pattern, TextOrder order) : order_(order) {
    bool listsEnded = false;  // if one bracket is not closed, no later one is
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        Part part;
        const bool opens = pattern[i] == u'[' && !listsEnded;
        const std::size_t close = opens ? pattern.find(u']', i + 1) : base::TextView::npos;
        listsEnded = listsEnded || (opens && close == base::TextView::npos);
        if (pattern[i] == u'%') {
            part.kind = Part::Kind::AnyRun;
        } else if (pattern[i] == u'_') {
            part.kind = Part::Kind::AnyUnit;
        } else if (close != base::TextView::npos) {
            part = listOf(pattern.substr(i + 1, close - i - 1));
            i = close;
        } else {
            part.kind = Part::Kind::Unit;
            part.unit = pattern[i];
        }
        parts_.push_back(std::move(part));
    }
}

LikePattern::Part LikePattern::listOf(base::TextView inside) const {
    Part part;
    part.kind = Part::Kind::List;
    part.negated = inside.size() > 1 && inside[0] == u'!';
    if (part.negated) inside.remove_prefix(1);
    for (std::size_t i = 0; i < inside.size(); ++i) {
        Range range{inside[i], inside[i]};
        if (i + 2 < inside.size() && inside[i + 1] == u'-') {
            range.last = inside[i + 2];
            i += 2;
        }
        part.ranges.push_back(range);
    }
    return part;
}

/// On a mismatch, goes back to the last "%" and lets it match one unit more. At most length of text times length of
/// pattern steps, without recursion.
bool LikePattern::matches(base::TextView text) const {
    std::size_t part = 0;
    std::size_t unit = 0;
    std::size_t partAfterRun = 0;
    std::size_t unitAfterRun = 0;
    bool seenRun = false;
    while (unit < text.size()) {
        if (part < parts_.size() && parts_[part].kind == Part::Kind::AnyRun) {
            seenRun = true;
            partAfterRun = ++part;
            unitAfterRun = unit;
        } else if (part < parts_.size() && matchesUnit(parts_[part], text[unit])) {
            ++part;
            ++unit;
        } else if (seenRun) {
            part = partAfterRun;
            unit = ++unitAfterRun;
        } else {
            return false;
        }
    }
    while (part < parts_.size() && parts_[part].kind == Part::Kind::AnyRun)
        ++part;
    return part == parts_.size();
}

bool LikePattern::matchesUnit(const Part& part, char16_t unit) const {
    if (part.kind == Part::Kind::AnyUnit) return true;
    if (part.kind == Part::Kind::Unit) return sameUnit(part.unit, unit, order_);
    const bool found =
        std::any_of(part.ranges.begin(), part.ranges.end(), [&](const Range& range) { return isInRange(range, unit); });
    return found != part.negated;
}

bool LikePattern::isInRange(const Range& range, char16_t unit) const {
    if (range.first == range.last) return sameUnit(range.first, unit, order_);
    const base::TextView text(&unit, 1);
    return countsInKeys(unit) && std::is_lteq(compareTexts({&range.first, 1}, text, order_)) &&
           std::is_lteq(compareTexts(text, {&range.last, 1}, order_));
}

}  // namespace jet
