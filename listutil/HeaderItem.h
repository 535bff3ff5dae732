#pragma once

#include <cstdint>

namespace tolv {

/// What a message tells the header control about one header: HDITEM in its ANSI form, laid out as Windows documents it.
/// In 32 bits these are only the record's first 36 bytes, but the mask lets the control read no more; in 64 bits it is
/// the whole record.
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
