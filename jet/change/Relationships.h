#pragma once

#include <optional>
#include <vector>

#include "base/Value.h"
#include "jet/change/RowDraft.h"
#include "jet/change/TableSet.h"
#include "jet/change/WritableTable.h"
#include "jet/expression/RowValues.h"

namespace jet {

/// What relationships that the file enforces want of a row. They stand in the definitions of both tables as indexes
/// of the kind foreign key; see docs/file-format.md, "Table definitions".
///
/// A row that refers to another needs that other one, unless a part of its key is null. A row that others refer to
/// keeps its key, and its place, unless the relationship deletes those along. Changes that a relationship would have
/// to make in other rows (new keys, nulls) are refused.
class Relationships {
public:
    /// @param tables  must outlive this
    explicit Relationships(TableSet& tables) : tables_(tables) {}

    /// Before there is a row: whether the rows that a new one of the table will refer to can be looked up at all.
    /// @throws RuntimeError if not
    void requireUsable(WritableTable& table);

    struct TableRemoval {
        WritableTable* table;
        WritableTable::Removal removal;
    };

    /// For a row to be added or changed, with keys of both kinds.
    /// @throws RuntimeError if a relationship refuses it
    void check(WritableTable& table, RowDraft& draft);

    /// The row and all that go with it.
    /// @throws RuntimeError if a row that stays refers to one of them
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
