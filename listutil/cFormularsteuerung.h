#pragma once

#include <cstdint>

#include "forms/ColumnHeader.h"
#include "forms/ListView.h"
#include "platform/Platform.h"

namespace tolv {

/// Width code: as wide as the wider of the column's header and its widest value.
inline constexpr std::int32_t LVSCW_AUTOSIZE_USEHEADER = -2;

/// Utilities for a list view in report view: column widths and the sort mark in the column headers. Holds no
/// state; what it sets goes to the native list as window messages.
class cFormularsteuerung {
public:
    explicit cFormularsteuerung(platform::WindowMessages& windowMessages) : windowMessages_(windowMessages) {}

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
};

}  // namespace tolv
