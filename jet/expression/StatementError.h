#pragma once

#include <cstddef>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"

namespace jet {

/// An error in a statement, with its place. Number and description are those of the original engine; the rest is for
/// callers that can show the statement.
class StatementError : public base::RuntimeError {
public:
    /// @param place   offset of the fault in the statement, in units; at most its length
    /// @param column  if the table lacks a column, its name as it was typed
    StatementError(const base::RuntimeError& error, std::size_t place, base::Text column = {})
        : RuntimeError(error), place_(place), unknownColumn_(std::move(column)) {}

    std::size_t place() const { return place_; }

    /// Empty for all other errors.
    const base::Text& unknownColumn() const { return unknownColumn_; }

private:
    std::size_t place_;
    base::Text unknownColumn_;
};

}  // namespace jet
