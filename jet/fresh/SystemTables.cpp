#include "jet/fresh/SystemTables.h"

#include <bit>

#include "jet/table/Catalog.h"

namespace jet {
namespace {

using base::Value;

constexpr std::uint32_t kRoot = 0x0F000000;
constexpr std::uint32_t kTables = CatalogEntry::kTablesContainer;
constexpr std::uint32_t kDatabases = 0x0F000002;
constexpr std::uint32_t kRelationships = CatalogEntry::kRelationshipsContainer;
constexpr std::uint32_t kDatabase = 0x10000000;
constexpr std::uint32_t kSystemObject = 0x80000000;
constexpr std::int16_t kDatabaseType = 2;
constexpr std::int16_t kContainerType = 3;
constexpr std::uint16_t kLongestText = 255;
constexpr std::uint16_t kLongestBinary = 510;
/// A flag of the columns that hold the number of an account.
constexpr std::uint8_t kAccountColumn = 0x20;
constexpr std::uint8_t kUniqueKey = IndexDefinition::kUnique;

ColumnDesign plain(base::TextView name, ColumnType type) {
    return {base::Text(name), type};
}

ColumnDesign text(base::TextView name) {
    return {base::Text(name), ColumnType::Text, kLongestText};
}

ColumnDesign binary(base::TextView name, std::uint8_t furtherFlags = 0) {
    ColumnDesign column{base::Text(name), ColumnType::Binary, kLongestBinary};
    column.furtherFlags = furtherFlags;
    return column;
}

TableDesign objects() {
    TableDesign table{u"MSysObjects", {}, {}, true};
    table.columns = {plain(u"Id", ColumnType::Long),
                     plain(u"ParentId", ColumnType::Long),
                     text(u"Name"),
                     plain(u"Type", ColumnType::Integer),
                     plain(u"DateCreate", ColumnType::DateTime),
                     plain(u"DateUpdate", ColumnType::DateTime),
                     binary(u"Owner", kAccountColumn),
                     plain(u"Flags", ColumnType::Long),
                     plain(u"Database", ColumnType::Memo),
                     plain(u"Connect", ColumnType::Memo),
                     text(u"ForeignName"),
                     binary(u"RmtInfoShort"),
                     plain(u"RmtInfoLong", ColumnType::Ole),
                     plain(u"Lv", ColumnType::Ole),
                     plain(u"LvProp", ColumnType::Ole),
                     plain(u"LvModule", ColumnType::Ole),
                     plain(u"LvExtra", ColumnType::Ole)};
    table.indexes = {{u"ParentIdName", {{u"ParentId"}, {u"Name"}}, false, kUniqueKey},
                     {u"Id", {{u"Id"}}, true, kUniqueKey}};
    return table;
}

TableDesign accessRights() {
    TableDesign table{u"MSysACEs", {}, {}, true};
    table.columns = {plain(u"ObjectId", ColumnType::Long), binary(u"SID", kAccountColumn),
                     plain(u"ACM", ColumnType::Long), plain(u"FInheritable", ColumnType::Boolean)};
    table.indexes = {{u"ObjectId", {{u"ObjectId"}}, false, IndexDefinition::kRequired}};
    return table;
}

TableDesign queries() {
    TableDesign table{u"MSysQueries", {}, {}, true};
    table.columns = {plain(u"ObjectId", ColumnType::Long),
                     plain(u"Attribute", ColumnType::Byte),
                     binary(u"Order"),
                     text(u"Name1"),
                     text(u"Name2"),
                     plain(u"Expression", ColumnType::Memo),
                     plain(u"Flag", ColumnType::Integer),
                     plain(u"LvExtra", ColumnType::Long)};
    table.indexes = {{u"ObjectIdAttribute", {{u"ObjectId"}, {u"Attribute"}, {u"Order"}}, true, kUniqueKey}};
    return table;
}

TableDesign relationships() {
    TableDesign table{u"MSysRelationships", {}, {}, true};
    table.columns = {text(u"szRelationship"),
                     plain(u"grbit", ColumnType::Long),
                     plain(u"ccolumn", ColumnType::Long),
                     plain(u"icolumn", ColumnType::Long),
                     text(u"szObject"),
                     text(u"szColumn"),
                     text(u"szReferencedObject"),
                     text(u"szReferencedColumn")};
    for (const base::TextView name : {u"szRelationship", u"szObject", u"szReferencedObject"}) {
        table.indexes.push_back({base::Text(name), {{base::Text(name)}}, false, IndexDefinition::kIgnoreNulls});
    }
    return table;
}

}  // namespace

std::array<TableDesign, 4> systemTableDesigns() {
    return {objects(), accessRights(), queries(), relationships()};
}

CreationStamp knownCreationStamp() {
    // 2017-04-25 11:33:57
    return {base::Date{std::bit_cast<double>(std::uint64_t{0x40E4EC4F6BD4AF81})}, {0x04, 0xE9}};
}

base::Bytes accountId(BuiltInAccount account, const CreationStamp& stamp) {
    constexpr std::array<std::array<std::uint8_t, 2>, 4> kIds = {{{3, 1}, {2, 1}, {2, 3}, {2, 4}}};
    const auto& id = kIds[static_cast<std::size_t>(account)];
    return {static_cast<std::uint8_t>(id[0] ^ stamp.accountMask[0]),
            static_cast<std::uint8_t>(id[1] ^ stamp.accountMask[1])};
}

std::vector<Value> objectRow(std::uint32_t id, std::uint32_t parentId, base::TextView name, std::int16_t type,
                             std::uint32_t flags, BuiltInAccount owner, const CreationStamp& stamp,
                             base::Bytes properties) {
    constexpr std::size_t kLvProp = 14;
    std::vector<Value> row(17);
    row[0] = static_cast<std::int32_t>(id);
    row[1] = static_cast<std::int32_t>(parentId);
    row[2] = base::Text(name);
    row[3] = type;
    row[4] = stamp.date;
    row[5] = stamp.date;
    row[6] = accountId(owner, stamp);
    row[7] = static_cast<std::int32_t>(flags);
    if (!properties.empty()) row[kLvProp] = std::move(properties);
    return row;
}

std::vector<Value> accessRow(std::uint32_t objectId, BuiltInAccount account, std::uint32_t rights, bool isInherited,
                             const CreationStamp& stamp) {
    return {static_cast<std::int32_t>(objectId), accountId(account, stamp), static_cast<std::int32_t>(rights),
            isInherited};
}

std::vector<std::vector<Value>> firstObjectRows(const CreationStamp& stamp) {
    std::vector<std::vector<Value>> rows;
    const auto add = [&](std::uint32_t id, std::uint32_t parent, base::TextView name, std::int16_t type,
                         BuiltInAccount owner) {
        rows.push_back(objectRow(id, parent, name, type, kSystemObject, owner, stamp));
    };
    add(kTables, kRoot, u"Tables", kContainerType, BuiltInAccount::Engine);
    add(kDatabases, kRoot, u"Databases", kContainerType, BuiltInAccount::Engine);
    add(kRelationships, kRoot, u"Relationships", kContainerType, BuiltInAccount::Engine);
    add(kDatabase, kDatabases, u"MSysDb", kDatabaseType, BuiltInAccount::Admin);
    std::uint32_t page = 2;
    for (const TableDesign& table : systemTableDesigns())
        add(page++, kTables, table.name, CatalogEntry::kLocalTable, BuiltInAccount::Engine);
    return rows;
}

std::vector<std::vector<Value>> firstAccessRows(const CreationStamp& stamp) {
    std::vector<std::vector<Value>> rows;
    const auto add = [&](std::uint32_t object, BuiltInAccount account, std::uint32_t rights, bool isInherited = false) {
        rows.push_back(accessRow(object, account, rights, isInherited, stamp));
    };
    using enum BuiltInAccount;
    add(2, Admin, 0x60000);
    add(3, Admin, 0x60000);
    add(4, Admin, 0x60000);
    add(5, Admin, 0xE0000);
    add(kTables, Creator, 0xF00FE, true);
    add(kTables, Admin, 0x60001);
    add(kRelationships, Creator, 0xF00FE, true);
    add(kRelationships, Admin, 0x60001);
    add(kDatabases, Admin, 0x60000);
    add(kDatabase, Admin, 0x6000E);
    add(kDatabase, Users, 0xE);
    add(4, Users, 0x14);
    add(5, Users, 0x14);
    add(2, Users, 0x14);
    add(kTables, Users, 0xFFEFF, true);
    add(kRelationships, Users, 0xFFFFF, true);
    return rows;
}

}  // namespace jet
