#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "jet/PageIo.h"
#include "jet/PageSource.h"

namespace jet {

/// The file as pages: read in extents of 64 KiB, decoded where the file is encoded, kept in a bounded cache.
/// Made afresh for each operation, since other programs announce no change.
class PageFile : public PageSource {
public:
    /// @param io           must outlive the page file
    /// @param databaseKey  of the header; 0 = pages are not encoded
    PageFile(PageIo& io, std::uint32_t databaseKey);

    PageNumber pageCount() const override { return pageCount_; }
    PageView page(PageNumber number) override;

    /// Reads from the machine so far; a figure for tests and benchmarks.
    std::size_t extentsRead() const { return extentsRead_; }

private:
    struct Extent;
    const std::shared_ptr<const Extent>& extent(PageNumber index);
    std::shared_ptr<const Extent> readExtent(PageNumber index);

    PageIo& io_;
    std::uint32_t databaseKey_;
    PageNumber pageCount_;
    std::vector<std::shared_ptr<const Extent>> cache_;
    std::size_t extentsRead_ = 0;
};

/// Encodes or decodes (it is the same) one page in place. Page 0 is never encoded.
void encodePage(std::span<std::uint8_t> page, PageNumber number, std::uint32_t databaseKey);

}  // namespace jet
