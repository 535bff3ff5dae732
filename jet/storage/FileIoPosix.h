#pragma once

#include <memory>
#include <string>

#include "base/RuntimeError.h"
#include "jet/storage/PageIo.h"

/// Shared by the two POSIX parts of this room.
namespace jet {

/// Takes ownership of an open descriptor.
/// @throws RuntimeError if it is not an ordinary file
std::unique_ptr<PageIo> fileIo(int descriptor, const base::Text& path);

/// Renames a file. Never replaces another file.
/// @return false, with the system's error in errno (EEXIST if the new name exists)
bool renameWithoutReplacing(const std::string& path, const std::string& newPath);

/// Flushes the folder that contains the file.
/// @return false, with the system's error in errno, if the names in the folder may not be on the disk
bool syncFolderOf(const std::string& path);

/// The folder of a path with its last separator; empty if the path is only a name.
std::string folderOf(const std::string& path);

/// The reason why a file could not be opened, in the original engine's words.
base::RuntimeError openingFailed(const base::Text& path, int systemError);

}  // namespace jet
