#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageSource.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// The pages of a new file: handed out in ascending order, written in any order.
class FreshPages {
public:
    /// @param io           an empty file; must outlive this
    /// @param databaseKey  as in the header; pages are encoded with it, 0 for none
    explicit FreshPages(PageIo& io, std::uint32_t databaseKey = 0) : io_(io), databaseKey_(databaseKey) {}

    /// @throws RuntimeError if the file would grow beyond 2 GiB
    PageNumber allocate();

    /// Pages handed out so far.
    PageNumber count() const { return count_; }

    void write(PageNumber number, std::span<const std::uint8_t> page);

private:
    PageIo& io_;
    std::uint32_t databaseKey_;
    PageNumber count_ = 0;
    PageNumber written_ = 0;
};

/// Appends rows of one kind to the last page of a list of data pages, or to a new page.
class FreshRows {
public:
    /// @param owner  page of the table's definition, or kLongValueOwner
    FreshRows(FreshPages& pages, std::uint32_t owner) : pages_(pages), owner_(owner) {}

    /// @throws RuntimeError if the row does not fit on a page
    RowPointer add(std::span<const std::uint8_t> row);

    /// Adds a row that shares its page with no other row.
    RowPointer addAlone(std::span<const std::uint8_t> row);

    /// Writes the page that is not full yet.
    void finish();

    const std::vector<PageNumber>& numbers() const { return numbers_; }

    /// The page that can still take a row, if any.
    std::vector<PageNumber> numbersWithSpace() const;

private:
    void open();

    FreshPages& pages_;
    std::uint32_t owner_;
    base::Bytes page_;         ///< the open page, or empty
    PageNumber openPage_ = 0;  ///< its number
    std::vector<PageNumber> numbers_;
};

}  // namespace jet
