#pragma once

#include <cstdint>
#include <variant>

#include "base/Value.h"
#include "platform/Platform.h"

namespace tolv {

/// The account ID that a field or a list row's tag holds.
/// @throws base::RuntimeError 94 for null, 13 for what is no number, 6 outside 32 bits
inline std::int32_t accountId(const base::Value& value, const platform::Regional& regional) {
    const auto* id = std::get_if<std::int32_t>(&value);
    return id != nullptr ? *id : regional.toLong(regional.toText(value));
}

}  // namespace tolv
