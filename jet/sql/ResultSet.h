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

/// One row of a result, for whoever wants several of its fields. Valid as long as the set keeps its rows.
class ResultRow {
public:
    RowPointer pointer() const { return view_.place(); }
    const RowView& view() const { return view_; }

    /// @param column  below the set's columnCount()
    /// @throws base::RuntimeError (damage) if the field's bytes are no value of the column's type
    base::Value value(std::size_t column) const;

    /// The short way to most texts: the units of a Text column if they lie in the file as one byte each, which
    /// stands for U+0000 + byte. Nothing in all other cases; then value() knows.
    std::optional<std::span<const std::uint8_t>> latinText(std::size_t column) const;

private:
    friend class ResultSet;
    ResultRow(const ResultSet& set, std::size_t row, RowView view) : set_(set), row_(row), view_(view) {}

    const ResultSet& set_;
    std::size_t row_;
    RowView view_;
};

/// Rows as they were at one moment. Keeps their bytes, long values too, and decodes a field when it is asked
/// for; nothing in it depends on the file any more.
class ResultSet {
public:
    explicit ResultSet(const TableDefinition& definition);

    /// The table's, as it was then.
    const TableDefinition& definition() const { return *definition_; }

    std::size_t columnCount() const { return columns_.size(); }
    const Column& column(std::size_t column) const { return *columns_[column]; }
    std::size_t rowCount() const { return rows_.size(); }

    /// @param row  below rowCount()
    ResultRow row(std::size_t row) const;
    base::Value value(std::size_t row, std::size_t column) const { return this->row(row).value(column); }
    RowPointer pointer(std::size_t row) const { return rows_[row].pointer(); }

    /// Makes room for so many rows, which is a guess.
    void reserve(std::size_t rows) { rows_.reserve(rows); }

    /// Copies the row and reads its long values. Comes before arrange().
    /// @throws base::RuntimeError (damage) also if the long values together are more than the file holds
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
    /// In 16 bytes, since there may be a million.
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
    std::vector<std::uint32_t> order_;  ///< the how-manieth appended each row was; empty: they stand so
    std::vector<Stored> longValues_;    ///< of each row as appended, one for each of longColumns_
    ByteStore bytes_;                   ///< of rows and long values
    std::uint64_t longBytes_ = 0;
};

}  // namespace jet::sql
