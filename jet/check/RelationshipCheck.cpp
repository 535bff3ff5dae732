#include "jet/check/RelationshipCheck.h"

#include <algorithm>
#include <map>

#include "jet/check/SystemRows.h"

namespace jet {
namespace {

using ColumnPairs = std::vector<std::pair<base::Bytes, base::Bytes>>;  ///< sort keys: referencing, referenced

struct Described {
    Relationship relationship;
    std::vector<std::uint32_t> places;
    std::uint32_t pairCount = 0;
    RowPointer row;
};

class RelationshipCheck {
public:
    RelationshipCheck(const CheckContext& context, const std::vector<CatalogEntry>& entries,
                      const std::vector<CheckedTable>& tables)
        : context_(context), findings_(context.findings), entries_(entries), tables_(tables) {}

    void run() {
        readRows();
        for (const CheckedTable& table : tables_) {
            for (const LogicalIndex& index : table.definition.logicalIndexes) {
                if (index.kind == LogicalIndex::Kind::ForeignKey) checkIndex(table, index);
            }
        }
        for (const auto& [name, described] : described_)
            checkDescribed(described);
    }

private:
    void readRows() {
        for (const CatalogEntry& entry : entries_) {
            if (!entry.isLocalTable() || entry.name != u"MSysRelationships") continue;
            eachSystemRow(context_.source, entry, [&](const SystemRow& row) { readRow(row); });
        }
    }

    void readRow(const SystemRow& row) {
        const base::Text name = row.text(u"szRelationship").value_or(base::Text{});
        Described& found = described_[sortKey(name)];
        Relationship& relationship = found.relationship;
        relationship.name = name;
        relationship.flags = row.number(u"grbit").value_or(0);
        relationship.table = row.text(u"szObject").value_or(base::Text{});
        relationship.referencedTable = row.text(u"szReferencedObject").value_or(base::Text{});
        relationship.columns.push_back(row.text(u"szColumn").value_or(base::Text{}));
        relationship.referencedColumns.push_back(row.text(u"szReferencedColumn").value_or(base::Text{}));
        found.places.push_back(row.number(u"icolumn").value_or(0));
        found.pairCount = row.number(u"ccolumn").value_or(0);
        found.row = row.pointer();
    }

    const CheckedTable* tableOn(PageNumber page) const {
        const auto found = std::find_if(tables_.begin(), tables_.end(),
                                        [&](const CheckedTable& table) { return table.definition.page == page; });
        return found == tables_.end() ? nullptr : &*found;
    }

    const CheckedTable* tableNamed(base::TextView name) const {
        const auto found = std::find_if(tables_.begin(), tables_.end(),
                                        [&](const CheckedTable& table) { return textsAreEqual(table.name, name); });
        return found == tables_.end() ? nullptr : &*found;
    }

    static const LogicalIndex* partnerOf(const CheckedTable& table, const LogicalIndex& index) {
        const auto& all = table.definition.logicalIndexes;
        const auto found = std::find_if(all.begin(), all.end(), [&](const LogicalIndex& each) {
            return each.number == index.partnerNumber && each.kind == LogicalIndex::Kind::ForeignKey;
        });
        return found == all.end() ? nullptr : &*found;
    }

    /// Two records that form a pair must name each other and agree.
    void checkIndex(const CheckedTable& table, const LogicalIndex& index) {
        const Place at = Place::ofTable(table.name).withIndex(index.name).onPage(table.definition.page);
        const CheckedTable* other = tableOn(index.partnerTable);
        const LogicalIndex* partner = other == nullptr ? nullptr : partnerOf(*other, index);
        if (partner == nullptr || partner->partnerNumber != index.number ||
            partner->partnerTable != table.definition.page) {
            findings_.fault(at, u"Der Index einer Beziehung hat auf Seite " + base::decimal(index.partnerTable) +
                                    u" kein Gegenstück mit der Nummer " + base::decimal(index.partnerNumber) + u".");
            return;
        }
        if (partner->side == index.side || partner->updateRule != index.updateRule ||
            partner->deleteRule != index.deleteRule) {
            findings_.fault(at, u"Der Index einer Beziehung und sein Gegenstück widersprechen sich.");
        }
        if (columnsOf(table, index).size() != columnsOf(*other, *partner).size())
            findings_.fault(at, u"Der Index einer Beziehung hat eine andere Zahl von Spalten als sein Gegenstück.");
        if (index.side == LogicalIndex::Side::Referencing && !described_.contains(sortKey(index.name)))
            findings_.fault(at, u"Die Beziehung steht nicht in MSysRelationships.");
    }

    static std::vector<base::Bytes> columnsOf(const CheckedTable& table, const LogicalIndex& index) {
        std::vector<base::Bytes> names;
        for (const IndexColumn& part : table.definition.indexes[index.dataBlock].columns)
            names.push_back(sortKey(table.definition.columnOf(part).name));
        return names;
    }

