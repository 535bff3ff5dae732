#pragma once

#include <memory>

#include "base/Text.h"
#include "jet/storage/NewFile.h"
#include "tools/kontodb/Console.h"

/// Files with the contents of another one, whose protection they keep.
namespace kontodb {

/// A new file. Until shareLike() only the user of this program may open it; on Windows, whoever the folder lets.
/// @throws RuntimeError with the errors of NewFile
std::unique_ptr<jet::NewFile> newPrivateFile(const base::Text& path);

/// Lets those use the copy who may use the original, as far as the system allows.
void shareLike(const base::Text& original, const base::Text& copy);

/// Says so if Access has the file open: the file's own lock keeps out only programs of this engine.
/// @param done  what is being done with the file, as a participle
void warnOfOriginalUser(const base::Text& path, base::TextView done, Console& console);

}  // namespace kontodb
