#pragma once

#include <cstdint>

#include "forms/ColumnHeader.h"
#include "forms/ListView.h"
#include "platform/Platform.h"

namespace tolv {

/// Width code: as wide as the wider of the column's header and its widest value.
inline constexpr std::int32_t LVSCW_AUTOSIZE_USEHEADER = -2;

/// Utilities for a list view in report view: sorting by a clicked column, the sort mark in the column headers
/// and column widths. Holds no state: how a list is sorted stands in the list; marks and widths go to the
/// native list as window messages.
class cFormularsteuerung {
public:
    cFormularsteuerung(platform::WindowMessages& windowMessages, const platform::Regional& regional)
        : windowMessages_(windowMessages), regional_(regional) {}

    /// Sorts the list by the column and marks its header. The direction changes over at every call, whichever
    /// column was sorted before. The header's tag names the type of the column's values:
    ///
    ///     DATE     dd.mm.yyyy: values of 10 characters are sorted as yyyymmdd; afterwards every value of 8
    ///              characters is written as a date again, also one that was none before
    ///     NUMBER   sorted as text; afterwards each value is the plain digits of its number
    ///     VONBIS   sorted as text; raises error 9 if there are rows
    ///     else     sorted as text
    ///
    /// @throws base::RuntimeError 13 or 6 at the first value of a NUMBER column that is no 32-bit number, 9 for
    ///         VONBIS; the rows are sorted and marked by then
    void Sort_ListView(const forms::ColumnHeader& header, forms::ListView& listView);

    /// Marks the header of the sort column with image 0 (ascending) or 1 (descending) of the header's image
    /// list and takes the mark from every other.
    void SetHeaderIcon(const forms::ListView& listView);
    /// Gives every column the width code; does nothing outside report view.
    /// @param widthCode  pixels, or -1 or LVSCW_AUTOSIZE_USEHEADER
    void SetColWidth(const forms::ListView& listView, std::int32_t widthCode);

private:
    static std::int32_t GetHeaderAlignment(const forms::ColumnHeader& header);
    void SetHeaderItemIcon(std::int32_t columnIndex, std::int32_t imageIndex, bool showImage,
                           const forms::ListView& listView, std::int32_t alignmentFlags);
    void SetSingleColWidth(const forms::ListView& listView, std::int32_t columnIndex, std::int32_t widthCode);

    platform::WindowMessages& windowMessages_;
    const platform::Regional& regional_;
};

}  // namespace tolv
