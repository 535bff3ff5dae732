#pragma once

#include "platform/Platform.h"

namespace win32 {

/// Conversions by the system's automation library, in the user's regional format, and comparison in the order of the
/// user's language.
class SystemRegional final : public platform::Regional {
public:
    base::Text toText(const base::Value& value) const override;
    std::int32_t toLong(base::TextView text) const override;
    std::optional<base::Text> toSortableDate(base::TextView text) const override;
    int compare(base::TextView a, base::TextView b) const override;
    base::Bytes sortKey(base::TextView text) const override;
};

}  // namespace win32
