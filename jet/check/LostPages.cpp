#include "jet/check/LostPages.h"

#include <algorithm>

#include "jet/page/UsageMap.h"

namespace jet {
namespace {

/// If the table was dropped, the rows of its maps are deleted or belong to another owner by now.
void checkDefinitionPage(const CheckContext& context, PageNumber page) {
    const TableDefinition definition = TableDefinition::read(context.source, page);
    if (definition.ownedPages.isNone() || context.owners.isMapInUse(definition.ownedPages)) return;
    UsageMap::read(context.source, definition.ownedPages);
    context.findings.fault(Place{}.onPage(page), u"Die Seite ist die Definition einer Tabelle mit der Spalte '" +
                                                     definition.columns[0].name +
                                                     u"', die in MSysObjects nicht verzeichnet ist.");
}

void checkDataPage(const CheckContext& context, const std::vector<CheckedTable>& tables, const PageView& page) {
    const DataPage data(page);
    const auto table =
        std::ranges::find_if(tables, [&](const CheckedTable& each) { return each.definition.page == data.owner(); });
    if (table == tables.end() || !table->countsMoreThanFound() || !data.hasLiveRows()) return;
    context.findings.fault(Place::ofTable(table->name).onPage(page.number),
                           u"Die Seite hat Datensätze der Tabelle, und keine Karte nennt sie; gezählt sind " +
                               base::decimal(table->definition.rowCount) + u" Datensätze, gefunden " +
                               countText(table->rowCount) + u".");
}

}  // namespace

void checkLostPages(const CheckContext& context, const std::vector<CheckedTable>& tables,
                    std::span<const PageNumber> pages) {
    for (const PageNumber number : pages) {
        // A page that cannot be read is a leftover.
        passingOverDamage([&] {
            const PageView page = context.source.page(number);
            if (page.kind() == PageKind::TableDefinition) checkDefinitionPage(context, number);
            if (page.kind() == PageKind::Data) checkDataPage(context, tables, page);
        });
    }
}

}  // namespace jet
