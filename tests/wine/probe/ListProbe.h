#pragma once

#include <windows.h>

#include "tests/wine/probe/Json.h"

namespace probe {

/// Describes a list view in report view: columns, counts, selected and focused row (-1 if there is none), top row, rows
/// on a page, and the texts of the rows [first, first + count).
void describeList(Json& json, HWND list, int first, int count);

}  // namespace probe
