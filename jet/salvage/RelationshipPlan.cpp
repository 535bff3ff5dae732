#include "jet/salvage/RelationshipPlan.h"

#include <algorithm>
#include <map>
#include <optional>

#include "jet/index/IndexKey.h"

namespace jet {
namespace {

constexpr std::uint32_t kNotEnforced = 0x2;
constexpr std::uint32_t kCascadeUpdates = 0x100;
constexpr std::uint32_t kCascadeDeletes = 0x1000;
constexpr std::uint32_t kSetNullOnDelete = 0x2000;
constexpr std::size_t kNone = SIZE_MAX;

using Side = LogicalIndex::Side;

std::vector<std::uint16_t> numbersOf(const IndexDefinition& index) {
    std::vector<std::uint16_t> numbers;
    for (const IndexColumn& part : index.columns)
        numbers.push_back(part.columnNumber);
    return numbers;
}

std::vector<std::uint16_t> numbersOf(const PlannedRelationship& relationship, Side side) {
    std::vector<std::uint16_t> numbers;
    for (const auto& [referencing, referenced] : relationship.columns)
        numbers.push_back(side == Side::Referencing ? referencing : referenced);
    return numbers;
}

/// @return kNone if the table has no index over exactly these columns in this order
std::size_t findIndex(const TableDefinition& definition, const std::vector<std::uint16_t>& numbers, bool mustBeUnique) {
    for (std::size_t i = 0; i < definition.indexes.size(); ++i) {
        const IndexDefinition& index = definition.indexes[i];
        if (numbersOf(index) == numbers && (index.isUnique() || !mustBeUnique)) return i;
    }
    return kNone;
}

bool isWholeNumber(ColumnType type) {
    return type == ColumnType::Byte || type == ColumnType::Integer || type == ColumnType::Long;
}

std::uint32_t nextNumber(const TableDefinition& definition) {
    std::uint32_t next = 0;
    for (const LogicalIndex& index : definition.logicalIndexes)
        next = std::max(next, index.number + 1);
    return next;
}

bool isNamed(const TableDefinition& definition, base::TextView name) {
    return std::ranges::any_of(definition.logicalIndexes,
                               [&](const LogicalIndex& each) { return textsAreEqual(each.name, name); });
}

/// The original engine names the referenced side ".rB", ".rC" and so on.
base::Text sideName(const TableDefinition& definition) {
    base::Text name = u".rB";
    while (isNamed(definition, name)) {
        if (name.back() == u'Z')
            name += u'A';
        else
            ++name.back();
    }
    return name;
}

LogicalIndex record(base::Text name, std::uint32_t number, std::size_t dataBlock, Side side, std::uint32_t flags) {
    LogicalIndex made;
    made.name = std::move(name);
    made.number = number;
    made.dataBlock = static_cast<std::uint32_t>(dataBlock);
    made.kind = LogicalIndex::Kind::ForeignKey;
    made.side = side;
    made.updateRule = (flags & kCascadeUpdates) != 0 ? 1 : 0;
    made.deleteRule = static_cast<std::uint8_t>(((flags & kCascadeDeletes) != 0 ? 1U : 0U) |
                                                ((flags & kSetNullOnDelete) != 0 ? 2U : 0U));
    return made;
}

}  // namespace

bool PlannedRelationship::isEnforced() const {
    return (flags & kNotEnforced) == 0;
}

RelationshipPlans::RelationshipPlans(const Salvage& salvage, std::deque<TablePlan>& plans, SalvageReport& report)
    : plans_(plans), report_(report) {
    addDescribed(salvage);
    addEnforced();
    keys_.resize(all_.size());
    for (std::size_t i = 0; i < all_.size(); ++i) {
        PlannedRelationship& relationship = all_[i];
        if (!relationship.isEnforced()) continue;
        orderLikeIndex(relationship);
        keys_[i].isWatched = canBeEnforced(relationship);
        std::vector<IndexColumn> columns;
        for (const std::uint16_t number : numbersOf(relationship, Side::Referencing))
            columns.push_back({number, true});
        TablePlan& plan = plans_[relationship.table];
        const bool isThere = findIndex(plan.definition(), numbersOf(relationship, Side::Referencing), false) != kNone;
        if (keys_[i].isWatched && !isThere && columns.size() <= kMaxIndexColumns) plan.addIndex(std::move(columns));
    }
}

/// The relationships of MSysRelationships whose rows are all there.
void RelationshipPlans::addDescribed(const Salvage& salvage) {
    std::map<base::Bytes, std::vector<const SalvagedRelationship*>> rows;
    for (const SalvagedRelationship& pair : salvage.relationships())
        rows[sortKey(pair.name)].push_back(&pair);
    for (auto& [key, pairs] : rows) {
        std::ranges::sort(pairs, {}, &SalvagedRelationship::place);
        const SalvagedRelationship& first = *pairs.front();
        const std::size_t table = planNamed(first.table);
        const std::size_t referenced = planNamed(first.referencedTable);
        std::vector<std::pair<base::Text, base::Text>> columns;
        bool isWhole = pairs.size() == first.pairCount && table != kNone && referenced != kNone;
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            isWhole = isWhole && pairs[i]->place == i;
            columns.emplace_back(pairs[i]->column, pairs[i]->referencedColumn);
        }
        if (!isWhole) continue;
        if (auto relationship = planned({first.name, first.flags, table, referenced, {}}, columns))
            all_.push_back(std::move(*relationship));
    }
}

