#pragma once

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

#include "base/Value.h"

namespace jet {

/// "4D 57 00"
inline std::string toHex(std::span<const std::uint8_t> bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string hex;
    for (const std::uint8_t byte : bytes) {
        if (!hex.empty()) hex += ' ';
        hex += kDigits[byte >> 4U];
        hex += kDigits[byte & 15U];
    }
    return hex;
}

/// The bytes of "4D 57 00".
inline base::Bytes fromHex(std::string_view hex) {
    base::Bytes bytes;
    for (std::size_t at = 0; at + 1 < hex.size(); at += 2) {
        while (at < hex.size() && hex[at] == ' ')
            ++at;
        bytes.push_back(static_cast<std::uint8_t>(std::strtol(std::string(hex.substr(at, 2)).c_str(), nullptr, 16)));
    }
    return bytes;
}

}  // namespace jet
