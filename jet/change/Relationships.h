#pragma once

#include <optional>
#include <vector>

#include "base/Value.h"
#include "jet/change/RowDraft.h"
#include "jet/change/TableSet.h"
#include "jet/change/TableStore.h"
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

    /// Checks, before a new row exists, that the rows to which it may refer can be looked up.
    /// @throws RuntimeError if they cannot
    void requireUsable(TableStore& table);

    struct TableRemoval {
        TableStore* table;
        TableStore::Removal removal;
    };

    /// Checks a row that will be added or changed, for both sides of its table's relationships.
    /// @throws RuntimeError if a relationship refuses it
    void check(TableStore& table, RowDraft& draft);

    /// The row and all rows that must be deleted with it.
    /// @throws RuntimeError if another row refers to one of them
    std::vector<TableRemoval> removalsOf(TableStore& table, RowPointer row);

private:
    struct Link {
        const IndexDefinition& ownIndex;
        TableStore& partner;
        std::size_t partnerIndex;
    };
    struct Referrer {
        TableStore* table;
        RowPointer row;
    };

    Link linkOf(TableStore& table, const LogicalIndex& index);
    std::optional<base::Bytes> partnerKey(const TableStore& table, const Link& link, const RowValues& row);
    std::vector<RowPointer> partnerRows(const TableStore& table, const Link& link, const RowValues& row);
    void checkReference(TableStore& table, const LogicalIndex& index, RowDraft& draft);
    void checkReferrers(TableStore& table, const LogicalIndex& index, RowDraft& draft);

    TableSet& tables_;
};

}  // namespace jet
