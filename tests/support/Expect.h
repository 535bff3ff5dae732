#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <ostream>

#include "base/RuntimeError.h"
#include "base/Text.h"

namespace test {

/// Number of the run-time error that the action raises, 0 if it raises no error. Every error must have a description.
inline std::int32_t errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const base::RuntimeError& error) {
        EXPECT_FALSE(error.description().empty());
        return error.number();
    }
    return 0;
}

/// Makes texts in failure messages readable.
inline std::string shown(base::TextView text) {
    return base::toUtf8(text);
}

}  // namespace test
