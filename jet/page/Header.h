#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/ByteView.h"
#include "base/Text.h"
#include "base/Value.h"
#include "jet/RowPointer.h"
#include "jet/value/SortKey.h"

/// Page 0.
///
///     offset size
///     0      4    00 01 00 00
///     4      16   "Standard Jet DB" 0
///     14     4    version: 0 Jet 3, 1 Jet 4, more: later formats
///     18     128  masked with a constant key stream:
///     18     4    row of the global map of free pages
///     1C     4    row of a second global map, empty
///     20     16   definitions of the four system tables: 2, 3, 4, 5
///     3C     2    code page
///     3E     4    key of the page encoding, 0 for none
///     42     40   password, XORed with the creation day
///     6A     4    build of the creating engine
///     6E     4    text order: LCID, 0, version
///     72     8    creation date
///     98     8    1620, "4.0" 0
///     E00    512  commit words of 256 users
///
/// (Offsets are hexadecimal.) Bytes without a name keep their values. See docs/file-format.md, "Header".
namespace jet {

inline constexpr std::size_t kMaxPasswordUnits = 20;

/// Fields before the masked bytes.
inline constexpr std::size_t kSignatureOffset = 0x04;
inline constexpr std::string_view kSignature{"Standard Jet DB\0", 16};
inline constexpr std::size_t kVersionOffset = 0x14;
inline constexpr std::uint32_t kVersionJet4 = 1;

/// Fields that some code reads alone, for example from a damaged header.
inline constexpr std::size_t kDatabaseKeyOffset = 0x3E;
inline constexpr std::size_t kPasswordOffset = 0x42;
inline constexpr std::size_t kCreatedOffset = 0x72;
inline constexpr std::size_t kCommitWordsOffset = 0xE00;
inline constexpr std::size_t kCommitWordsBytes = 512;

class Header {
public:
    /// Whether a file that begins with these bytes has the format of Access 2000 to 2003. False for older and later
    /// formats.
    static bool isJet4(base::ByteView beginning);

    /// @param page  page 0 of a Jet 4 file
    /// @throws RuntimeError (damage) if a field has an impossible value
    static Header read(base::ByteView page);

    /// The header of a new file: no password, no encoding, no commits.
    static Header fresh(base::Date created);

    /// @param page  4096 bytes; all of them are written
    void write(std::span<std::uint8_t> page) const;

    RowPointer freeMap{1, 0};
    RowPointer secondMap{1, 1};
    std::array<PageNumber, 4> systemTables{2, 3, 4, 5};
    std::uint16_t codePage = 1252;
    std::uint32_t databaseKey = 0;
    base::Text password;  ///< at most kMaxPasswordUnits units, none of them zero
    std::uint32_t engineBuild = 9756;
    TextOrder textOrder;
    base::Date created;

private:
    base::Bytes page_;  ///< as read, unmasked
};

/// Masks or unmasks page 0 in place (both are the same step).
/// @param page  at least 0x98 bytes
void maskHeader(std::span<std::uint8_t> page);

}  // namespace jet
