#pragma once

/// The system's headers of automation, in the order in which they need each other.

// clang-format off
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
// clang-format on
