#pragma once

#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include "jet/salvage/TablePlan.h"

namespace jet {

/// A relationship of a damaged file. It is enforced again if all rows that were read satisfy it; otherwise it stays as
/// one that is not enforced.
struct PlannedRelationship {
    base::Text name;
    std::uint32_t flags = 0;  ///< as in MSysRelationships
    std::size_t table = 0;    ///< the referencing one, by its position in the plans
    std::size_t referenced = 0;
    std::vector<std::pair<std::uint16_t, std::uint16_t>> columns;  ///< new numbers: referencing, referenced

    bool isEnforced() const;
};

/// All relationships of a file, planned together with its tables: first their indexes, then, after the rows were
/// surveyed, the records that enforce them.
class RelationshipPlans {
public:
    /// @param plans  must outlive this
    RelationshipPlans(const Salvage& salvage, std::deque<TablePlan>& plans, SalvageReport& report);

    /// Takes the keys of a row of a table into account.
    void addRow(std::size_t table, const std::vector<base::Value>& values);

    /// After all rows: decides which relationships are enforced, and adds their records to the definitions.
    /// @param pages  of the definitions in the new file, in the order of the plans
    void settle(std::span<const PageNumber> pages);

    const std::vector<PlannedRelationship>& all() const { return all_; }

private:
    struct Keys {
        KeyHashes referenced;
        KeyHashes referencing;
        bool isWatched = false;     ///< may be enforced if the rows satisfy it
        bool isImpossible = false;  ///< some row has a value that the other column cannot hold
    };

    void addDescribed(const Salvage& salvage);
    void addEnforced();
    bool isUnderAnotherName(const PlannedRelationship& relationship, const TableDefinition& found) const;
    std::optional<PlannedRelationship> planned(PlannedRelationship relationship,
                                               const std::vector<std::pair<base::Text, base::Text>>& columns) const;
    void orderLikeIndex(PlannedRelationship& relationship) const;
    bool canBeEnforced(const PlannedRelationship& relationship) const;
    void addKey(const PlannedRelationship& relationship, const std::vector<base::Value>& values, bool isReferenced,
                Keys& keys) const;
    std::size_t planNamed(base::TextView name) const;
    std::size_t planOn(PageNumber page) const;
    void addRecords(const PlannedRelationship& relationship, std::span<const PageNumber> pages);

    std::deque<TablePlan>& plans_;
    SalvageReport& report_;
    std::vector<PlannedRelationship> all_;
    std::vector<Keys> keys_;  ///< of each relationship
};

}  // namespace jet
