#pragma once

#include <span>

#include "jet/page/PageSource.h"

namespace jet {

/// Pages that can be changed. All code that writes the format uses this interface. A transaction implements it: nothing
/// reaches the file before the transaction commits.
class PageStore : public PageSource {
public:
    /// The kPageSize bytes of a page, to be changed in place. Views taken before keep the old bytes. The span is valid
    /// as long as the store, and every call returns the same bytes.
    /// @throws RuntimeError if the file does not have this page or cannot be read
    virtual std::span<std::uint8_t> change(PageNumber number) = 0;

    /// Adds a page, all zero, at the end of the file.
    /// @throws RuntimeError if the file would be larger than the format allows (2 GiB)
    virtual PageNumber append() = 0;
};

}  // namespace jet
