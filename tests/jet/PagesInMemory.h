#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "jet/page/DataPage.h"
#include "tests/support/MemoryPageStore.h"

namespace jet {

/// Pages that a test makes one by one. Pages 0 and 1 have a special meaning: they exist from the start and are all
/// zero, unless the pages come from a file.
class PagesInMemory : public test::MemoryPageStore {
public:
    explicit PagesInMemory(const base::Bytes& file = base::Bytes(2 * kPageSize)) : MemoryPageStore(file) {}

    PageNumber add(const base::Bytes& bytes = {}) {
        const PageNumber number = append();
        std::copy(bytes.begin(), bytes.end(), change(number).begin());
        return number;
    }

    /// Adds a data page with these rows.
    PageNumber addDataPage(std::uint32_t owner, const std::vector<base::Bytes>& rows) {
        const PageNumber number = add();
        clearDataPage(change(number), owner);
        for (const base::Bytes& row : rows)
            appendRow(change(number), row);
        return number;
    }
};

/// Number and description of the RuntimeError that the step throws; "no error" if it throws none.
template <typename Step>
std::string errorOf(Step&& step) {
    try {
        step();
    } catch (const base::RuntimeError& error) {
        return error.what();
    }
    return "no error";
}

}  // namespace jet
