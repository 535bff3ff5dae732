#pragma once

#include <filesystem>
#include <fstream>
#include <system_error>

#include "jet/Errors.h"

namespace kontodb {

/// Opens a file of the user's that is no database.
/// @throws base::RuntimeError if it is not there or may not be read
inline std::ifstream openInput(const base::Text& path) {
    const std::filesystem::path name(path);
    std::ifstream file(name, std::ios::binary);
    std::error_code ignored;
    if (!file) throw std::filesystem::exists(name, ignored) ? jet::accessDenied(path) : jet::fileNotFound(path);
    return file;
}

}  // namespace kontodb
