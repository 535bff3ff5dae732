#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "base/Text.h"

namespace base {

/// A failure of the file, the disk, the user's input, another program or the platform, with the number
/// and the German description that the run-time error box shows.
///
/// Thrown where the cause is known best and caught only where native events are dispatched. A bug of the program is an
/// assertion, never a RuntimeError; a damaged file is always a RuntimeError.
class RuntimeError : public std::exception {
public:
    RuntimeError(std::int32_t number, Text description);

    /// Small positive numbers are those of the classic run time (6 overflow, 9 subscript, 13 type mismatch, ...) and of
    /// ADO (3021, 3265, ...); large negative ones are a provider's result codes.
    std::int32_t number() const noexcept { return number_; }

    const Text& description() const noexcept { return description_; }

    /// "NUMBER: description" in UTF-8.
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::int32_t number_;
    Text description_;
    std::string what_;
};

/// Run-time errors that conversions, collections and controls raise.
enum class RuntimeErrorNumber : std::int32_t {
    InvalidProcedureCall = 5,
    Overflow = 6,
    SubscriptOutOfRange = 9,
    TypeMismatch = 13,
    ObjectVariableNotSet = 91,
    InvalidUseOfNull = 94,
    IndexOutOfBounds = 35600,
    ElementNotFound = 35601,
    KeyNotUnique = 35602,
    InvalidKey = 35603,
};

/// The error with this number and its German description.
RuntimeError runtimeError(RuntimeErrorNumber number);

}  // namespace base
