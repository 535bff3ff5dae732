#pragma once

#include <cstdint>

namespace tolv {

/// The record that describes a header's item to the header control: HDITEM in its ANSI form, field by field
/// as the platform lays it out. In 32 bits it is the record's first 36 bytes, which is all that the mask
/// lets the control read; in 64 bits it is the whole record.
struct HeaderItem {
    std::uint32_t mask = 0;
    std::int32_t width = 0;
    char* text = nullptr;
    void* bitmap = nullptr;
    std::int32_t textLength = 0;
    std::int32_t format = 0;
    std::intptr_t applicationValue = 0;
    std::int32_t imageIndex = 0;
    std::int32_t order = 0;
#if UINTPTR_MAX > 0xFFFFFFFFU
    std::uint32_t filterType = 0;
    void* filter = nullptr;
    std::uint32_t state = 0;
#endif
};

static_assert(sizeof(HeaderItem) == (sizeof(void*) == 4 ? 36 : 72));

}  // namespace tolv