/// Whether the relationship is planned already under another name, because one of its two names is damaged.
/// @param found  the definition of its referencing table
bool RelationshipPlans::isUnderAnotherName(const PlannedRelationship& relationship,
                                           const TableDefinition& found) const {
    return std::ranges::any_of(all_, [&](const PlannedRelationship& each) {
        return each.isEnforced() && each.table == relationship.table && each.referenced == relationship.referenced &&
               std::ranges::is_permutation(each.columns, relationship.columns) && !isNamed(found, each.name);
    });
}

/// The relationships that only the definitions of their tables know.
void RelationshipPlans::addEnforced() {
    for (std::size_t table = 0; table < plans_.size(); ++table) {
        const TableDefinition& found = plans_[table].table().rows.definition();
        for (const LogicalIndex& index : found.logicalIndexes) {
            if (index.kind != LogicalIndex::Kind::ForeignKey || index.side != Side::Referencing) continue;
            const bool isKnown = std::ranges::any_of(
                all_, [&](const PlannedRelationship& each) { return textsAreEqual(each.name, index.name); });
            const std::size_t referenced = planOn(index.partnerTable);
            if (isKnown || referenced == kNone) continue;
            const TableDefinition& other = plans_[referenced].table().rows.definition();
            const auto partner = std::ranges::find_if(other.logicalIndexes, [&](const LogicalIndex& each) {
                return each.kind == LogicalIndex::Kind::ForeignKey && each.side == Side::Referenced &&
                       each.number == index.partnerNumber && each.partnerTable == found.page;
            });
            if (partner == other.logicalIndexes.end()) continue;
            const auto& own = found.indexes[index.dataBlock].columns;
            const auto& others = other.indexes[partner->dataBlock].columns;
            std::vector<std::pair<base::Text, base::Text>> columns;
            for (std::size_t i = 0; i < std::min(own.size(), others.size()); ++i)
                columns.emplace_back(found.columnOf(own[i]).name, other.columnOf(others[i]).name);
            const std::uint32_t flags = (index.updateRule == 1 ? kCascadeUpdates : 0U) |
                                        ((index.deleteRule & 1U) != 0 ? kCascadeDeletes : 0U) |
                                        ((index.deleteRule & 2U) != 0 ? kSetNullOnDelete : 0U);
            if (own.size() != others.size()) continue;
            auto relationship = planned({index.name, flags, table, referenced, {}}, columns);
            if (relationship && !isUnderAnotherName(*relationship, found)) all_.push_back(std::move(*relationship));
        }
    }
}

/// Adds the numbers of the columns.
/// @return nothing if a column or the name cannot be in the new file
std::optional<PlannedRelationship> RelationshipPlans::planned(
    PlannedRelationship relationship, const std::vector<std::pair<base::Text, base::Text>>& columns) const {
    for (const auto& [name, referencedName] : columns) {
        const Column* own = plans_[relationship.table].definition().column(name);
        const Column* other = plans_[relationship.referenced].definition().column(referencedName);
        if (own == nullptr || other == nullptr) return std::nullopt;
        relationship.columns.emplace_back(own->number, other->number);
    }
    if (relationship.columns.empty() || !sortKeyIsCertain(relationship.name)) return std::nullopt;
    return relationship;
}

std::size_t RelationshipPlans::planNamed(base::TextView name) const {
    for (std::size_t i = 0; i < plans_.size(); ++i) {
        if (textsAreEqual(plans_[i].name(), name)) return i;
    }
    return kNone;
}

std::size_t RelationshipPlans::planOn(PageNumber page) const {
    for (std::size_t i = 0; i < plans_.size(); ++i) {
        if (plans_[i].table().rows.definition().page == page) return i;
    }
    return kNone;
}

