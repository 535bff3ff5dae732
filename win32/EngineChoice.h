#pragma once

#include <memory>

#include "ado/Ado.h"

namespace win32 {

/// Decides which engine answers the tool's database calls, once, at the start: the one place that knows.
std::unique_ptr<ado::ConnectionFactory> chooseEngine();

}  // namespace win32
