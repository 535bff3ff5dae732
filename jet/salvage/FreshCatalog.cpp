#include "jet/salvage/FreshCatalog.h"

#include <algorithm>
#include <utility>

#include "jet/fresh/SystemTables.h"

namespace jet {
namespace {

constexpr std::size_t kObjects = 0;
constexpr std::size_t kRights = 1;
constexpr std::size_t kQueries = 2;
constexpr std::size_t kRelationships = 3;
constexpr std::size_t kId = 0;
constexpr std::size_t kParentId = 1;
constexpr std::size_t kName = 2;
constexpr std::size_t kOwner = 6;
constexpr std::size_t kProperties = 14;
constexpr std::uint32_t kRootObject = 0x0F000000;
constexpr std::uint32_t kDatabase = 0x10000000;
constexpr std::uint32_t kAllRights = 0xFFFFF;
constexpr std::uint32_t kTableFlags = 0xA;  ///< hidden; a system table
constexpr std::uint16_t kColumnProperties = 1;

std::uint32_t numberOf(const base::Value& value) {
    const auto* number = std::get_if<std::int32_t>(&value);
    return number == nullptr ? 0 : static_cast<std::uint32_t>(*number);
}

/// Properties of columns that the table no longer has would look like damage.
base::Bytes propertiesOf(const TablePlan& plan) {
    PropertyBlob blob = plan.table().properties;
    std::erase_if(blob.owners, [&](const PropertyOwner& owner) {
        return owner.kind == kColumnProperties && plan.definition().column(owner.name) == nullptr;
    });
    return blob.owners.empty() ? base::Bytes{} : blob.encode();
}

base::Value encoded(const std::optional<PropertyBlob>& properties) {
    return properties && !properties->owners.empty() ? base::Value(properties->encode()) : base::Value{};
}

}  // namespace

FreshCatalog::FreshCatalog(FreshFile& file) {
    PageNumber page = kFirstSystemTable;
    for (const TableDesign& design : systemTableDesigns()) {
        TableDefinition definition = makeDefinition(design);
        definition.page = page++;
        tables_.push_back(file.addTable(design.name, std::move(definition)));
    }
    for (auto& row : firstObjectRows(knownCreationStamp()))
        addRow(std::move(row));
    for (const auto& row : firstAccessRows(knownCreationStamp()))
        tables_[kRights]->addRow(row);
}

/// @return false if the object has the number or name of another, or no parent
bool FreshCatalog::addRow(std::vector<base::Value> row) {
    const std::uint32_t parent = numberOf(row[kParentId]);
    const auto* name = std::get_if<base::Text>(&row[kName]);
    if (name == nullptr || !sortKeyIsCertain(*name)) return false;
    if (parent != kRootObject && !ids_.contains(parent)) return false;
    const std::pair key{parent, sortKey(*name)};
    if (names_.contains(key) || !ids_.insert(numberOf(row[kId])).second) return false;
    names_.insert(key);
    objects_.push_back(std::move(row));
    return true;
}

void FreshCatalog::addRights(std::uint32_t id) {
    for (const BuiltInAccount account : {BuiltInAccount::Admin, BuiltInAccount::Users})
        tables_[kRights]->addRow(accessRow(id, account, kAllRights, false, knownCreationStamp()));
}

std::uint32_t FreshCatalog::freeId() {
    while (ids_.contains(nextId_))
        ++nextId_;
    return nextId_;
}

void FreshCatalog::addTable(const TablePlan& plan, PageNumber page) {
    const std::uint32_t flags = plan.table().flags & (kTableFlags | CatalogEntry::kSystemFlags);
    addRow(objectRow(page, CatalogEntry::kTablesContainer, plan.name(), CatalogEntry::kLocalTable, flags,
                     BuiltInAccount::Admin, knownCreationStamp(), propertiesOf(plan)));
    addRights(page);
}

void FreshCatalog::addRelationships(const RelationshipPlans& relationships, const std::deque<TablePlan>& plans) {
    for (const PlannedRelationship& each : relationships.all()) {
        const std::uint32_t id = freeId();
        if (!addRow(objectRow(id, CatalogEntry::kRelationshipsContainer, each.name, CatalogEntry::kRelationship, 0,
                              BuiltInAccount::Admin, knownCreationStamp())))
            continue;
        addRights(id);
        std::int32_t place = 0;
        for (const auto& [own, other] : each.columns) {
            const TableDefinition& table = plans[each.table].definition();
            const TableDefinition& referenced = plans[each.referenced].definition();
            tables_[kRelationships]->addRow(std::vector<base::Value>{
                each.name, static_cast<std::int32_t>(each.flags), static_cast<std::int32_t>(each.columns.size()),
                place++, plans[each.table].name(), table.columnNumbered(own)->name, plans[each.referenced].name(),
                referenced.columnNumbered(other)->name});
        }
    }
}

void FreshCatalog::addObjects(const Salvage& salvage, SalvageReport& report) {
    std::vector<const SalvagedObject*> waiting;
    for (const SalvagedObject& object : salvage.objects()) {
        const bool isOther = object.type && object.type != CatalogEntry::kLocalTable &&
                             object.type != CatalogEntry::kRelationship && object.id >= kMaxPages;
        if (object.id == kDatabase && object.properties && !object.properties->owners.empty())
            std::ranges::find(objects_, object.id, [](const auto& row) {
                return numberOf(row[kId]);
            })->at(kProperties) = encoded(object.properties);
        else if (isOther && !ids_.contains(object.id))
            waiting.push_back(&object);
    }
    // Containers may come after what they contain.
    for (bool isAnyAdded = true; isAnyAdded;) {
        isAnyAdded = false;
        std::erase_if(waiting, [&](const SalvagedObject* object) {
            std::vector<base::Value> row = object->values;
            row[kOwner] = accountId(BuiltInAccount::Admin, knownCreationStamp());
            row[kProperties] = encoded(object->properties);
            if (!object->isWhole || !addRow(std::move(row))) return false;
            addRights(object->id);
            if (!object->properties || object->lostProperties > 0)
                report.file.lose(placeText(object->row) + u": Eigenschaften des Objekts '" + *object->name +
                                 u"' sind nicht lesbar.");
            return isAnyAdded = true;
        });
    }
    for (const SalvagedObject* object : waiting) {
        report.file.lose(placeText(object->row) + u": Das Objekt '" + object->name.value_or(base::Text{}) + u"' (Art " +
                         base::decimal(object->type.value_or(0)) + u") ist nicht ganz lesbar.");
    }
    std::set<base::Bytes> keys;
    for (const auto& row : salvage.queryRows()) {
        const auto* order = std::get_if<base::Bytes>(&row[2]);
        base::Bytes key = order == nullptr ? base::Bytes{} : *order;
        const auto* attribute = std::get_if<std::uint8_t>(&row[1]);
        base::appendLittleEndian(key, numberOf(row[0]), 4);
        key.push_back(attribute == nullptr ? std::uint8_t{0} : *attribute);
        const bool isKnown = attribute != nullptr && ids_.contains(numberOf(row[0]));
        if (isKnown && keys.insert(std::move(key)).second) tables_[kQueries]->addRow(row);
    }
}

void FreshCatalog::finish() {
    for (const auto& row : objects_)
        tables_[kObjects]->addRow(row);
    for (const auto& table : tables_)
        table->finish();
}

}  // namespace jet
