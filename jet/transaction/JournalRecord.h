#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/ByteView.h"
#include "base/Text.h"
#include "base/Value.h"
#include "jet/page/PageSource.h"

/// The bytes of a journal. Pages have the form that they have in the file (encoded, if the file is).
///
///     header   512 bytes, one sector
///     index    80 bytes a page, filled up with zeros to whole sectors
///     images   4096 bytes for each changed page, in the order of the index; appended pages have none
///
///     header:                                     index, for each page:
///     0    8  "TOLVJRN2"                          0   4  page number
///     8    8  old length of the file              4   4  0 changed, 1 appended
///     16   8  new length                          8   8  checksum of the old page, 0 for an appended one
///     24   4  pages in the index                  16  64 checksums of the new page's 8 sectors
///     28   4  those of them that are appended
///     32   8  creation date, as in the file's header
///     40   8  checksum of the index with its filling
///     48   8  checksum of the commit words in the file's header
///     56   2  units of the file's name, at most 223; longer ones are cut
///     58      the name, then zeros
///     504  8  checksum of the 504 bytes before
///
/// The changed pages come first, ascending, then the appended ones, which end at the new length. Numbers are
/// little-endian. See docs/architecture.md, "A write is whole".
namespace jet {

inline constexpr std::size_t kSectorBytes = 512;
inline constexpr std::size_t kSectorsPerPage = kPageSize / kSectorBytes;

/// One page of a commit in the form that it has in the file. The bytes belong to the caller.
struct PageChange {
    PageNumber number = 0;
    std::span<const std::uint8_t> before;  ///< empty for an appended page
    std::span<const std::uint8_t> after;
};

/// Which file a journal belongs to.
struct FileIdentity {
    base::Text name;
    std::uint64_t creationDate = 0;  ///< its bytes in the header

    bool operator==(const FileIdentity& other) const;
};

struct JournalEntry {
    PageNumber number = 0;
    bool isAppended = false;
    std::uint64_t before = 0;
    std::array<std::uint64_t, kSectorsPerPage> after{};

    bool operator==(const JournalEntry&) const = default;
};

/// The contents of a journal, without the images.
struct JournalRecord {
    FileIdentity file;
    std::uint64_t commitWords = 0;  ///< a checksum of these words
    std::uint64_t oldLength = 0;
    std::uint64_t newLength = 0;
    std::vector<JournalEntry> entries;

    static JournalRecord of(FileIdentity file, std::uint64_t commitWords, PageNumber oldPageCount,
                            const std::vector<PageChange>& changes);

    base::Bytes encodeHeader() const;
    base::Bytes encodeIndex() const;
};

/// A header that was read, and the positions that follow from it.
struct JournalHeader {
    FileIdentity file;
    std::uint64_t oldLength = 0;
    std::uint64_t newLength = 0;
    std::uint32_t entryCount = 0;
    std::uint32_t appendedCount = 0;
    std::uint64_t indexChecksum = 0;
    std::uint64_t commitWords = 0;

    /// @return nothing if the sector is damaged, or names lengths that no file has
    static std::optional<JournalHeader> decode(base::ByteView sector);

    std::size_t indexBytes() const;
    std::uint64_t imageOffset(std::size_t image) const;
    std::uint64_t sizeBytes() const { return imageOffset(entryCount - appendedCount); }

    /// @return nothing if the bytes are damaged, or are not an index as we write it
    std::optional<std::vector<JournalEntry>> decodeIndex(base::ByteView bytes) const;
};

}  // namespace jet
