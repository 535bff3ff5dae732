#pragma once

#include <span>

#include "jet/page/PageSource.h"

namespace jet {

/// Pages that can be changed: what everything that writes the format is written against. A transaction implements
/// it over the file; until it commits, nothing reaches the file.
class PageStore : public PageSource {
public:
    /// The page's bytes, kPageSize of them, to be changed in place; views of the page that were taken before keep the
    /// old bytes. Valid until the store is gone; the same bytes at each call.
    /// @throws RuntimeError if the file has no such page or cannot be read
    virtual std::span<std::uint8_t> change(PageNumber number) = 0;

    /// A further page at the end of the file, all zero.
    /// @throws RuntimeError if the file would be larger than the format allows (2 GiB)
    virtual PageNumber append() = 0;
};

}  // namespace jet
