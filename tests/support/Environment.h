#pragma once

#include <cstdint>
#include <cstdlib>

namespace test {

/// A number that may be set in the environment when the tests are started.
inline std::uint32_t environmentNumber(const char* name, std::uint32_t defaultValue) {
    const char* text = std::getenv(name);
    return text != nullptr ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : defaultValue;
}

}  // namespace test
