#pragma once

#include "win32/SystemHeaders.h"

namespace win32 {

/// The second press of a double click on a column's header counts as a click of its own: who clicks twice to
/// turn the order twice gets that, however quick he is. A double click on a divider stays one.
void takeDoubleClicksAsClicks(HWND header);

}  // namespace win32
