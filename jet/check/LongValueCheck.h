#pragma once

#include <map>
#include <span>
#include <unordered_set>

#include "jet/check/TableCheck.h"
#include "jet/table/LongValue.h"

namespace jet {

/// The long values of a table: each part of them belongs to one value, and lies on a page of the value's column.
/// That their lengths add up is checked by the reading of the value.
class LongValueCheck {
public:
    LongValueCheck(const CheckContext& context, const TableDefinition& definition, Place place);

    /// First: the pages of all columns.
    void claimPages();

    /// Then: each value.
    /// @param stored  the column's bytes in the row
    void checkValue(const Column& column, std::span<const std::uint8_t> stored, RowPointer row);

    /// At last: parts that no value uses.
    void checkUnused();

private:
    struct ColumnPages {
        CheckedMap owned;
        CheckedMap free;
        std::unordered_set<std::uint32_t> used;  ///< parts
        Place place;
    };

    void claimColumn(const Column& column, const LongValueMaps& maps);
    void checkPage(PageNumber page, const Place& place);
    void checkChain(ColumnPages& pages, const LongValueReference& reference, RowPointer row);
    bool use(ColumnPages& pages, RowPointer part, RowPointer row);

    CheckContext context_;
    const TableDefinition& definition_;
    Place place_;
    std::map<std::uint16_t, ColumnPages> columns_;  ///< by column number
};

}  // namespace jet
