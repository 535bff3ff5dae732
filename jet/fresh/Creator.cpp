#include "jet/fresh/Creator.h"

#include <utility>

#include "jet/Errors.h"
#include "jet/page/Header.h"
#include "jet/table/Catalog.h"
#include "jet/table/PropertyBlob.h"

namespace jet {
namespace {

constexpr std::size_t kObjects = 0;
constexpr std::size_t kAccessRights = 1;
constexpr std::uint32_t kAllRights = 0xFFFFF;

Property yesOrNo(base::TextView name, bool value) {
    Property property;
    property.name = name;
    property.type = static_cast<std::uint8_t>(ColumnType::Boolean);
    property.data = {static_cast<std::uint8_t>(value)};
    return property;
}

/// The properties of the columns that go beyond their types.
PropertyBlob propertiesOf(const TableDesign& design) {
    PropertyBlob blob;
    for (const ColumnDesign& column : design.columns) {
        PropertyOwner owner;
        owner.name = column.name;
        owner.properties.push_back(yesOrNo(u"Required", column.isRequired));
        if (column.type == ColumnType::Text || column.type == ColumnType::Memo) {
            owner.properties.push_back(yesOrNo(u"AllowZeroLength", column.allowsZeroLength));
            owner.properties.push_back(yesOrNo(u"UnicodeCompression", column.compresses));
        }
        blob.owners.push_back(std::move(owner));
    }
    return blob;
}

Header headerWith(base::Text password, const CreationStamp& stamp) {
    if (password.size() > kMaxPasswordUnits || password.find(u'\0') != base::Text::npos) {
        throw failure(u"Ein Datenbankkennwort hat höchstens 20 Zeichen.");
    }
    Header header = Header::fresh(stamp.date);
    header.password = std::move(password);
    return header;
}

TableDefinition definitionAt(PageNumber page, const TableDesign& design) {
    TableDefinition definition = makeDefinition(design);
    definition.page = page;
    return definition;
}

}  // namespace

Creator::Creator(PageIo& io, base::Text password, CreationStamp stamp)
    : stamp_(stamp), file_(io, headerWith(std::move(password), stamp)) {
    PageNumber page = CatalogEntry::kDefinitionOfCatalog;
    for (const TableDesign& design : systemTableDesigns())
        systemTables_.push_back(file_.addTable(design.name, definitionAt(page++, design)));
    for (const auto& row : firstObjectRows(stamp_))
        systemTables_[kObjects]->addRow(row);
    for (const auto& row : firstAccessRows(stamp_))
        systemTables_[kAccessRights]->addRow(row);
}

void Creator::addTable(const TableDesign& design, const RowFeed& nextRow) {
    const PageNumber definitionPage = file_.reserveDefinition();
    file_.startMapPage();
    const auto table = file_.addTable(design.name, definitionAt(definitionPage, design));
    std::vector<base::Value> row;
    while (nextRow(row))
        table->addRow(row);
    table->finish();
    addObject(design, definitionPage);
}

void Creator::addObject(const TableDesign& design, PageNumber definitionPage) {
    systemTables_[kObjects]->addRow(objectRow(definitionPage, CatalogEntry::kTablesContainer, design.name,
                                              CatalogEntry::kLocalTable, 0, BuiltInAccount::Admin, stamp_,
                                              propertiesOf(design).encode()));
    for (const BuiltInAccount account : {BuiltInAccount::Admin, BuiltInAccount::Users})
        systemTables_[kAccessRights]->addRow(accessRow(definitionPage, account, kAllRights, false, stamp_));
}

void Creator::finish() {
    for (const auto& table : systemTables_)
        table->finish();
    file_.finish();
}

}  // namespace jet
