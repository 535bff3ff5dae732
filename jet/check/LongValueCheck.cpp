#include "jet/check/LongValueCheck.h"

namespace jet {

LongValueCheck::LongValueCheck(const CheckContext& context, const TableDefinition& definition, Place place)
    : context_(context), definition_(definition), place_(std::move(place)) {}

void LongValueCheck::claimPages() {
    for (const LongValueMaps& maps : definition_.longValueMaps) {
        const Column* column = definition_.columnNumbered(maps.columnNumber);
        // The entries of deleted columns remain in the definition.
        if (column != nullptr && column->isLongValue()) claimColumn(*column, maps);
    }
}

void LongValueCheck::claimColumn(const Column& column, const LongValueMaps& maps) {
    ColumnPages pages;
    pages.place = place_.withColumn(column.name);
    const auto owned = context_.owners.readMap(maps.owned, pages.place);
    if (!owned) return;
    const auto owner = context_.owners.addOwner(u"zu den langen Werten der Spalte '" + column.name +
                                                u"' der Tabelle '" + place_.table + u"'");
    for (const PageNumber page : owned->pages) {
        if (!context_.owners.claim(page, owner, pages.place)) continue;
        pages.owned.pages.push_back(page);
        checkPage(page, pages.place);
    }
    if (!maps.pagesWithSpace.isNone()) {
        if (auto withSpace = context_.owners.readPagesWithSpace(maps.pagesWithSpace, *owned, pages.place))
            pages.withSpace = std::move(*withSpace);
    }
    columns_.emplace(column.number, std::move(pages));
}

void LongValueCheck::checkPage(PageNumber number, const Place& place) {
    context_.findings.guard(place.onPage(number), [&] {
        const DataPage page = DataPage::read(context_.source, number, kLongValueOwner);
        checkFreeBytes(page, context_.findings, place);
        for (std::size_t i = 0; i < page.slotCount(); ++i) {
            const SlotState state = page.slot(i).state;
            if (state == SlotState::Live || state == SlotState::Deleted) continue;
            context_.findings.fault(place.atRow({number, static_cast<std::uint8_t>(i)}),
                                    u"Der Teil eines langen Werts ist als verschoben vermerkt.");
        }
    });
}

void LongValueCheck::checkValue(const Column& column, std::span<const std::uint8_t> stored, RowPointer row) {
    const auto found = columns_.find(column.number);
    if (found == columns_.end() || stored.empty()) return;
    const auto reference = LongValueReference::read(stored, row);
    if (reference.kind == LongValueKind::SingleRow) use(found->second, reference.first, row);
    // Damage of the chain itself is reported when the value is read.
    if (reference.kind == LongValueKind::Chain) passingOverDamage([&] { checkChain(found->second, reference, row); });
}

void LongValueCheck::checkChain(ColumnPages& pages, const LongValueReference& reference, RowPointer row) {
    for (RowPointer part = reference.first; !part.isNone();) {
        if (!use(pages, part, row)) return;
        const DataPage page = DataPage::read(context_.source, part.page, kLongValueOwner);
        const Place at = pages.place.atRow(part);
        if (page.slotCount() != 1)
            context_.findings.note(at, u"Der Teil einer Kette ist nicht allein auf seiner Seite.");
        if (pages.withSpace.contains(part.page))
            context_.findings.note(at, u"Die Seite einer Kette steht in der Karte der Seiten mit Platz.");
        if (part == reference.first && page.stamp() != reference.stamp) {
            context_.findings.fault(at, u"Die Seite trägt die Marke " + base::decimal(page.stamp()) +
                                            u", der Verweis in " + rowText(row) + u" die Marke " +
                                            base::decimal(reference.stamp) + u".");
        }
        part = pointerAt(page.slot(part.slot).bytes);
    }
}

/// @return whether no other value uses the part
bool LongValueCheck::use(ColumnPages& pages, RowPointer part, RowPointer row) {
    if (!pages.owned.contains(part.page)) {
        context_.findings.fault(pages.place.atRow(row), u"Ein Teil des langen Werts steht in " + rowText(part) +
                                                            u", die Seite gehört der Spalte nicht.");
    }
    if (pages.used.insert(part.packed()).second) return true;
    context_.findings.fault(pages.place.atRow(row),
                            u"Der Teil des langen Werts in " + rowText(part) + u" wird schon benutzt.");
    return false;
}

void LongValueCheck::checkUnused() {
    for (const auto& [number, pages] : columns_) {
        std::size_t count = 0;
        RowPointer first;
        for (const PageNumber each : pages.owned.pages) {
            DataPage page;
            passingOverDamage([&] { page = DataPage::read(context_.source, each, kLongValueOwner); });
            for (std::size_t i = 0; i < page.slotCount(); ++i) {
                const RowPointer part{each, static_cast<std::uint8_t>(i)};
                if (page.slot(i).state != SlotState::Live || pages.used.contains(part.packed())) continue;
                if (count++ == 0) first = part;
            }
        }
        if (count > 0) {
            context_.findings.note(pages.place.atRow(first),
                                   countText(count) + u" Teile langer Werte werden von keiner Zeile benutzt.");
        }
    }
}

}  // namespace jet
