#pragma once

#include <cstdint>
#include <string_view>

#include "base/Text.h"

/// The lock file of the original engine. Its name is that of the file with the ending .ldb. It has a slot of 64 bytes
/// for each of 255 users:
///
///     0   32  computer, code page 1252, padded with zeros or blanks
///     32  32  user
///
/// The user of slot n locks byte 0x10000001 + n while he has the file open. His slot stays when he leaves, and the lock
/// file stays when a program is killed. So only the locks show who uses the file. See docs/file-format.md, "Sharing".
namespace jet {

inline constexpr std::uint64_t kUserLocksOffset = 0x1000'0001;
inline constexpr std::uint64_t kUserLocks = 255;
inline constexpr std::size_t kUserSlotBytes = 64;

/// A user who has the file open through the original engine. Either name may be empty.
struct FileUser {
    base::Text computer;
    base::Text user;
};

base::Text lockFilePath(base::TextView databasePath);

/// @param slot  kUserSlotBytes
FileUser decodeUserSlot(std::string_view slot);

}  // namespace jet
