#pragma once

#include <optional>
#include <vector>

#include "base/Value.h"
#include "jet/change/RowDraft.h"
#include "jet/change/TableSet.h"
#include "jet/change/WritableTable.h"
#include "jet/expression/RowValues.h"

namespace jet {

/// The rules of enforced relationships. A relationship is recorded in the definitions of both tables, as an index of
/// the kind foreign key; see docs/file-format.md, "Table definitions".
///
/// If a row refers to another one, that row must exist, unless a part of the key is null. If other rows refer to a row,
/// its key cannot change, and it can be deleted only if the relationship deletes them, too. If a relationship requires
/// other changes in other rows (new keys, nulls), the change is refused.
class Relationships {
public:
    /// @param tables  must outlive this
    explicit Relationships(TableSet& tables) : tables_(tables) {}

    /// Checks before there is a row that the rows to which a new row may refer can be looked up.
    /// @throws RuntimeError if they cannot
    void requireUsable(WritableTable& table);

    struct TableRemoval {
        WritableTable* table;
        WritableTable::Removal removal;
    };

    /// Checks a row that will be added or changed, for both sides of its table's relationships.
    /// @throws RuntimeError if a relationship refuses it
    void check(WritableTable& table, RowDraft& draft);

    /// The row and all rows that must be deleted with it.
    /// @throws RuntimeError if another row refers to one of them
    std::vector<TableRemoval> removalsOf(WritableTable& table, RowPointer row);

private:
    struct Link {
        const IndexDefinition& ownIndex;
        WritableTable& partner;
        std::size_t partnerIndex;
    };
    struct Referrer {
        WritableTable* table;
        RowPointer row;
    };

    Link linkOf(WritableTable& table, const LogicalIndex& index);
    std::optional<base::Bytes> partnerKey(const WritableTable& table, const Link& link, const RowValues& row);
    std::vector<RowPointer> partnerRows(const WritableTable& table, const Link& link, const RowValues& row);
    void checkReference(WritableTable& table, const LogicalIndex& index, RowDraft& draft);
    void checkReferrers(WritableTable& table, const LogicalIndex& index, RowDraft& draft);

    TableSet& tables_;
};

}  // namespace jet
