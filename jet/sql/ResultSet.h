#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "base/Value.h"
#include "jet/RowPointer.h"
#include "jet/sql/ByteStore.h"
#include "jet/table/Table.h"
#include "jet/table/TableDefinition.h"
#include "jet/value/Column.h"

namespace jet::sql {

class ResultSet;

/// One row of a result. Faster than ResultSet::value() if several fields of the row are needed. Valid until the set
/// changes.
class ResultRow {
public:
    RowPointer pointer() const { return view_.place(); }
    const RowView& view() const { return view_; }

    /// @param column  below the set's columnCount()
    /// @throws base::RuntimeError (damage) if the bytes of the field are not a value of the column's type
    base::Value value(std::size_t column) const;

    /// A faster way to most texts: the bytes of a Text value that is stored with one byte for each character, where a
    /// byte b stands for U+0000 + b. Nothing in all other cases; then call value().
    std::optional<std::span<const std::uint8_t>> latinText(std::size_t column) const;

private:
    friend class ResultSet;
    ResultRow(const ResultSet& set, std::size_t row, RowView view) : set_(set), row_(row), view_(view) {}

    const ResultSet& set_;
    std::size_t row_;
    RowView view_;
};

/// The rows of a result as they were at one moment. It has copies of their bytes, including long values, so it does not
/// need the file any more. A field is decoded when it is asked for.
class ResultSet {
public:
    explicit ResultSet(const TableDefinition& definition);

    /// The definition of the table when the rows were read.
    const TableDefinition& definition() const { return *definition_; }

    std::size_t columnCount() const { return columns_.size(); }
    const Column& column(std::size_t column) const { return *columns_[column]; }
    std::size_t rowCount() const { return rows_.size(); }

    /// @param row  below rowCount()
    ResultRow row(std::size_t row) const;
    base::Value value(std::size_t row, std::size_t column) const { return this->row(row).value(column); }
    RowPointer pointer(std::size_t row) const { return rows_[row].pointer(); }

    /// Reserves memory for this number of rows; there may be more or fewer.
    void reserve(std::size_t rows) { rows_.reserve(rows); }

    /// Copies the row and reads its long values. Not allowed after arrange().
    /// @throws base::RuntimeError (damage) also if all long values together are larger than the file
    void append(PageSource& source, const Row& row);

    /// Puts the rows in another order. Rows whose number is missing are dropped.
    /// @param order  numbers of rows, none of them twice
    void arrange(std::vector<std::uint32_t> order);

    /// Keeps these columns, in this order. Before the first row is appended this also spares the reading of all other
    /// long values.
    /// @param columns  each below columnCount(); one may be kept twice
    void keepColumns(const std::vector<std::size_t>& columns);

private:
    friend class ResultRow;
    using Stored = std::span<const std::uint8_t>;
    /// Only 16 bytes, because there may be a million of them.
    struct StoredRow {
        const std::uint8_t* begin;
        PageNumber page;
        std::uint16_t lengthBytes;
        std::uint8_t slot;

        Stored bytes() const { return {begin, lengthBytes}; }
        RowPointer pointer() const { return {page, slot}; }
    };

    Stored longValue(std::size_t row, const Column& column) const;

    std::unique_ptr<const TableDefinition> definition_;
    std::vector<const Column*> columns_;      ///< at first all, in the order of SELECT *
    std::vector<const Column*> longColumns_;  ///< those of long values that are read
    std::vector<StoredRow> rows_;
    std::vector<std::uint32_t> order_;  ///< for each row, its number when it was appended; empty: still the same
    std::vector<Stored> longValues_;    ///< in the order of appending; for each row one for each of longColumns_
    ByteStore bytes_;                   ///< of rows and long values
    std::uint64_t longBytes_ = 0;
};

}  // namespace jet::sql
