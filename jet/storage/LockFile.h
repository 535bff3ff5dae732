#pragma once

#include <cstdint>
#include <string_view>

#include "base/Text.h"
#include "jet/storage/Storage.h"

/// The lock file of the original engine: the file's name with the ending .ldb. It has a slot of 64 bytes for each of
/// 255 users:
///
///     0   32  computer, code page 1252, filled up with zeros or blanks
///     32  32  user
///
/// The user of slot n has byte 0x10000001 + n of it locked as long as he has the file open. A slot stays when its user
/// leaves, and the file stays when a program was killed: only the locks say who is there. See docs/file-format.md,
/// "Sharing".
namespace jet {

inline constexpr std::uint64_t kUserLocksOffset = 0x1000'0001;
inline constexpr std::uint64_t kUserLocks = 255;
inline constexpr std::size_t kUserSlotBytes = 64;

base::Text lockFilePath(base::TextView databasePath);

/// @param slot  kUserSlotBytes
FileUser decodeUserSlot(std::string_view slot);

}  // namespace jet
