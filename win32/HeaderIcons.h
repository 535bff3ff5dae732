#pragma once

#include <vector>

#include "forms/ImageList.h"
#include "win32/Handles.h"

namespace win32 {

/// The pictures of the column headers as an image list of the system: triangles in the present text colour
/// on transparent ground, drawn for one resolution. Made anew when colours or resolution change.
/// @param sizePixels  width and height of a picture
IconList drawHeaderIcons(const std::vector<forms::ImageList::Picture>& pictures, int sizePixels);

}  // namespace win32
