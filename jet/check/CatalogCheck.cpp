#include "jet/check/CatalogCheck.h"

#include <map>
#include <set>
#include <unordered_set>

#include "jet/check/SystemRows.h"

namespace jet {
namespace {

/// The root of all objects; it has no row of its own.
constexpr std::uint32_t kRootObject = 0x0F000000;

std::unordered_set<std::uint32_t> idsOf(const std::vector<CatalogEntry>& entries) {
    std::unordered_set<std::uint32_t> ids{kRootObject};
    for (const CatalogEntry& entry : entries)
        ids.insert(entry.id);
    return ids;
}

bool hasHalfCharacter(base::TextView name) {
    return base::fromUtf8(base::toUtf8(name)) != name;
}

/// The properties of an object that is no table; those of tables are checked with their columns.
void checkProperties(const SystemRow& row, const CatalogEntry& entry, Findings& findings) {
    if (entry.isLocalTable()) return;
    findings.guard(Place::ofTable(CatalogEntry::ofCatalog().name).withColumn(u"LvProp").atRow(entry.row), [&] {
        const auto properties = row.value<base::Bytes>(u"LvProp");
        if (properties) PropertyBlob::read(*properties, entry.row);
    });
}

/// The number of a local table is a page. All other numbers are greater than the last page that a file can have.
bool fitsItsKind(const CatalogEntry& entry) {
    return entry.isLocalTable() || entry.id >= kMaxPages;
}

}  // namespace

std::vector<CatalogEntry> readCatalog(PageSource& source, Findings& findings) {
    std::vector<CatalogEntry> entries;
    eachSystemRow(source, CatalogEntry::ofCatalog(), [&](const SystemRow& row) {
        const auto id = row.number(u"Id");
        const auto parentId = row.number(u"ParentId");
        const auto name = row.text(u"Name");
        const auto type = row.value<std::int16_t>(u"Type");
        if (!id || !parentId || !name || !type) {
            findings.fault(Place::ofTable(CatalogEntry::ofCatalog().name).atRow(row.pointer()),
                           u"Dem Objekt fehlt Id, ParentId, Name oder Type.");
        } else {
            entries.push_back({*id, *parentId, *name, *type, row.number(u"Flags").value_or(0), row.pointer()});
            checkProperties(row, entries.back(), findings);
        }
    });
    return entries;
}

void checkCatalog(const CheckContext& context, const std::vector<CatalogEntry>& entries) {
    const Place catalog = Place::ofTable(CatalogEntry::ofCatalog().name);
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
        if (!fitsItsKind(entry))
            context.findings.fault(at, object + u"hat die Nummer einer Tabelle und ist als Art " +
                                           base::decimal(entry.type) + u" verzeichnet.");
        if (entry.isLocalTable() && hasHalfCharacter(entry.name))
            context.findings.fault(at, object + u"hat einen Namen mit einem halben Zeichen.");
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
            context.findings.note(
                Place::ofTable(entry.name).atRow(row.pointer()),
                u"Die Zeile gehört zum Objekt " + base::decimal(id.value_or(0)) + u", das es nicht gibt.");
        });
    }
}

}  // namespace jet
