#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "jet/page/PageSource.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// The file as pages: decoded where the file is encoded, kept in a bounded cache. A page here and there is read alone;
/// the more pages of a neighbourhood are asked for, the more are read ahead, up to 64 KiB at once.
///
/// Made afresh for each operation, since other programs announce no change.
class PageFile : public PageSource {
public:
    /// @param io           must outlive the page file
    /// @param databaseKey  of the header; 0 = pages are not encoded
    PageFile(PageIo& io, std::uint32_t databaseKey);

    PageNumber pageCount() const override { return pageCount_; }
    PageView page(PageNumber number) override;

    /// Pages read from the machine so far; a figure for tests and benchmarks.
    std::size_t pagesRead() const { return pagesRead_; }

private:
    struct Extent;
    const std::shared_ptr<Extent>& extent(PageNumber index);
    PageNumber pagesToRead(const Extent& extent, PageNumber number) const;
    void read(Extent& extent, PageNumber number);

    PageIo& io_;
    std::uint32_t databaseKey_;
    PageNumber pageCount_;
    std::vector<std::shared_ptr<Extent>> cache_;
    std::size_t pagesRead_ = 0;
};

/// Encodes or decodes (it is the same) one page in place. Page 0 is never encoded.
void encodePage(std::span<std::uint8_t> page, PageNumber number, std::uint32_t databaseKey);

}  // namespace jet
