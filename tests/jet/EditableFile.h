#pragma once

#include <utility>

#include "jet/Errors.h"
#include "jet/page/PageSource.h"

namespace jet {

/// A file in memory. The engine reads it, and the test changes it byte by byte.
class EditableFile : public PageSource {
public:
    explicit EditableFile(base::Bytes file) : bytes(std::move(file)) {}

    PageNumber pageCount() const override { return static_cast<PageNumber>(bytes.size() / kPageSize); }
    PageView page(PageNumber number) override {
        if (number >= pageCount()) throw damaged(number, u"Die Datei endet vorher");
        return {number, base::ByteView(at(number)), nullptr};
    }
    std::span<std::uint8_t> at(PageNumber number) { return std::span(bytes).subspan(number * kPageSize, kPageSize); }

    std::uint32_t u32(PageNumber number, std::size_t offset) { return page(number).bytes.u32(offset); }
    std::uint16_t u16(PageNumber number, std::size_t offset) { return page(number).bytes.u16(offset); }

    base::Bytes bytes;
};

}  // namespace jet
