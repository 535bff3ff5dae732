#pragma once

#include "win32/SystemHeaders.h"

namespace win32 {

/// Makes the second press of a double click on a column header count as a click of its own: a user who clicks twice
/// turns the order twice, however fast the clicks are. A double click on a divider stays a double click.
void takeDoubleClicksAsClicks(HWND header);

}  // namespace win32
