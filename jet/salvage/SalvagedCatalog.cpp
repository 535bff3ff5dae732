#include "jet/salvage/SalvagedCatalog.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "jet/fresh/SystemTables.h"

namespace jet {
namespace {

bool hasColumnsOf(const TableDefinition& definition, const TableDesign& design) {
    return std::ranges::all_of(design.columns, [&](const ColumnDesign& wanted) {
        const Column* column = definition.column(wanted.name);
        return column != nullptr && column->type == wanted.type;
    });
}

/// Gives the values of a row by the names of its columns.
class NamedValues {
public:
    NamedValues(const TableDefinition& definition, const DamagedRow& row) : definition_(definition), row_(row) {}

    template <typename T>
    std::optional<T> value(base::TextView name) const {
        const Column* column = definition_.column(name);
        const T* found = column == nullptr ? nullptr : std::get_if<T>(&row_.values[column->number]);
        return found == nullptr ? std::nullopt : std::optional<T>(*found);
    }
    std::optional<std::uint32_t> number(base::TextView name) const {
        const auto found = value<std::int32_t>(name);
        return found ? std::optional(static_cast<std::uint32_t>(*found)) : std::nullopt;
    }
    base::Text text(base::TextView name) const { return value<base::Text>(name).value_or(base::Text{}); }
    /// The values in the order of the columns of this design.
    std::vector<base::Value> inOrderOf(const TableDesign& design) const {
        std::vector<base::Value> values;
        for (const ColumnDesign& wanted : design.columns) {
            const Column* column = definition_.column(wanted.name);
            values.push_back(column == nullptr ? base::Value{} : row_.values[column->number]);
        }
        return values;
    }
    bool isLost(base::TextView name) const {
        return std::ranges::any_of(row_.lost, [&](const LostValue& lost) { return lost.column->name == name; });
    }

private:
    const TableDefinition& definition_;
    const DamagedRow& row_;
};

bool isSoundText(const Property& property) {
    const base::Text text = property.asText();
    return property.data.size() % 2 == 0 && base::fromUtf8(base::toUtf8(text)) == text;
}

bool isSound(const Property& property) {
    const auto type = static_cast<ColumnType>(property.type);
    const std::size_t needed = type == ColumnType::Boolean ? 1 : storedBytes(type);
    if (type == ColumnType::Text || type == ColumnType::Memo) return isSoundText(property);
    return property.type != 0 && type <= ColumnType::Numeric && property.data.size() >= needed;
}

bool isSoundName(const base::Text& name) {
    return base::fromUtf8(base::toUtf8(name)) == name;
}

/// Leaves out what a reader could not make sense of. @return how many properties are gone
std::size_t removeUnsound(PropertyBlob& blob) {
    std::size_t removed =
        std::erase_if(blob.owners, [](const PropertyOwner& owner) { return !isSoundName(owner.name); });
    for (PropertyOwner& owner : blob.owners)
        removed += std::erase_if(owner.properties, [](const Property& property) {
            return !isSound(property) || !isSoundName(property.name);
        });
    removed += blob.unknownChunks.size();
    blob.unknownChunks.clear();
    blob.names.clear();  // those in use are added again
    return removed;
}

void readProperties(const NamedValues& values, SalvagedObject& object) {
    const auto bytes = values.value<base::Bytes>(u"LvProp");
    if (!bytes && !values.isLost(u"LvProp")) object.properties.emplace();
    if (!bytes) return;
    try {
        object.properties = PropertyBlob::read(*bytes, object.row);
        object.lostProperties = removeUnsound(*object.properties);
    } catch (const base::RuntimeError&) {
        object.properties.reset();  // reported with the object
    }
}

}  // namespace

DamagedDefinition systemDefinition(DamagedFile& file, PageNumber page) {
    const TableDesign design = systemTableDesigns()[page - kFirstSystemTable];
    if (page < file.pageCount()) {
        auto found = readDamagedDefinition(file, page);
        if (found && found->isWhole() && hasColumnsOf(found->definition, design)) return *std::move(found);
    }
    DamagedDefinition made{makeDefinition(design), {u"Der Bauplan ist beschädigt; er ist in allen Dateien gleich"}};
    made.definition.page = page;
    made.definition.chain = {page};
    made.definition.indexes.clear();
    made.definition.logicalIndexes.clear();
    return made;
}

std::vector<SalvagedObject> readObjects(const SalvagedTable& catalog, const SalvagedTable::Report& report) {
    std::vector<SalvagedObject> objects;
    catalog.eachRow(
        [&](RowPointer place, DamagedRow& row) {
            const NamedValues values(catalog.definition(), row);
            const auto id = values.number(u"Id");
            if (!row.lost.empty() || !id) report(place, u"Der Eintrag eines Objekts ist nicht ganz lesbar");
            if (!id) return;
            SalvagedObject object;
            object.id = *id;
            object.name = values.value<base::Text>(u"Name");
            object.type = values.value<std::int16_t>(u"Type");
            object.flags = values.number(u"Flags").value_or(0);
            object.row = place;
            object.parentId = values.number(u"ParentId").value_or(0);
            object.isWhole = row.lost.empty();
            readProperties(values, object);
            if (object.type != CatalogEntry::kLocalTable) object.values = values.inOrderOf(systemTableDesigns()[0]);
            objects.push_back(std::move(object));
        },
        report);
    return objects;
}

std::vector<SalvagedRelationship> readRelationships(const SalvagedTable& table, const SalvagedTable::Report& report) {
    std::vector<SalvagedRelationship> pairs;
    table.eachRow(
        [&](RowPointer place, DamagedRow& row) {
            if (!row.lost.empty()) {
                report(place, u"Der Eintrag einer Beziehung ist nicht ganz lesbar");
                return;
            }
            const NamedValues values(table.definition(), row);
            pairs.push_back({values.text(u"szRelationship"), values.number(u"grbit").value_or(0),
                             values.number(u"icolumn").value_or(0), values.number(u"ccolumn").value_or(0),
                             values.text(u"szObject"), values.text(u"szColumn"), values.text(u"szReferencedObject"),
                             values.text(u"szReferencedColumn")});
        },
        report);
    return pairs;
}

std::vector<std::vector<base::Value>> readWholeRows(const SalvagedTable& table, PageNumber page) {
    std::vector<std::vector<base::Value>> rows;
    const TableDesign design = systemTableDesigns()[page - kFirstSystemTable];
    table.eachRow([&](RowPointer, DamagedRow& row) {
        if (row.lost.empty()) rows.push_back(NamedValues(table.definition(), row).inOrderOf(design));
    });
    return rows;
}

std::set<std::uint32_t> readObjectsWithRights(const SalvagedTable& table) {
    std::set<std::uint32_t> ids;
    table.eachRow([&](RowPointer, DamagedRow& row) {
        if (const auto id = NamedValues(table.definition(), row).number(u"ObjectId")) ids.insert(*id);
    });
    return ids;
}

}  // namespace jet
