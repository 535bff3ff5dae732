#include "jet/tree/IndexPage.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <compare>
#include <utility>

#include "base/ByteView.h"
#include "jet/Errors.h"

namespace jet {
namespace {

constexpr std::size_t kShortestKey = 1;

std::uint32_t readBigEndian(std::span<const std::uint8_t> fourBytes) {
    return (std::uint32_t{fourBytes[0]} << 24U) | (std::uint32_t{fourBytes[1]} << 16U) |
           (std::uint32_t{fourBytes[2]} << 8U) | fourBytes[3];
}

base::Text numberOf(std::size_t number) {
    return base::decimal(number);
}

}  // namespace

IndexPage::IndexPage(PageView page, PageNumber definitionPage) : page_(std::move(page)) {
    const base::ByteView& view = page_.bytes;
    const PageKind kind = page_.kind();
    if (kind != PageKind::IndexNode && kind != PageKind::IndexLeaf) {
        throw damaged(number(), u"Statt einer Indexseite steht hier eine Seite der Art " + base::decimal(view.u8(0)));
    }
    if (const std::uint32_t owner = view.u32(kOwnerOffset); owner != definitionPage) {
        throw damaged(number(), u"Die Indexseite gehört zur Tabelle auf Seite " + base::decimal(owner) +
                                    u" statt auf Seite " + base::decimal(definitionPage));
    }
    isLeaf_ = kind == PageKind::IndexLeaf;
    previous_ = view.u32(kIndexPreviousOffset);
    next_ = view.u32(kIndexNextOffset);
    tail_ = isLeaf_ ? 0 : view.u32(kIndexTailOffset);
    prefixBytes_ = view.u16(kIndexPrefixOffset);
    readMask();
    checkEntries();
}

void IndexPage::readMask() {
    starts_.push_back(0);
    for (std::size_t byte = 0; byte < kIndexMaskBytes; ++byte) {
        for (unsigned bits = page_.bytes.u8(kIndexMaskOffset + byte); bits != 0; bits &= bits - 1) {
            const std::size_t end = byte * 8 + static_cast<std::size_t>(std::countr_zero(bits));
            if (end == 0 || end > kIndexEntriesBytes) {
                throw damaged(number(), u"Ein Indexeintrag endet an Stelle " + numberOf(end));
            }
            starts_.push_back(static_cast<std::uint16_t>(end));
        }
    }
    // Every writer keeps this field exact. A wrong number shows that the end of the last entry was lost.
    if (page_.bytes.u16(kFreeBytesOffset) != kIndexEntriesBytes - starts_.back()) {
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
        if (i > 0 && std::is_gteq(compareEntries(suffix(i - 1), suffix(i)))) {
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

void IndexPage::appendEntry(std::size_t i, base::Bytes& bytes) const {
    const auto shared = prefix();
    const auto own = suffix(i);
    bytes.insert(bytes.end(), shared.begin(), shared.end());
    bytes.insert(bytes.end(), own.begin(), own.end());
}

void IndexPage::copyEntry(std::size_t i, base::Bytes& entry) const {
    entry.clear();
    appendEntry(i, entry);
}

base::Bytes IndexPage::entry(std::size_t i) const {
    base::Bytes bytes;
    copyEntry(i, bytes);
    return bytes;
}

PageNumber IndexPage::child(std::size_t i) const {
    assert(!isLeaf_);
    return readBigEndian(stored(i).last(kIndexChildBytes));
}

std::size_t IndexPage::lowerBound(std::span<const std::uint8_t> wanted) const {
    if (size() == 0) return 0;
    const auto shared = prefix();
    const auto order = compareEntries(shared.first(std::min(shared.size(), wanted.size())),
                                      wanted.first(std::min(shared.size(), wanted.size())));
    if (order == std::strong_ordering::less) return size();
    if (order == std::strong_ordering::greater || wanted.size() <= shared.size()) return 0;
    return firstNotLess(size(), wanted.subspan(shared.size()), [this](std::size_t i) { return suffix(i); });
}

RowPointer rowOfEntry(std::span<const std::uint8_t> entry) {
    assert(entry.size() > kIndexRowBytes);
    return RowPointer::unpack(readBigEndian(entry.last(kIndexRowBytes)));
}

void appendRowPointer(base::Bytes& key, RowPointer row) {
    base::appendBigEndian(key, row.packed(), kIndexRowBytes);
}

}  // namespace jet
