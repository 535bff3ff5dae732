#pragma once

#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/check/Findings.h"
#include "jet/check/TableRows.h"

namespace jet {

/// What an index must hold: a word for each row of its table, made from the row's key. The index's entries, in
/// whatever order they come, are crossed off.
class ExpectedKeys {
public:
    /// Computes the keys of all rows.
    ExpectedKeys(const TableRows& rows, const IndexDefinition& index, Findings& findings, Place place);

    /// An entry of the index.
    /// @param at  its page
    void meet(RowPointer row, std::span<const std::uint8_t> key, const Place& at);

    /// Whether a column of the row's key is null.
    bool hasNull(RowPointer row) const;

    /// @param walkIsWhole  false if parts of the tree could not be read: then one sentence is enough
    void reportUnmet(bool walkIsWhole);

private:
    static constexpr std::size_t kAllOfThem = static_cast<std::size_t>(-1);
    struct RowKey {
        base::Bytes bytes;
        bool isIn = true;                       ///< the index has an entry for the row
        std::size_t certainBytes = kAllOfThem;  ///< so many at the beginning are known to be the right ones
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
