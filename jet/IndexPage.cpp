#include "jet/IndexPage.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <compare>
#include <cstring>
#include <utility>

#include "base/ByteView.h"
#include "jet/Errors.h"

namespace jet {
namespace {

constexpr std::size_t kMaskOffset = 27;
constexpr std::size_t kMaskBytes = 453;
constexpr std::size_t kShortestKey = 1;

std::size_t commonPrefix(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
    const auto [endA, endB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    return static_cast<std::size_t>(endA - a.begin());
}

std::strong_ordering compareBytes(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
    const std::size_t count = std::min(a.size(), b.size());
    const int order = count == 0 ? 0 : std::memcmp(a.data(), b.data(), count);
    if (order != 0) return order <=> 0;
    return a.size() <=> b.size();
}

std::uint32_t readBigEndian(std::span<const std::uint8_t> fourBytes) {
    return (std::uint32_t{fourBytes[0]} << 24U) | (std::uint32_t{fourBytes[1]} << 16U) |
           (std::uint32_t{fourBytes[2]} << 8U) | fourBytes[3];
}

void appendBigEndian(base::Bytes& bytes, std::uint32_t value) {
    for (const unsigned shift : {24U, 16U, 8U, 0U})
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

base::Text numberOf(std::size_t number) {
    return base::decimal(static_cast<std::int64_t>(number));
}

/// Bytes that a prefix saves when `others` entries go without it.
std::size_t saved(std::size_t others, std::size_t prefixBytes) {
    return others * prefixBytes;
}

}  // namespace

IndexPage::IndexPage(PageView page, PageNumber definitionPage) : page_(std::move(page)) {
    const base::ByteView& view = page_.bytes;
    const PageKind kind = page_.kind();
    if (kind != PageKind::IndexNode && kind != PageKind::IndexLeaf) {
        throw damaged(number(), u"Statt einer Indexseite steht hier eine Seite der Art " + base::decimal(view.u8(0)));
    }
    if (view.u32(4) != definitionPage) {
        throw damaged(number(), u"Die Indexseite gehört zur Tabelle auf Seite " + base::decimal(view.u32(4)) +
                                    u" statt auf Seite " + base::decimal(definitionPage));
    }
    isLeaf_ = kind == PageKind::IndexLeaf;
    previous_ = view.u32(12);
    next_ = view.u32(16);
    tail_ = isLeaf_ ? 0 : view.u32(20);
    prefixBytes_ = view.u16(24);
    readMask();
    checkEntries();
}

void IndexPage::readMask() {
    starts_.push_back(0);
    for (std::size_t byte = 0; byte < kMaskBytes; ++byte) {
        for (unsigned bits = page_.bytes.u8(kMaskOffset + byte); bits != 0; bits &= bits - 1) {
            const std::size_t end = byte * 8 + static_cast<std::size_t>(std::countr_zero(bits));
            if (end == 0 || end > kIndexEntriesBytes) {
                throw damaged(number(), u"Ein Indexeintrag endet an Stelle " + numberOf(end));
            }
            starts_.push_back(static_cast<std::uint16_t>(end));
        }
    }
    // Every writer keeps this field exact; it tells when the end of the last entry was lost.
    if (page_.bytes.u16(2) != kIndexEntriesBytes - starts_.back()) {
        throw damaged(number(), u"Der freie Platz der Indexseite passt nicht zu ihren Einträgen");
    }
}

void IndexPage::checkEntries() const {
    const std::size_t childBytes = isLeaf_ ? 0 : kIndexChildBytes;
    const std::size_t shortest = kShortestKey + kIndexRowBytes + childBytes;
    for (std::size_t i = 0; i < size(); ++i) {
        const std::size_t whole = stored(i).size() + (i == 0 ? 0 : prefixBytes_);
        const std::size_t outsidePrefix = stored(i).size() - (i == 0 ? std::min(prefixBytes_, stored(i).size()) : 0);
        if (whole < shortest || outsidePrefix < childBytes || (i == 0 && prefixBytes_ > whole)) {
            throw damaged(number(), u"Der Indexeintrag " + numberOf(i) + u" ist zu kurz");
        }
        if (i > 0 && compareBytes(suffix(i - 1), suffix(i)) != std::strong_ordering::less) {
            throw damaged(number(), u"Der Indexeintrag " + numberOf(i) + u" steht nicht in aufsteigender Folge");
        }
    }
}

std::span<const std::uint8_t> IndexPage::stored(std::size_t i) const {
    assert(i < size());
    return page_.bytes.bytes().subspan(kIndexEntriesOffset + starts_[i], starts_[i + 1] - std::size_t{starts_[i]});
}

std::span<const std::uint8_t> IndexPage::suffix(std::size_t i) const {
    const auto bytes = stored(i);
    const std::size_t skipped = i == 0 ? prefixBytes_ : 0;
    return bytes.subspan(skipped, bytes.size() - skipped - (isLeaf_ ? 0 : kIndexChildBytes));
}

std::span<const std::uint8_t> IndexPage::prefix() const {
    return page_.bytes.bytes().subspan(kIndexEntriesOffset, prefixBytes_);
}

void IndexPage::copyEntry(std::size_t i, base::Bytes& entry) const {
    const auto shared = prefix();
    const auto own = suffix(i);
    entry.resize(shared.size() + own.size());
    std::copy(own.begin(), own.end(), std::copy(shared.begin(), shared.end(), entry.begin()));
}

base::Bytes IndexPage::entry(std::size_t i) const {
    base::Bytes bytes;
    copyEntry(i, bytes);
    return bytes;
}

RowPointer IndexPage::row(std::size_t i) const {
    // The prefix may reach into the row pointer.
    const base::Bytes bytes = entry(i);
    return rowOfEntry(bytes);
}

PageNumber IndexPage::child(std::size_t i) const {
    assert(!isLeaf_);
    return readBigEndian(stored(i).last(kIndexChildBytes));
}

std::size_t IndexPage::lowerBound(std::span<const std::uint8_t> wanted) const {
    if (size() == 0) return 0;
    const auto shared = prefix();
    const auto order = compareBytes(shared.first(std::min(shared.size(), wanted.size())),
                                    wanted.first(std::min(shared.size(), wanted.size())));
    if (order == std::strong_ordering::less) return size();
    if (order == std::strong_ordering::greater || wanted.size() <= shared.size()) return 0;
    const auto wantedSuffix = wanted.subspan(shared.size());
    std::size_t begin = 0;
    std::size_t end = size();
    while (begin < end) {
        const std::size_t middle = begin + (end - begin) / 2;
        if (compareBytes(suffix(middle), wantedSuffix) == std::strong_ordering::less)
            begin = middle + 1;
        else
            end = middle;
    }
    return begin;
}

RowPointer rowOfEntry(std::span<const std::uint8_t> entry) {
    assert(entry.size() > kIndexRowBytes);
    return RowPointer::unpack(readBigEndian(entry.last(kIndexRowBytes)));
}

void appendRowPointer(base::Bytes& key, RowPointer row) {
    appendBigEndian(key, row.packed());
}

bool IndexPageBuilder::add(std::span<const std::uint8_t> entry, PageNumber child) {
    const std::size_t childBytes = isLeaf_ ? 0 : kIndexChildBytes;
    const std::size_t bytes = entries_.size() + entry.size() + childBytes;
    assert(empty() || compareBytes(last(), entry) == std::strong_ordering::less);
    if (bytes - saved(size(), prefixWith(entry)) > kIndexEntriesBytes) return false;
    entries_.insert(entries_.end(), entry.begin(), entry.end());
    if (!isLeaf_) appendBigEndian(entries_, child);
    starts_.push_back(entries_.size());
    return true;
}

std::span<const std::uint8_t> IndexPageBuilder::entryAt(std::size_t i) const {
    const std::size_t childBytes = isLeaf_ ? 0 : kIndexChildBytes;
    return std::span(entries_).subspan(starts_[i], starts_[i + 1] - starts_[i] - childBytes);
}

std::span<const std::uint8_t> IndexPageBuilder::last() const {
    assert(!empty());
    return entryAt(size() - 1);
}

/// Because entries ascend, what the first and the last share all share. The last byte of a row pointer
/// stays out of the prefix.
std::size_t IndexPageBuilder::prefixWith(std::span<const std::uint8_t> entry) const {
    if (empty()) return 0;
    return std::min({commonPrefix(entryAt(0), entry), entryAt(0).size() - 1, entry.size() - 1});
}

void IndexPageBuilder::write(std::span<std::uint8_t> page, const Links& links) const {
    std::fill(page.begin(), page.end(), std::uint8_t{0});
    // A page that is not full needs no prefix.
    const std::size_t prefixBytes = entries_.size() > kIndexEntriesBytes ? prefixWith(last()) : 0;
    const std::size_t used = entries_.size() - saved(size() - 1, prefixBytes);
    page[0] = static_cast<std::uint8_t>(isLeaf_ ? PageKind::IndexLeaf : PageKind::IndexNode);
    page[1] = 1;
    base::putU16(page, 2, static_cast<std::uint16_t>(kIndexEntriesBytes - used));
    base::putU32(page, 4, links.definitionPage);
    base::putU32(page, 12, links.previous);
    base::putU32(page, 16, links.next);
    base::putU32(page, 20, isLeaf_ ? 0 : links.tail);
    base::putU16(page, 24, static_cast<std::uint16_t>(prefixBytes));
    page[26] = links.height;
    std::size_t place = 0;
    for (std::size_t i = 0; i < size(); ++i) {
        const std::size_t skipped = i == 0 ? 0 : prefixBytes;
        const auto bytes = std::span(entries_).subspan(starts_[i] + skipped, starts_[i + 1] - starts_[i] - skipped);
        std::copy(bytes.begin(), bytes.end(), page.begin() + static_cast<std::ptrdiff_t>(kIndexEntriesOffset + place));
        place += bytes.size();
        page[kMaskOffset + place / 8] |= static_cast<std::uint8_t>(1U << (place % 8));
    }
}

}  // namespace jet
