#pragma once

#include <cstdint>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/FreshTable.h"
#include "jet/fresh/ObjectNumbers.h"
#include "jet/table/RowCodec.h"
#include "jet/table/Table.h"

namespace jet {

/// Copies the rows and the indexes of a table into a new one that has the same definition. The stored bytes of values
/// are copied, and so are the keys of indexes: nothing depends on our rules for either. Only the numbers of objects
/// change, and the keys that hold them.
///
/// The rows keep their order and so do their new places. So the entries of an index stay in order, too, and are passed
/// on one by one: memory holds 8 bytes for each row.
class TableCopy {
public:
    /// All must outlive this.
    TableCopy(const Table& original, const ObjectNumbers& numbers, FreshTable& fresh);

    /// Finishes the new table.
    /// @throws RuntimeError (damage), also if an index and the rows do not agree
    void run();

private:
    bool holdsNumbers(const IndexDefinition& index) const;
    void copyRows();
    void copyCells(const RowView& row);
    base::Bytes longValue(const RowView& row, const Column& column);
    void putNumbers(const RowView& row);
    void copyIndex(std::size_t i);
    RowPointer newPlace(RowPointer original) const;

    const Table& original_;
    const ObjectNumbers& numbers_;
    FreshTable& fresh_;
    std::vector<const Column*> numberColumns_;
    std::vector<Cell> cells_;          ///< of the present row
    std::vector<base::Value> values_;  ///< of the present row; only if some are numbers of objects
    std::vector<std::uint32_t> from_;  ///< the places of all rows, ascending
    std::vector<std::uint32_t> to_;    ///< their new places
};

}  // namespace jet
