#pragma once

#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/check/Findings.h"
#include "jet/check/TableRows.h"

namespace jet {

/// The expected contents of an index: for each row of the table, a word made from the key of the row. The entries of
/// the index may come in any order; each is crossed off.
class ExpectedKeys {
public:
    /// Computes the keys of all rows.
    ExpectedKeys(const TableRows& rows, const IndexDefinition& index, Findings& findings, Place place);

    /// Crosses off an entry of the index.
    /// @param at  the page of the entry
    void meet(RowPointer row, std::span<const std::uint8_t> key, const Place& at);

    /// Whether the row's key contains a null.
    bool hasNull(RowPointer row) const;

    /// @param walkIsWhole  false if parts of the tree could not be read; then all missing rows are reported in one
    /// sentence
    void reportUnmet(bool walkIsWhole);

private:
    static constexpr std::size_t kAllOfThem = static_cast<std::size_t>(-1);
    struct RowKey {
        base::Bytes bytes;
        bool isIn = true;                       ///< the index has an entry for the row
        std::size_t certainBytes = kAllOfThem;  ///< number of bytes at the beginning that are certain
        bool hasNull = false;
    };
    bool computeKey(const RowView& row, RowKey& key) const;
    std::optional<RowKey> keyAt(RowPointer row) const;
    void reportStranger(RowPointer row, std::size_t slotNumber, const Place& at);
    void appendPart(RowKey& key, const Column& column, const base::Value& value, bool ascending) const;
    void compareKey(RowPointer row, std::span<const std::uint8_t> key, const Place& at);

    const TableRows& rows_;
    const IndexDefinition& index_;
    Findings& findings_;
    Place place_;
    std::vector<std::uint64_t> words_;  ///< by slot number
};

}  // namespace jet
