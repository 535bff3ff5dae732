#pragma once

#include <memory>

#include "base/RuntimeError.h"
#include "jet/PageIo.h"

/// What the two sides of the POSIX door share.
namespace jet {

/// Takes over an open descriptor.
/// @throws RuntimeError if it is no ordinary file
std::unique_ptr<PageIo> fileIo(int descriptor, const base::Text& path);

/// Why a file could not be opened, in the original engine's words.
base::RuntimeError openingFailed(const base::Text& path, int systemError);

}  // namespace jet
