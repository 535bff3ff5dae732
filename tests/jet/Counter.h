#pragma once

#include <cstdint>
#include <stdexcept>

#include "jet/transaction/Transaction.h"
#include "tests/support/SampleFile.h"

/// A file that holds one number, stored on several pages, so that half a write shows.
namespace test::counter {

inline constexpr std::size_t kOffset = 4000;
inline constexpr jet::PageNumber kPages[] = {3, 12, 15};

/// A file whose number is 0.
inline base::Bytes file() {
    base::Bytes bytes = sampleFile({});
    for (const jet::PageNumber page : kPages)
        base::putU32(bytes, page * jet::kPageSize + kOffset, 0);
    return bytes;
}

/// Adds 1, as one transaction.
inline void add(jet::Database& database) {
    jet::Transaction transaction(database);
    for (const jet::PageNumber number : kPages) {
        const auto page = transaction.change(number);
        base::putU32(page, kOffset, base::ByteView(page).u32(kOffset) + 1);
    }
    transaction.commit();
}

/// @throws std::runtime_error if the pages disagree
inline std::uint32_t read(jet::Database& database) {
    auto operation = database.beginRead();
    const std::uint32_t first = operation.page(kPages[0]).bytes.u32(kOffset);
    for (const jet::PageNumber number : kPages)
        if (operation.page(number).bytes.u32(kOffset) != first) throw std::runtime_error("half a write");
    return first;
}

}  // namespace test::counter
