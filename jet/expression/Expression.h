#pragma once

#include <cstddef>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"

namespace jet {

enum class Comparison { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

/// One node of an expression as it was written. No name has been looked up in a table yet. Which members are used
/// depends on the kind, see below; operands are in the order of writing.
struct Expression {
    enum class Kind {
        Literal,  ///< value
        Name,     ///< table (may be empty), name
        And,      ///< two or more operands
        Or,       ///< two or more operands
        Not,      ///< one operand
        Compare,  ///< comparison, two operands
        IsNull,   ///< negated, one operand
        Between,  ///< negated; the value, the lower and the upper bound
        In,       ///< negated; the value, then the list
        Like,     ///< negated; the value, the pattern
    };

    Kind kind = Kind::Literal;
    Comparison comparison = Comparison::Equal;
    bool negated = false;
    std::size_t place = 0;  ///< offset of the literal, name or operator in the text, in units
    base::Value value;
    base::Text table;
    base::Text name;
    std::vector<Expression> operands;
};

}  // namespace jet
