#pragma once

#include <string>
#include <windows.h>

#include "tests/wine/probe/Json.h"

/// Reads another program's windows: nothing here sets a text, presses a button or selects a row.
namespace probe {

/// WM_GETTEXT across processes; empty if the window does not answer within a second.
std::wstring textOf(HWND window);
std::wstring classOf(HWND window);

/// The visible top-level windows of all processes that run the exe with this name (without folder).
void describeWindows(Json& json, const std::wstring& exeName);

/// One window: class, text, styles, rectangle on the screen, client area (place on the screen, width, height), focus,
/// and its children in native order.
void describeTree(Json& json, HWND window);

/// Number of different colours in a rectangle of the screen: one or two if a control has not been painted.
std::size_t coloursIn(const RECT& place);

/// A message box: text, buttons with their ids, owner, and the system icon that it shows.
void describeBox(Json& json, HWND window);

}  // namespace probe
