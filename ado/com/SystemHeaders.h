#pragma once

/// The system's automation headers. The order matters: later ones need earlier ones.

// clang-format off
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
// clang-format on
