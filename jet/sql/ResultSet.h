#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/Column.h"
#include "jet/RowPointer.h"
#include "jet/Table.h"
#include "jet/TableDefinition.h"

namespace jet::sql {

/// Rows as they were at one moment. Keeps their bytes, long values too, and decodes a field when it is asked
/// for; nothing in it depends on the file any more.
class ResultSet {
public:
    explicit ResultSet(const TableDefinition& definition);

    std::size_t columnCount() const { return columns_.size(); }
    const Column& column(std::size_t column) const { return *columns_[column]; }
    std::size_t rowCount() const { return rows_.size(); }

    /// @param row, column  below the counts
    /// @throws base::RuntimeError (damage) if the field's bytes are no value of the column's type
    base::Value value(std::size_t row, std::size_t column) const;

    RowPointer pointer(std::size_t row) const { return rows_[row].pointer; }

    /// The row's frame, valid as long as the set.
    RowView view(std::size_t row) const;

    /// Copies the row and reads its long values.
    /// @throws base::RuntimeError (damage) also if the long values together are more than the file holds
    void append(PageSource& source, const Row& row);

    /// Puts the rows in another order.
    /// @param order  each row's number once
    void arrange(std::span<const std::uint32_t> order);

private:
    struct StoredRow {
        RowPointer pointer;
        std::uint32_t lengthBytes = 0;
        std::size_t offset = 0;     ///< in bytes_
        std::size_t firstLong = 0;  ///< in longValues_
    };
    struct LongValueBytes {
        std::size_t offset = 0;  ///< in bytes_
        std::size_t lengthBytes = 0;
    };

    std::span<const std::uint8_t> longValue(const StoredRow& row, const Column& column) const;

    std::unique_ptr<const TableDefinition> definition_;
    std::vector<const Column*> columns_;      ///< in the order of SELECT *
    std::vector<const Column*> longColumns_;  ///< those of long values
    std::vector<StoredRow> rows_;
    std::vector<LongValueBytes> longValues_;  ///< of each row, one for each of longColumns_
    base::Bytes bytes_;
    std::uint64_t longBytes_ = 0;
};

}  // namespace jet::sql
