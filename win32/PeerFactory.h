#pragma once

#include <memory>

#include "win32/NativeControl.h"

namespace win32 {

/// Makes the native control for this kind and attaches it to the model; null for kinds without a window.
std::unique_ptr<NativeControl> makePeer(forms::Control& control, const Surroundings& surroundings);

}  // namespace win32
