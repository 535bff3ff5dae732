#include "jet/CatalogCheck.h"

#include <map>
#include <set>
#include <unordered_set>

#include "jet/SystemRows.h"

namespace jet {
namespace {

/// The root of all objects, which has no row of its own.
constexpr std::uint32_t kRootObject = 0x0F000000;

std::unordered_set<std::uint32_t> idsOf(const std::vector<CatalogEntry>& entries) {
    std::unordered_set<std::uint32_t> ids{kRootObject};
    for (const CatalogEntry& entry : entries)
        ids.insert(entry.id);
    return ids;
}

}  // namespace

std::vector<CatalogEntry> readCatalog(PageSource& source) {
    std::vector<CatalogEntry> entries;
    eachSystemRow(source, Catalog::ownEntry(), [&](const SystemRow& row) {
        const auto id = row.number(u"Id");
        const auto name = row.text(u"Name");
        const auto type = row.value<std::int16_t>(u"Type");
        if (!id || !name || !type) return;
        entries.push_back(
            {*id, row.number(u"ParentId").value_or(0), *name, *type, row.number(u"Flags").value_or(0), row.pointer()});
    });
    return entries;
}

void checkCatalog(const CheckContext& context, const std::vector<CatalogEntry>& entries) {
    const Place catalog = Place::ofTable(Catalog::ownEntry().name);
    const auto ids = idsOf(entries);
    std::set<std::uint32_t> seenIds;
    std::set<std::pair<std::uint32_t, base::Bytes>> seenNames;
    for (const CatalogEntry& entry : entries) {
        const Place at = catalog.atRow(entry.row);
        const base::Text object = u"Das Objekt '" + entry.name + u"' ";
        if (!ids.contains(entry.parentId))
            context.findings.fault(at,
                                   object + u"liegt unter " + base::decimal(entry.parentId) + u", das es nicht gibt.");
        if (!seenIds.insert(entry.id).second)
            context.findings.fault(at, object + u"hat die Nummer " + base::decimal(entry.id) + u" eines anderen.");
        if (!seenNames.emplace(entry.parentId, sortKey(entry.name)).second)
            context.findings.fault(at, object + u"hat den Namen eines anderen.");
    }
    for (const PageNumber page : {2U, 3U, 4U, 5U}) {
        if (!seenIds.contains(page))
            context.findings.fault(catalog,
                                   u"Die Systemtabelle auf Seite " + base::decimal(page) + u" ist nicht verzeichnet.");
    }
}

void checkRights(const CheckContext& context, const std::vector<CatalogEntry>& entries) {
    const auto ids = idsOf(entries);
    for (const CatalogEntry& entry : entries) {
        const bool isRights = entry.isLocalTable() && entry.name == u"MSysACEs";
        const bool isQueries = entry.isLocalTable() && entry.name == u"MSysQueries";
        if (!isRights && !isQueries) continue;
        eachSystemRow(context.source, entry, [&](const SystemRow& row) {
            const auto id = row.number(u"ObjectId");
            if (id && ids.contains(*id)) return;
            context.findings.fault(
                Place::ofTable(entry.name).atRow(row.pointer()),
                u"Die Zeile gehört zum Objekt " + base::decimal(id.value_or(0)) + u", das es nicht gibt.");
        });
    }
}

}  // namespace jet
