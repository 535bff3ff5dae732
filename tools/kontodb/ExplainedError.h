#pragma once

#include <string>
#include <utility>

#include "base/RuntimeError.h"

namespace kontodb {

/// An error of the engine, and what helps a person to find its cause.
class ExplainedError : public base::RuntimeError {
public:
    /// @param explanation  whole lines, in UTF-8
    ExplainedError(const base::RuntimeError& error, std::string explanation)
        : RuntimeError(error), explanation_(std::move(explanation)) {}

    const std::string& explanation() const { return explanation_; }

private:
    std::string explanation_;
};

}  // namespace kontodb
