#pragma once

#include <span>

#include "base/Text.h"

namespace kontodb {

/// What a mistyped word was probably meant to be.
/// @return " Meinten Sie 'WORD'?" for the known word that is nearest; empty if none is near
base::Text suggestion(base::TextView word, std::span<const base::TextView> known);

}  // namespace kontodb
