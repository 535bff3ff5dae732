#include "jet/PageFile.h"

#include <algorithm>
#include <limits>

#include "jet/Errors.h"
#include "jet/Rc4.h"

namespace jet {
namespace {

constexpr PageNumber kExtentPages = 16;
/// With extents of 64 KiB: at most 16 MiB, however large the file.
constexpr std::size_t kCachedExtents = 256;

}  // namespace

PageView pageOfKind(PageSource& source, PageNumber number, PageKind kind) {
    PageView view = source.page(number);
    if (view.kind() != kind) {
        throw damaged(number, u"Seitenart " + base::decimal(view.bytes.u8(0)) + u" statt " +
                                  base::decimal(static_cast<std::int64_t>(kind)));
    }
    return view;
}

struct PageFile::Extent {
    PageNumber index;
    std::vector<std::uint8_t> bytes;
};

PageFile::PageFile(PageIo& io, std::uint32_t databaseKey)
    : io_(io),
      databaseKey_(databaseKey),
      pageCount_(static_cast<PageNumber>(
          std::min<std::uint64_t>(io.sizeBytes() / kPageSize, std::numeric_limits<PageNumber>::max()))),
      cache_(kCachedExtents) {}

PageView PageFile::page(PageNumber number) {
    if (number >= pageCount_) {
        throw damaged(number, u"Die Datei endet nach " + base::decimal(pageCount_) + u" Seiten");
    }
    const auto& found = extent(number / kExtentPages);
    const auto bytes =
        std::span<const std::uint8_t>(found->bytes).subspan((number % kExtentPages) * kPageSize, kPageSize);
    return {number, base::ByteView(bytes), found};
}

const std::shared_ptr<const PageFile::Extent>& PageFile::extent(PageNumber index) {
    auto& place = cache_[index % kCachedExtents];
    if (!place || place->index != index) place = readExtent(index);
    return place;
}

std::shared_ptr<const PageFile::Extent> PageFile::readExtent(PageNumber index) {
    auto extent = std::make_shared<Extent>();
    extent->index = index;
    const PageNumber first = index * kExtentPages;
    const PageNumber count = std::min(kExtentPages, pageCount_ - first);
    extent->bytes.resize(count * kPageSize);
    io_.read(std::uint64_t{first} * kPageSize, extent->bytes);
    ++extentsRead_;
    if (databaseKey_ != 0) {
        for (PageNumber i = 0; i < count; ++i)
            encodePage(std::span(extent->bytes).subspan(i * kPageSize, kPageSize), first + i, databaseKey_);
    }
    return extent;
}

void encodePage(std::span<std::uint8_t> page, PageNumber number, std::uint32_t databaseKey) {
    if (number == 0 || databaseKey == 0) return;
    std::array<std::uint8_t, 4> key{};
    base::putU32(key, 0, databaseKey ^ number);
    Rc4(key).apply(page);
}

}  // namespace jet
