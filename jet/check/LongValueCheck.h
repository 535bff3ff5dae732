#pragma once

#include <map>
#include <span>
#include <unordered_set>

#include "jet/check/CheckContext.h"
#include "jet/table/LongValue.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// Checks the long values of a table: each part belongs to one value, and is on a page of the value's column. Whether
/// the lengths add up is checked when the value is read.
class LongValueCheck {
public:
    LongValueCheck(const CheckContext& context, const TableDefinition& definition, Place place);

    /// The first step: claims the pages of all columns.
    void claimPages();

    /// The second step, for each value.
    /// @param stored  the column's bytes in the row
    void checkValue(const Column& column, std::span<const std::uint8_t> stored, RowPointer row);

    /// The last step: reports parts that no value uses.
    void checkUnused();

private:
    struct ColumnPages {
        CheckedMap owned;
        CheckedMap withSpace;
        std::unordered_set<std::uint32_t> used;  ///< row pointers of the parts
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
