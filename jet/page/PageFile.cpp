#include "jet/page/PageFile.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "jet/Errors.h"
#include "jet/page/Rc4.h"

namespace jet {
namespace {

constexpr PageNumber kExtentPages = 16;
/// An extent has 64 KiB. So the cache takes at most 2 MiB, however large the file is.
constexpr std::size_t kCachedExtents = 32;

}  // namespace

PageView pageOfKind(PageSource& source, PageNumber number, PageKind kind) {
    PageView view = source.page(number);
    if (view.kind() != kind) {
        throw damaged(number, u"Seitenart " + base::decimal(view.bytes.u8(0)) + u" statt " +
                                  base::decimal(static_cast<int>(kind)));
    }
    return view;
}

/// Sixteen neighbouring pages, some of which have been read.
struct PageFile::Extent {
    PageNumber index = 0;
    std::uint16_t present = 0;  ///< bit i: page i has been read, and its bytes do not change any more
    std::array<std::uint8_t, kExtentPages * kPageSize> bytes;

    bool has(PageNumber place) const { return ((present >> place) & 1U) != 0; }
    std::span<std::uint8_t> page(PageNumber place) { return std::span(bytes).subspan(place * kPageSize, kPageSize); }
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
    const PageNumber place = number % kExtentPages;
    if (!found->has(place)) read(*found, number);
    return {number, base::ByteView(found->page(place)), found};
}

const std::shared_ptr<PageFile::Extent>& PageFile::extent(PageNumber index) {
    auto& place = cache_[index % kCachedExtents];
    if (place && place->index == index) return place;
    // A view may still show the old bytes. If there is none, the memory is used again without clearing it.
    if (!place || place.use_count() > 1) place = std::make_shared_for_overwrite<Extent>();
    place->index = index;
    place->present = 0;
    return place;
}

/// As many pages as were read of the sixteen before this one. So a scan soon reads whole extents.
PageNumber PageFile::pagesToRead(const Extent& extent, PageNumber number) const {
    const PageNumber place = number % kExtentPages;
    std::uint32_t before = std::uint32_t{extent.present} << kExtentPages;
    if (extent.index > 0) {
        const auto& neighbour = cache_[(extent.index - 1) % kCachedExtents];
        if (neighbour && neighbour->index + 1 == extent.index) before |= neighbour->present;
    }
    const auto wanted = static_cast<PageNumber>(std::popcount((before >> place) & 0xFFFFU));
    const PageNumber most = std::min({wanted, kExtentPages - place, pageCount_ - number});
    PageNumber count = 1;
    while (count < most && !extent.has(place + count))
        ++count;
    return count;
}

void PageFile::read(Extent& extent, PageNumber number) {
    const PageNumber place = number % kExtentPages;
    const PageNumber count = pagesToRead(extent, number);
    io_.read(std::uint64_t{number} * kPageSize, std::span(extent.bytes).subspan(place * kPageSize, count * kPageSize));
    for (PageNumber i = 0; i < count; ++i) {
        encodePage(extent.page(place + i), number + i, databaseKey_);
        extent.present = static_cast<std::uint16_t>(extent.present | (1U << (place + i)));
    }
}

void encodePage(std::span<std::uint8_t> page, PageNumber number, std::uint32_t databaseKey) {
    if (number == 0 || databaseKey == 0) return;
    std::array<std::uint8_t, 4> key{};
    base::putU32(key, 0, databaseKey ^ number);
    Rc4(key).apply(page);
}

}  // namespace jet
