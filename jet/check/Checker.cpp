#include "jet/check/Checker.h"

#include <algorithm>
#include <array>

#include "jet/check/CatalogCheck.h"
#include "jet/check/LostPages.h"
#include "jet/check/RelationshipCheck.h"
#include "jet/fresh/SystemTables.h"
#include "jet/page/Header.h"

namespace jet {
namespace {

constexpr std::size_t kConstantOffset = 0x98;
constexpr std::uint32_t kConstant = 1620;
constexpr std::uint32_t kEngineVersion = 0x00302E34;  // "4.0"
constexpr std::size_t kUsers = 256;
constexpr RowPointer kFreeMap{1, 0};
constexpr RowPointer kSecondMap{1, 1};
constexpr std::array<PageNumber, 4> kSystemTables{2, 3, 4, 5};

void checkFileSize(std::uint64_t sizeBytes, Findings& findings) {
    if (sizeBytes % kPageSize == 0) return;
    findings.fault({}, u"Die Datei hat " + base::decimal(sizeBytes) + u" Bytes, keine ganze Zahl von Seiten zu 4096.");
}

void checkHeader(PageSource& source, Findings& findings) {
    const Place place = Place{}.onPage(0);
    findings.guard(place, [&] {
        const base::ByteView page = source.page(0).bytes;
        const Header header = Header::read(page);
        if (header.freeMap != kFreeMap || header.secondMap != kSecondMap)
            findings.fault(place, u"Der Dateikopf nennt andere Karten der freien Seiten als Seite 1, Zeile 0 und 1.");
        if (header.systemTables != kSystemTables)
            findings.fault(place, u"Der Dateikopf nennt andere Systemtabellen als die der Seiten 2 bis 5.");
        if (page.u32(kConstantOffset) != kConstant || page.u32(kConstantOffset + 4) != kEngineVersion)
            findings.fault(place, u"Die festen Angaben des Dateikopfs sind verändert.");
        for (std::size_t user = 0; user < kUsers; ++user) {
            if (page.u16(kCommitWordsOffset + 2 * user) != 0) continue;
            findings.fault(place, u"Benutzer " + countText(user) +
                                      u" hat nicht zu Ende geschrieben: sein Zähler ist 0 statt mindestens 256.");
        }
    });
}

/// All tables: those of the catalog and the four system tables, even if the catalog lacks them.
std::vector<CatalogEntry> tablesToCheck(const std::vector<CatalogEntry>& entries) {
    std::vector<CatalogEntry> tables;
    for (const PageNumber page : kSystemTables) {
        const auto found = std::find_if(entries.begin(), entries.end(), [&](const CatalogEntry& entry) {
            return entry.isLocalTable() && entry.id == page;
        });
        CatalogEntry entry = CatalogEntry::ofCatalog();
        entry.id = page;
        entry.name = u"auf Seite " + base::decimal(page);
        tables.push_back(found != entries.end() ? *found : entry);
    }
    for (const CatalogEntry& entry : entries) {
        const bool isThere = std::any_of(tables.begin(), tables.begin() + kSystemTables.size(),
                                         [&](const CatalogEntry& table) { return table.row == entry.row; });
        if (entry.isLocalTable() && !isThere) tables.push_back(entry);
    }
    return tables;
}

/// The engine finds the columns of the system tables by name.
void checkSystemColumns(const std::vector<CheckedTable>& tables, Findings& findings) {
    const auto designs = systemTableDesigns();
    for (const CheckedTable& table : tables) {
        const auto page = std::find(kSystemTables.begin(), kSystemTables.end(), table.definition.page);
        if (page == kSystemTables.end()) continue;
        for (const ColumnDesign& wanted : designs[static_cast<std::size_t>(page - kSystemTables.begin())].columns) {
            const Column* column = table.definition.column(wanted.name);
            if (column != nullptr && column->type == wanted.type) continue;
            findings.fault(Place::ofTable(table.name).withColumn(wanted.name).onPage(*page),
                           u"Die Systemtabelle hat diese Spalte nicht, oder sie ist von anderer Art.");
        }
    }
}

}  // namespace

CheckResult checkDatabase(PageSource& source, std::uint64_t sizeBytes) {
    CheckResult result;
    Findings& findings = result.findings;
    result.counts.pages = source.pageCount();
    checkFileSize(sizeBytes, findings);
    if (source.pageCount() == 0 || source.pageCount() > kMaxPages) {
        findings.fault({}, u"Die Datei hat " + base::decimal(source.pageCount()) + u" Seiten; erlaubt sind 1 bis " +
                               base::decimal(kMaxPages) + u".");
        return result;
    }
    checkHeader(source, findings);
    PageOwners owners(source, findings);
    const CheckContext context{source, findings, owners, result.counts};
    const std::vector<CatalogEntry> entries = readCatalog(source, findings);
    std::vector<CheckedTable> tables;
    for (const CatalogEntry& entry : tablesToCheck(entries)) {
        if (auto table = checkTable(context, entry)) tables.push_back(std::move(*table));
    }
    checkSystemColumns(tables, findings);
    checkCatalog(context, entries);
    checkRights(context, entries);
    checkRelationships(context, entries, tables);
    checkLostPages(context, tables, owners.checkFreePages(kFreeMap));
    return result;
}

}  // namespace jet
