#pragma once

#include <vector>

#include "forms/ImageList.h"
#include "win32/Handles.h"

namespace win32 {

/// The pictures of the column headers as a native image list: triangles in the current text colour on a transparent
/// background, drawn for one resolution. To be drawn again when colours or resolution change.
/// @param sizePixels  width and height of a picture
IconList drawHeaderIcons(const std::vector<forms::ImageList::Picture>& pictures, int sizePixels);

}  // namespace win32
