#pragma once

#include <cstdint>
#include <cstdlib>

namespace test {

/// A number that whoever starts the tests may set in the environment.
inline std::uint32_t environmentNumber(const char* name, std::uint32_t otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

}  // namespace test