/// The pairs in the order in which a unique index has the referenced columns.
void RelationshipPlans::orderLikeIndex(PlannedRelationship& relationship) const {
    for (const IndexDefinition& index : plans_[relationship.referenced].definition().indexes) {
        const std::vector<std::uint16_t> numbers = numbersOf(index);
        const auto place = [&](std::uint16_t number) { return std::ranges::find(numbers, number); };
        const bool isOver = index.isUnique() && numbers.size() == relationship.columns.size() &&
                            std::ranges::all_of(relationship.columns,
                                                [&](const auto& pair) { return place(pair.second) != numbers.end(); });
        if (!isOver) continue;
        std::ranges::sort(relationship.columns, {}, [&](const auto& pair) { return place(pair.second); });
        return;
    }
}

bool RelationshipPlans::canBeEnforced(const PlannedRelationship& relationship) const {
    const TableDefinition& own = plans_[relationship.table].definition();
    const TableDefinition& other = plans_[relationship.referenced].definition();
    if (findIndex(other, numbersOf(relationship, Side::Referenced), true) == kNone) return false;
    return std::ranges::all_of(relationship.columns, [&](const auto& pair) {
        const ColumnType a = own.columnNumbered(pair.first)->type;
        const ColumnType b = other.columnNumbered(pair.second)->type;
        return (a == b && a != ColumnType::Ole && a != ColumnType::Block) || (isWholeNumber(a) && isWholeNumber(b));
    });
}

void RelationshipPlans::addRow(std::size_t table, const std::vector<base::Value>& values) {
    for (std::size_t i = 0; i < all_.size(); ++i) {
        if (!keys_[i].isWatched) continue;
        if (all_[i].table == table) addKey(all_[i], values, false, keys_[i]);
        if (all_[i].referenced == table) addKey(all_[i], values, true, keys_[i]);
    }
}

/// The key that the referenced index gives the values. A key with a null part refers to nothing.
void RelationshipPlans::addKey(const PlannedRelationship& relationship, const std::vector<base::Value>& values,
                               bool isReferenced, Keys& keys) const {
    base::Bytes key;
    for (const auto& [own, other] : relationship.columns) {
        const base::Value& value = values[isReferenced ? other : own];
        if (base::isNull(value)) return;
        const auto part = keyPartFor(*plans_[relationship.referenced].definition().columnNumbered(other), value, true);
        keys.isImpossible = keys.isImpossible || !part;
        if (part) key.insert(key.end(), part->begin(), part->end());
    }
    (isReferenced ? keys.referenced : keys.referencing).add(key);
}

void RelationshipPlans::settle(std::span<const PageNumber> pages) {
    for (std::size_t i = 0; i < all_.size(); ++i) {
        PlannedRelationship& relationship = all_[i];
        Keys& keys = keys_[i];
        if (!relationship.isEnforced()) continue;
        keys.referenced.sort();
        keys.referencing.sort();
        const TableDefinition& own = plans_[relationship.table].definition();
        const bool isPossible = canBeEnforced(relationship) && !isNamed(own, relationship.name) &&
                                findIndex(own, numbersOf(relationship, Side::Referencing), false) != kNone;
        if (isPossible && !keys.isImpossible && keys.referencing.areAllIn(keys.referenced)) {
            addRecords(relationship, pages);
            continue;
        }
        relationship.flags |= kNotEnforced;
        report_.file.lose(u"Die Beziehung '" + relationship.name + u"' zwischen '" + plans_[relationship.table].name() +
                          u"' und '" + plans_[relationship.referenced].name() +
                          (isPossible ? u"' gilt nicht mehr: Datensätze verweisen auf fehlende."
                                      : u"' gilt nicht mehr: Ein Index, den sie braucht, fehlt."));
    }
    for (TablePlan& plan : plans_)
        plan.removeUnnamedIndexes();
}

void RelationshipPlans::addRecords(const PlannedRelationship& relationship, std::span<const PageNumber> pages) {
    TableDefinition& own = plans_[relationship.table].definition();
    TableDefinition& other = plans_[relationship.referenced].definition();
    LogicalIndex referencing =
        record(relationship.name, nextNumber(own), findIndex(own, numbersOf(relationship, Side::Referencing), false),
               Side::Referencing, relationship.flags);
    referencing.partnerTable = pages[relationship.referenced];
    own.logicalIndexes.push_back(referencing);
    LogicalIndex referenced =
        record(sideName(other), nextNumber(other), findIndex(other, numbersOf(relationship, Side::Referenced), true),
               Side::Referenced, relationship.flags);
    referenced.partnerTable = pages[relationship.table];
    referenced.partnerNumber = referencing.number;
    // In a table that refers to itself both are in one list.
    std::ranges::find(own.logicalIndexes, referencing.number, &LogicalIndex::number)->partnerNumber = referenced.number;
    other.logicalIndexes.push_back(std::move(referenced));
}

}  // namespace jet
