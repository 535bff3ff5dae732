#pragma once

#include <memory>
#include <string>

#include "base/RuntimeError.h"
#include "jet/storage/PageIo.h"

/// What the two sides of the POSIX door share.
namespace jet {

/// Takes over an open descriptor.
/// @throws RuntimeError if it is no ordinary file
std::unique_ptr<PageIo> fileIo(int descriptor, const base::Text& path);

/// Renames a file, never over another one.
/// @return false, with the system's error (EEXIST if the new name is taken)
bool renameWithoutReplacing(const std::string& path, const std::string& newPath);

/// Flushes the folder that holds the file.
/// @return false, with the system's error, if it is not known that its names are on the disk
bool syncFolderOf(const std::string& path);

/// The folder of a file with its last separator; empty for a name alone.
std::string folderOf(const std::string& path);

/// Why a file could not be opened, in the original engine's words.
base::RuntimeError openingFailed(const base::Text& path, int systemError);

}  // namespace jet
