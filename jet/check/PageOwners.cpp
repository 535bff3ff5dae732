#include "jet/check/PageOwners.h"

#include "jet/page/UsageMap.h"

namespace jet {
namespace {

/// The second map of the file itself, which is empty in all files.
constexpr RowPointer kSecondGlobalMap{kGlobalMapPage, 1};

/// The pages for which a map has bits. Pages outside the map of free pages count as free.
struct Range {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    bool contains(PageNumber page) const { return page >= begin && page < end; }
};

Range rangeOf(base::ByteView row) {
    if (row.u8(0) == kReferenceMap) return {0, mapEntryCount(row.size()) * std::uint64_t{kBitmapPages}};
    const std::uint64_t first = row.u32(kFirstPageOffset);
    return {first, first + 8 * (row.size() - kInlineBitsOffset)};
}

/// "3 Seiten, die erste ist 17"
class PageList {
public:
    void add(PageNumber page) {
        if (count_++ == 0) first_ = page;
    }
    std::size_t count() const { return count_; }
    PageNumber first() const { return first_; }
    base::Text text() const {
        return count_ == 1 ? u"1 Seite" : countText(count_) + u" Seiten, die erste ist " + base::decimal(first_) + u",";
    }

private:
    std::size_t count_ = 0;
    PageNumber first_ = 0;
};

}  // namespace

void checkFreeBytes(const DataPage& page, Findings& findings, const Place& place) {
    const std::size_t count = page.slotCount();
    const std::size_t lowest =
        count == 0 ? kPageSize
                   : static_cast<std::size_t>(page.slot(count - 1).bytes.data() - page.page().bytes.bytes().data());
    const std::size_t free = lowest - kDataPageHeaderBytes - kSlotBytes * count;
    if (page.freeBytes() == free) return;
    findings.fault(place.onPage(page.number()),
                   countText(page.freeBytes()) + u" freie Bytes sind vermerkt, es sind " + countText(free) + u".");
}

PageOwners::PageOwners(PageSource& source, Findings& findings)
    : source_(source), findings_(findings), owners_(source.pageCount(), 0) {
    addOwner(u"niemandem");
    const Owner header = addOwner(u"zum Dateikopf");
    mapOwner_ = addOwner(u"zu den Belegungskarten");
    claim(0, header, {});
    mapRows_.insert(kSecondGlobalMap.packed());
}

PageOwners::Owner PageOwners::addOwner(base::Text name) {
    names_.push_back(std::move(name));
    return static_cast<Owner>(names_.size() - 1);
}

bool PageOwners::claim(PageNumber page, Owner owner, const Place& place) {
    if (page >= owners_.size()) {
        findings_.fault(place.onPage(page), u"Die Seite liegt hinter dem Ende der Datei, die nur " +
                                                countText(owners_.size()) + u" Seiten hat.");
        return false;
    }
    if (owners_[page] != 0) {
        findings_.fault(place.onPage(page),
                        u"Die Seite gehört " + names_[owner] +
                            (owners_[page] == owner ? base::Text(u" mehr als einmal.")
                                                    : u" und auch " + names_[owners_[page]] + u"."));
        return false;
    }
    owners_[page] = owner;
    if (page != 0 && source_.page(page).bytes.u8(1) != 1)
        findings_.fault(place.onPage(page), u"Das zweite Byte der Seite ist nicht 1.");
    return true;
}

/// Several maps share a page. The page is checked when the first of them is read.
bool PageOwners::claimMapPage(PageNumber page, const Place& place) {
    if (page < owners_.size() && owners_[page] == mapOwner_) return true;
    if (!claim(page, mapOwner_, place)) return false;
    return findings_.guard(place.onPage(page),
                           [&] { checkFreeBytes(DataPage::read(source_, page, mapOwner(page)), findings_, place); });
}

void PageOwners::claimBitmapPages(RowPointer row, const Place& place) {
    const DataPage page(source_.page(row.page));
    const base::ByteView bytes{page.slot(row.slot).bytes};
    if (bytes.u8(0) != kReferenceMap) return;
    for (std::size_t entry = 0; entry < mapEntryCount(bytes.size()); ++entry) {
        if (const PageNumber number = bytes.u32(mapEntryOffset(entry)); number != 0) claim(number, mapOwner_, place);
    }
}

std::optional<CheckedMap> PageOwners::readMap(RowPointer row, const Place& place) {
    if (row.isNone()) {
        findings_.fault(place, u"Die Belegungskarte fehlt.");
        return std::nullopt;
    }
    if (!mapRows_.insert(row.packed()).second) {
        findings_.fault(place.atRow(row), u"Die Belegungskarte gehört schon zu etwas anderem.");
        return std::nullopt;
    }
    if (!claimMapPage(row.page, place)) return std::nullopt;
    UsageMap map;
    const bool isRead = findings_.guard(place.atRow(row), [&] {
        map = UsageMap::read(source_, row);
        claimBitmapPages(row, place);
    });
    if (!isRead) return std::nullopt;
    CheckedMap checked;
    const auto count = static_cast<PageNumber>(owners_.size());
    auto page = map.next(0);
    for (; page && *page < count; page = map.next(*page + 1))
        checked.pages.push_back(*page);
    if (page && row.page != kGlobalMapPage) {
        findings_.fault(place.atRow(row), u"Die Belegungskarte nennt Seite " + base::decimal(*page) +
                                              u", die Datei hat nur " + base::decimal(count) + u" Seiten.");
    }
    return checked;
}

std::optional<CheckedMap> PageOwners::readPagesWithSpace(RowPointer row, const CheckedMap& owned, const Place& place) {
    auto free = readMap(row, place);
    if (!free) return free;
    PageList strangers;
    for (const PageNumber page : free->pages) {
        if (!owned.contains(page)) strangers.add(page);
    }
    if (strangers.count() > 0) {
        findings_.fault(place.onPage(strangers.first()), u"Die Karte der Seiten mit Platz (" + rowText(row) +
                                                             u") nennt " + strangers.text() +
                                                             u" außerhalb der eigenen Seiten.");
    }
    return free;
}

std::vector<PageNumber> PageOwners::checkFreePages(RowPointer freeMap) {
    std::vector<PageNumber> ownerless;
    const auto free = readMap(freeMap, {});
    if (!free) return ownerless;
    Range range;
    const bool hasRange = findings_.guard(Place{}.atRow(freeMap), [&] {
        const DataPage page(source_.page(freeMap.page));
        range = rangeOf(base::ByteView{page.slot(freeMap.slot).bytes});
    });
    if (!hasRange) return ownerless;
    PageList outside;
    PageList unused;
    for (PageNumber page = 0; page < owners_.size(); ++page) {
        const bool isCovered = range.contains(page);
        const bool isFree = free->contains(page);
        if (owners_[page] == 0) {
            if (isFree) continue;
            ownerless.push_back(page);
            if (isCovered) unused.add(page);
        } else if (!isCovered) {
            outside.add(page);
        } else if (isFree) {
            findings_.fault(Place{}.onPage(page), u"Die Seite gehört " + names_[owners_[page]] +
                                                      u" und gilt in der Karte der freien Seiten als frei.");
        }
    }
    if (outside.count() > 0) {
        findings_.note(Place{}.onPage(outside.first()),
                       u"Die Karte der freien Seiten reicht nicht bis zu den belegten Seiten: " + outside.text() +
                           u" nicht erfasst.");
    }
    if (unused.count() > 0) {
        findings_.note(Place{}.onPage(unused.first()), unused.text() + u" weder frei noch von etwas benutzt.");
    }
    return ownerless;
}

}  // namespace jet