    void checkDescribed(const Described& described) {
        const Relationship& relationship = described.relationship;
        const Place at = Place::ofTable(u"MSysRelationships").atRow(described.row);
        const base::Text subject = u"Die Beziehung '" + relationship.name + u"' ";
        checkPlaces(described, at, subject);
        const bool isListed = std::any_of(entries_.begin(), entries_.end(), [&](const CatalogEntry& entry) {
            return entry.type == CatalogEntry::kRelationship && textsAreEqual(entry.name, relationship.name);
        });
        if (!isListed) findings_.fault(at, subject + u"ist in MSysObjects nicht verzeichnet.");
        if ((relationship.flags & Relationship::kNotEnforced) != 0) return;
        const CheckedTable* table = tableNamed(relationship.table);
        const CheckedTable* referenced = tableNamed(relationship.referencedTable);
        if (table == nullptr || referenced == nullptr) {
            // A relationship is enforced by the definitions of its tables. The definition of a linked table is in
            // another file.
            findings_.note(at, subject + u"nennt eine Tabelle, die nicht in dieser Datei liegt.");
            return;
        }
        const LogicalIndex* index = referencingIndex(*table, relationship.name);
        if (index == nullptr || index->partnerTable != referenced->definition.page) {
            findings_.fault(at,
                            subject + u"wird von keinem Index der Tabelle '" + relationship.table + u"' gesichert.");
            return;
        }
        checkColumns(relationship, *table, *index, *referenced, at, subject);
        checkRules(relationship, *index, at, subject);
    }

    void checkPlaces(const Described& described, const Place& at, const base::Text& subject) {
        std::vector<std::uint32_t> places = described.places;
        std::sort(places.begin(), places.end());
        bool isWhole = described.pairCount == places.size();
        for (std::size_t i = 0; i < places.size(); ++i)
            isWhole = isWhole && places[i] == i;
        if (isWhole) return;
        findings_.fault(at, subject + u"soll " + base::decimal(described.pairCount) + u" Spaltenpaare haben, es sind " +
                                countText(places.size()) + u", oder sie sind falsch gezählt.");
    }

    static const LogicalIndex* referencingIndex(const CheckedTable& table, base::TextView name) {
        const auto& all = table.definition.logicalIndexes;
        const auto found = std::find_if(all.begin(), all.end(), [&](const LogicalIndex& each) {
            return each.kind == LogicalIndex::Kind::ForeignKey && each.side == LogicalIndex::Side::Referencing &&
                   textsAreEqual(each.name, name);
        });
        return found == all.end() ? nullptr : &*found;
    }

    void checkColumns(const Relationship& relationship, const CheckedTable& table, const LogicalIndex& index,
                      const CheckedTable& referenced, const Place& at, const base::Text& subject) {
        const LogicalIndex* partner = partnerOf(referenced, index);
        if (partner == nullptr) return;  // reported when the index is checked
        const auto columns = columnsOf(table, index);
        const auto referencedColumns = columnsOf(referenced, *partner);
        if (columns.size() != referencedColumns.size()) return;
        ColumnPairs enforced;
        for (std::size_t i = 0; i < columns.size(); ++i)
            enforced.emplace_back(columns[i], referencedColumns[i]);
        ColumnPairs wanted;
        for (std::size_t i = 0; i < relationship.columns.size(); ++i)
            wanted.emplace_back(sortKey(relationship.columns[i]), sortKey(relationship.referencedColumns[i]));
        std::sort(enforced.begin(), enforced.end());
        std::sort(wanted.begin(), wanted.end());
        if (enforced != wanted) findings_.fault(at, subject + u"hat andere Spalten als ihre Indizes.");
    }

    void checkRules(const Relationship& relationship, const LogicalIndex& index, const Place& at,
                    const base::Text& subject) {
        const auto has = [&](std::uint32_t flag) { return (relationship.flags & flag) != 0; };
        const int updateRule = has(Relationship::kCascadeUpdates) ? 1 : 0;
        const int deleteRule =
            (has(Relationship::kCascadeDeletes) ? 1 : 0) + (has(Relationship::kSetNullOnDelete) ? 2 : 0);
        if (index.updateRule != updateRule || index.deleteRule != deleteRule)
            findings_.fault(at, subject + u"hat andere Regeln für Ändern oder Löschen als ihre Indizes.");
    }

    CheckContext context_;
    Findings& findings_;
    const std::vector<CatalogEntry>& entries_;
    const std::vector<CheckedTable>& tables_;
    std::map<base::Bytes, Described> described_;  ///< by the name's sort key
};

}  // namespace

void checkRelationships(const CheckContext& context, const std::vector<CatalogEntry>& entries,
                        const std::vector<CheckedTable>& tables) {
    RelationshipCheck(context, entries, tables).run();
}

}  // namespace jet
