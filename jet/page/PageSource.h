#pragma once

#include <memory>
#include <span>

#include "base/ByteView.h"
#include "jet/RowPointer.h"

namespace jet {

inline constexpr std::size_t kPageSize = 4096;

/// 2 GiB, the largest file of this format.
inline constexpr PageNumber kMaxPages = 524'288;

/// What the first byte of a page says. Only pages that something refers to may be asked: a freed page keeps
/// its old bytes.
enum class PageKind : std::uint8_t {
    Header = 0,
    Data = 1,
    TableDefinition = 2,
    IndexNode = 3,
    IndexLeaf = 4,
    UsageBitmap = 5,
};

/// A page's bytes with its number. The view shares in the ownership of the bytes, because a scan holds its page
/// while it reads any number of others (overflow rows, long values) through a bounded cache.
struct PageView {
    PageNumber number = 0;
    base::ByteView bytes;  ///< kPageSize of them
    std::shared_ptr<const void> owner;

    PageKind kind() const { return static_cast<PageKind>(bytes.u8(0)); }
};

/// Where pages come from: the file as one operation sees it, or later a transaction's changed pages over it.
/// All parts of the format read through this.
class PageSource {
public:
    virtual ~PageSource() = default;

    virtual PageNumber pageCount() const = 0;

    /// @throws RuntimeError if the file has no such page or cannot be read
    virtual PageView page(PageNumber number) = 0;
};

/// @throws RuntimeError (damage) if the page is not of this kind
PageView pageOfKind(PageSource& source, PageNumber number, PageKind kind);

}  // namespace jet
