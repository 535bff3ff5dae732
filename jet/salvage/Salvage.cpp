#include "jet/salvage/Salvage.h"

#include <algorithm>
#include <utility>

#include "jet/salvage/DamagedDataPage.h"

namespace jet {
namespace {

constexpr PageNumber kRelationshipsTable = 5;
constexpr PageNumber kRightsTable = 3;
constexpr PageNumber kQueriesTable = 4;
constexpr std::size_t kLongestName = 64;

bool isSystemPage(PageNumber page) {
    return page >= kFirstSystemTable && page <= kLastSystemTable;
}

/// Whether the original engine would accept the name.
bool isPossibleName(base::TextView name) {
    return !name.empty() && name.size() <= kLongestName && name.front() != u' ' &&
           name.find_first_of(u".![]`") == base::TextView::npos &&
           std::ranges::none_of(name, [](char16_t unit) { return unit < u' '; }) &&
           base::fromUtf8(base::toUtf8(name)) == name;
}

SalvagedTable tableOf(DamagedFile& file, const TablePages& pages, const std::vector<DamagedDefinition>& definitions,
                      std::size_t index) {
    return {file, definitions[index], pages.pagesOf(index), pages.lostPagesOf(index)};
}

}  // namespace

Salvage::Salvage(DamagedFile& file) : file_(file), scan_(file) {
    std::vector<DamagedDefinition> definitions = findDefinitions();
    std::optional<TablePages> pages(std::in_place, file_, scan_, definitions);
    readCatalog(*pages, definitions);
    const std::size_t found = definitions.size();
    addDefinitions(definitions, objects_);
    if (definitions.size() > found) pages.emplace(file_, scan_, definitions);
    // A table whose definition is nowhere may be one that has lost its entry: the number in it was damaged.
    isCatalogWhole_ = isCatalogWhole_ && std::ranges::all_of(objects_, [&](const SalvagedObject& object) {
                          return object.type != CatalogEntry::kLocalTable ||
                                 std::ranges::any_of(
                                     definitions, [&](const auto& each) { return each.definition.page == object.id; });
                      });
    for (std::size_t i = 0; i < definitions.size(); ++i) {
        if (isSystemPage(definitions[i].definition.page)) continue;
        if (isInUse(definitions[i], !pages->pagesOf(i).empty()))
            addTable(definitions[i], pages->pagesOf(i), pages->lostPagesOf(i));
    }
    findLostTables();
}

/// The four system tables, and every page that begins a definition.
std::vector<DamagedDefinition> Salvage::findDefinitions() {
    std::vector<DamagedDefinition> definitions;
    std::set<PageNumber> continuations;
    for (PageNumber page = kFirstSystemTable; page <= kLastSystemTable; ++page)
        definitions.push_back(systemDefinition(file_, page));
    for (PageNumber page = kLastSystemTable + 1; page < scan_.pageCount(); ++page) {
        if (scan_.kind(page) != PageKind::TableDefinition || continuations.contains(page)) continue;
        auto found = readDamagedDefinition(file_, page);
        if (!found) continue;
        const auto& chain = found->definition.chain;
        continuations.insert(chain.begin() + 1, chain.end());
        definitions.push_back(*std::move(found));
    }
    std::erase_if(definitions,
                  [&](const DamagedDefinition& each) { return continuations.contains(each.definition.page); });
    return definitions;
}

/// Definitions whose page has lost its kind; the catalog names them.
void Salvage::addDefinitions(std::vector<DamagedDefinition>& definitions, const std::vector<SalvagedObject>& objects) {
    for (const SalvagedObject& object : objects) {
        if (object.type != CatalogEntry::kLocalTable || object.id <= kLastSystemTable || object.id >= scan_.pageCount())
            continue;
        const bool isThere = std::ranges::any_of(
            definitions, [&](const DamagedDefinition& each) { return each.definition.page == object.id; });
        if (isThere) continue;
        if (auto found = readDamagedDefinition(file_, object.id)) definitions.push_back(*std::move(found));
    }
}

void Salvage::readCatalog(const TablePages& pages, const std::vector<DamagedDefinition>& definitions) {
    const auto report = [&](RowPointer row, const base::Text& reason) { lostSystemRows_.push_back({row, reason}); };
    const auto system = [&](PageNumber page) { return tableOf(file_, pages, definitions, page - kFirstSystemTable); };
    const SalvagedTable catalog = system(kFirstSystemTable);
    objects_ = readObjects(catalog, report);
    countedObjects_ = catalog.definition().rowCount;
    isCatalogWhole_ = lostSystemRows_.empty() && catalog.definitionLosses().empty() && catalog.lostPages().empty() &&
                      objects_.size() >= countedObjects_;
    relationships_ = readRelationships(system(kRelationshipsTable), report);
    queryRows_ = readWholeRows(system(kQueriesTable), kQueriesTable);
    objectsWithRights_ = readObjectsWithRights(system(kRightsTable));
}

const SalvagedObject* Salvage::objectOf(PageNumber page) const {
    const auto found = std::ranges::find(objects_, page, &SalvagedObject::id);
    return found == objects_.end() ? nullptr : &*found;
}

/// A table that was dropped leaves its definition. But its maps are deleted, and nobody has rights to it.
bool Salvage::isInUse(const DamagedDefinition& definition, bool hasRows) const {
    const PageNumber page = definition.definition.page;
    if (objectOf(page) != nullptr) return true;
    if (scan_.isFree(page)) return false;
    const bool hasMap = readDamagedMap(file_, definition.definition.ownedPages).pages.has_value();
    return hasMap || (!isCatalogWhole_ && (hasRows || objectsWithRights_.contains(page)));
}

bool Salvage::isNameFree(base::TextView name) const {
    return std::ranges::none_of(tables_, [&](const TableOfSalvage& each) { return textsAreEqual(each.name, name); });
}

void Salvage::addTable(DamagedDefinition definition, std::vector<PageNumber> pages, std::vector<PageNumber> lostPages) {
    const PageNumber page = definition.definition.page;
    TableOfSalvage table{.name = u"Tabelle_S" + base::decimal(page),
                         .isNameMade = true,
                         .flags = 0,
                         .properties = {},
                         .hasLostProperties = true,
                         .rows = {file_, std::move(definition), std::move(pages), std::move(lostPages)}};
    if (const SalvagedObject* object = objectOf(page)) {
        table.flags = object->flags;
        table.hasLostProperties = !object->properties || object->lostProperties > 0;
        if (object->properties) table.properties = *object->properties;
        if (object->name && isPossibleName(*object->name) && isNameFree(*object->name)) {
            table.name = *object->name;
            table.isNameMade = false;
        }
    }
    tables_.push_back(std::move(table));
}

void Salvage::findLostTables() {
    for (const SalvagedObject& object : objects_) {
        if (object.type != CatalogEntry::kLocalTable || object.id <= kLastSystemTable) continue;
        const bool isThere = std::ranges::any_of(
            tables_, [&](const TableOfSalvage& each) { return each.rows.definition().page == object.id; });
        if (isThere) continue;
        LostTable lost{object.name.value_or(base::Text{}), object.id, 0};
        for (PageNumber page = 1; page < scan_.pageCount(); ++page) {
            if (scan_.kind(page) != PageKind::Data || scan_.owner(page) != object.id || scan_.isFree(page)) continue;
            const DamagedDataPage data = DamagedDataPage::read(file_, page);
            for (std::size_t i = 0; i < data.slotCount(); ++i) {
                if (isRow(data.slot(i).state)) ++lost.rows;
            }
        }
        lostTables_.push_back(std::move(lost));
    }
}

}  // namespace jet
