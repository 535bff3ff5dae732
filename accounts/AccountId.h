#pragma once

#include <cstdint>
#include <variant>

#include "base/Value.h"
#include "platform/Platform.h"

namespace tolv {

/// The account ID in a field or in a list row's tag.
/// @throws base::RuntimeError 94 for null, 13 if it is not a number, 6 if it does not fit into 32 bits
inline std::int32_t accountId(const base::Value& value, const platform::Regional& regional) {
    const auto* id = std::get_if<std::int32_t>(&value);
    return id != nullptr ? *id : regional.toLong(regional.toText(value));
}

}  // namespace tolv
