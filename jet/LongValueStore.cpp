#include "jet/LongValueStore.h"

#include <algorithm>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/WriteErrors.h"

namespace jet {
namespace {

constexpr std::size_t kMostBytes = 0x3FFFFFFF;

}  // namespace

LongValueStore::LongValueStore(PageStore& store, PageAllocator& allocator, const TableDefinition& table)
    : store_(store), allocator_(allocator), table_(table) {}

RowPages& LongValueStore::pagesOf(const Column& column) {
    const auto known = pages_.find(column.number);
    if (known != pages_.end()) return known->second;
    const auto maps = std::find_if(table_.longValueMaps.begin(), table_.longValueMaps.end(),
                                   [&](const LongValueMaps& each) { return each.columnNumber == column.number; });
    if (maps == table_.longValueMaps.end() || maps->owned.isNone()) {
        throw damaged(table_.page, u"Die Spalte '" + column.name + u"' hat keine Belegungskarte für lange Werte");
    }
    return pages_.emplace(column.number, RowPages(store_, allocator_, maps->owned, maps->free, kLongValueOwner))
        .first->second;
}

base::Bytes LongValueStore::add(const Column& column, std::span<const std::uint8_t> value) {
    if (value.size() > kMostBytes) throw rowTooLong();
    RowPages& pages = pagesOf(column);
    LongValueReference reference;
    reference.lengthBytes = static_cast<std::uint32_t>(value.size());
    if (value.size() <= kMaxLongValueRowBytes) {
        reference.kind = LongValueKind::SingleRow;
        reference.first = pages.add(value);
    } else {
        reference.kind = LongValueKind::Chain;
        reference.first = addChain(pages, value);
    }
    base::Bytes stored;
    reference.append(stored);
    return stored;
}

/// The last part first: each one knows the next. All but the last are full.
RowPointer LongValueStore::addChain(RowPages& pages, std::span<const std::uint8_t> value) {
    RowPointer next;
    std::size_t end = value.size();
    while (end > 0) {
        const std::size_t begin = (end - 1) / kLongValuePartBytes * kLongValuePartBytes;
        base::Bytes part(4);
        base::putU32(part, 0, next.packed());
        const auto data = value.subspan(begin, end - begin);
        part.insert(part.end(), data.begin(), data.end());
        next = pages.addAlone(part);
        end = begin;
    }
    return next;
}

void LongValueStore::remove(const Column& column, std::span<const std::uint8_t> stored, RowPointer row) {
    if (stored.empty()) return;
    // What can be read comes to an end, and does not go on in the parts of another value.
    static_cast<void>(readLongValue(store_, stored, row));
    const LongValueReference reference = LongValueReference::read(stored, row);
    if (reference.kind == LongValueKind::SingleRow) pagesOf(column).remove(reference.first);
    if (reference.kind == LongValueKind::Chain) removeChain(pagesOf(column), reference.first);
}

void LongValueStore::removeChain(RowPages& pages, RowPointer part) {
    while (!part.isNone()) {
        const auto next = RowPointer::unpack(base::ByteView{pages.read(part.page).slot(part.slot).bytes}.u32(0));
        pages.remove(part);
        part = next;
    }
}

}  // namespace jet
