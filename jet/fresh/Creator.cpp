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

}  // namespace

Creator::Creator(PageIo& io, base::Text password, CreationStamp stamp)
    : io_(io), password_(std::move(password)), stamp_(stamp), pages_(io), maps_(pages_) {
    if (password_.size() > kMaxPasswordUnits || password_.find(u'\0') != base::Text::npos) {
        throw failure(u"Ein Datenbankkennwort hat höchstens 20 Zeichen.");
    }
    const auto designs = systemTableDesigns();
    pages_.allocate();  // header
    pages_.allocate();  // global map
    for (std::size_t i = 0; i < designs.size(); ++i)
        pages_.allocate();
    const Header header = Header::fresh(stamp_.date);
    for (std::size_t i = 0; i < designs.size(); ++i)
        systemTables_.push_back(std::make_unique<FreshTable>(pages_, maps_, designs[i], header.systemTables[i]));
    for (const auto& row : firstObjectRows(stamp_))
        systemTables_[kObjects]->addRow(row);
    for (const auto& row : firstAccessRows(stamp_))
        systemTables_[kAccessRights]->addRow(row);
}

void Creator::addTable(const TableDesign& design, const RowFeed& nextRow) {
    const PageNumber definitionPage = pages_.allocate();
    maps_.startPage();
    FreshTable table(pages_, maps_, design, definitionPage);
    std::vector<base::Value> row;
    while (nextRow(row))
        table.addRow(row);
    table.finish();
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
    maps_.finish();
    writeGlobalMap(pages_);
    writeHeader();
    io_.sync();
}

void Creator::writeHeader() {
    Header header = Header::fresh(stamp_.date);
    header.password = password_;
    base::Bytes page(kPageSize);
    header.write(page);
    pages_.write(0, page);
}

}  // namespace jet
