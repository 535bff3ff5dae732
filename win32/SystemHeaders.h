#pragma once

/// The system's headers. The order matters: later ones need earlier ones.

// clang-format off
#include <windows.h>
#include <commctrl.h>
#include <objbase.h>
#include <oleauto.h>
// clang-format on
