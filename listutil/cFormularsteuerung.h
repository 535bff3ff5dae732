#pragma once

#include <cstdint>

#include "forms/ColumnHeader.h"
#include "forms/ListView.h"
#include "platform/Platform.h"

namespace tolv {

/// Width code: as wide as the column's header or its widest value, whichever is wider.
inline constexpr std::int32_t LVSCW_AUTOSIZE_USEHEADER = -2;

/// Utilities for a list view in report view: sort by a clicked column, mark the sort column in the headers, set column
/// widths. Holds no state: the list itself knows how it is sorted; marks and widths are sent to the native list as
/// window messages.
class cFormularsteuerung {
public:
    cFormularsteuerung(platform::WindowMessages& windowMessages, const platform::Regional& regional)
        : windowMessages_(windowMessages), regional_(regional) {}

    /// Sorts the list by the column and marks its header. Every call reverses the direction, whichever column was
    /// sorted before. The header's tag names the type of the column's values:
    ///
    ///     DATE     dd.mm.yyyy: values of 10 characters are sorted as yyyymmdd; afterwards every value of 8
    ///              characters is written as a date, even one that was not a date before
    ///     NUMBER   sorted as text; afterwards each value is the plain digits of its number
    ///     VONBIS   sorted as text; raises error 9 if there are rows
    ///     else     sorted as text
    ///
    /// @throws base::RuntimeError 13 or 6 at the first value of a NUMBER column that is not a 32-bit number, 9 for
    /// VONBIS; the rows are already sorted and marked then
    void Sort_ListView(const forms::ColumnHeader& header, forms::ListView& listView);

    /// Marks the header of the sort column with image 0 (ascending) or 1 (descending) of the header's image list and
    /// removes the mark from all others.
    void SetHeaderIcon(const forms::ListView& listView);
    /// Gives every column this width; does nothing outside report view.
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
