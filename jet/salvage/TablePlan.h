#pragma once

#include <cstdint>
#include <vector>

#include "jet/salvage/Salvage.h"
#include "jet/salvage/SalvageReport.h"

namespace jet {

/// Hashes of keys, 8 bytes each, however long the keys are. Two different keys are taken for equal once in some 2^64
/// pairs; then an index is needlessly not unique.
class KeyHashes {
public:
    void add(std::span<const std::uint8_t> key);
    /// Must be called after the last add() and before the questions.
    void sort();
    bool hasDuplicates() const;
    bool areAllIn(const KeyHashes& others) const;

private:
    std::vector<std::uint64_t> hashes_;
};

/// How a table is made anew: its definition with fresh numbers and places for its columns, and without what its rows do
/// not satisfy. All rows are read once to find that out and to report what is lost; they are read again to be written.
class TablePlan {
public:
    /// @param table   must outlive this
    /// @param order   of texts whose own order is unknown
    TablePlan(const TableOfSalvage& table, TextOrder order, SalvageReport::Table& report);

    const base::Text& name() const { return table_->name; }
    const TableOfSalvage& table() const { return *table_; }
    /// Without places and without the indexes of relationships.
    TableDefinition& definition() { return definition_; }
    const TableDefinition& definition() const { return definition_; }
    SalvageReport::Table& report() { return *report_; }

    /// Adds an index over these columns that has no name yet.
    /// @return its position
    std::size_t addIndex(std::vector<IndexColumn> columns);

    using Visit = std::function<void(std::vector<base::Value>& values)>;  ///< may change them

    /// The first reading. Afterwards the definition is what its rows satisfy.
    /// @param visit  gets the values of each row, by new column numbers
    void survey(const Visit& visit);

    /// The second reading: the same rows.
    void eachRow(const Visit& visit);

    /// Removes the index blocks that no name refers to.
    void removeUnnamedIndexes();

private:
    struct IndexFacts {
        KeyHashes keys;
        bool hasNull = false;      ///< in some row one of its columns is null
        bool isUncertain = false;  ///< it is not known which key the original engine gives some row
    };

    void planColumns(TextOrder order);
    void planColumn(Column& column, TextOrder order);
    void planIndexes();
    void planIndex(const IndexDefinition& found);
    void nameIndexes(const std::vector<LogicalIndex>& found, const std::vector<std::size_t>& newPlaces);
    void clean(RowPointer place, DamagedRow& row, std::vector<base::Value>& values, bool isFirst);
    void cleanValue(RowPointer place, const Column& column, base::Value& value, bool isFirst);
    void shorten(RowPointer place, std::vector<base::Value>& values, bool isFirst);
    void loseValue(RowPointer place, const Column& column, base::TextView reason);
    void addKeys(const std::vector<base::Value>& values);
    void settleIndexes();
    void removeIndex(std::size_t place);
    void reportCounts();

    const TableOfSalvage* table_;
    SalvageReport::Table* report_;
    TableDefinition definition_;
    std::vector<std::uint16_t> oldNumbers_;  ///< by new column number
    std::vector<IndexFacts> facts_;          ///< by index
    std::int32_t highestNumber_ = 0;
    bool losesValue_ = false;  ///< of the row being cleaned
};

}  // namespace jet
