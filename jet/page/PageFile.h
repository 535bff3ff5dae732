#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "jet/page/PageSource.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// Reads the file page by page, decodes encoded pages, and keeps them in a cache of limited size. Single pages are read
/// alone. The more neighbouring pages are read, the more are read ahead, up to 64 KiB at once.
///
/// Each operation makes a new one, because other programs do not announce their changes.
class PageFile : public PageSource {
public:
    /// @param io           must outlive the page file
    /// @param databaseKey  from the header; 0 = pages are not encoded
    PageFile(PageIo& io, std::uint32_t databaseKey);

    PageNumber pageCount() const override { return pageCount_; }
    PageView page(PageNumber number) override;

private:
    struct Extent;
    const std::shared_ptr<Extent>& extent(PageNumber index);
    PageNumber pagesToRead(const Extent& extent, PageNumber number) const;
    void read(Extent& extent, PageNumber number);

    PageIo& io_;
    std::uint32_t databaseKey_;
    PageNumber pageCount_;
    std::vector<std::shared_ptr<Extent>> cache_;
};

/// Encodes or decodes one page in place (both are the same step). Page 0 is never encoded.
void encodePage(std::span<std::uint8_t> page, PageNumber number, std::uint32_t databaseKey);

}  // namespace jet
