#pragma once

#include <memory>
#include <span>

#include "base/ByteView.h"
#include "jet/RowPointer.h"

namespace jet {

inline constexpr std::size_t kPageSize = 4096;

/// 2 GiB, the largest size of a file of this format.
inline constexpr PageNumber kMaxPages = 524'288;

/// The meaning of a page's first byte. It counts only if something refers to the page: a freed page keeps its old
/// bytes.
enum class PageKind : std::uint8_t {
    Header = 0,
    Data = 1,
    TableDefinition = 2,
    IndexNode = 3,
    IndexLeaf = 4,
    UsageBitmap = 5,
};

/// Fields that pages of several kinds have at the same place.
inline constexpr std::size_t kFreeBytesOffset = 2;  ///< u16; data, definition and index pages
inline constexpr std::size_t kOwnerOffset = 4;      ///< u32; data and index pages: page of the definition, or a mark

/// Writes the two bytes with which every page except the header begins.
inline void beginPage(std::span<std::uint8_t> page, PageKind kind) {
    page[0] = static_cast<std::uint8_t>(kind);
    page[1] = 1;
}

/// The bytes of a page, and its number. The view shares the ownership of the bytes: a scan keeps its page while it
/// reads many others (overflow rows, long values) through a cache of limited size.
struct PageView {
    PageNumber number = 0;
    base::ByteView bytes;  ///< kPageSize bytes
    std::shared_ptr<const void> owner;

    PageKind kind() const { return static_cast<PageKind>(bytes.u8(0)); }
};

/// The pages of a file, either directly or with the changed pages of a transaction on top. All code that reads the
/// format uses this interface.
class PageSource {
public:
    virtual ~PageSource() = default;

    virtual PageNumber pageCount() const = 0;

    /// @throws RuntimeError if the file does not have this page or cannot be read
    virtual PageView page(PageNumber number) = 0;
};

/// @throws RuntimeError (damage) if the page is of another kind
PageView pageOfKind(PageSource& source, PageNumber number, PageKind kind);

}  // namespace jet
