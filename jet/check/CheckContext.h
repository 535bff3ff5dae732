#pragma once

#include <cstddef>

#include "jet/check/Findings.h"
#include "jet/check/PageOwners.h"
#include "jet/page/PageSource.h"

namespace jet {

/// How much the checker has looked at.
struct CheckCounts {
    std::size_t pages = 0;
    std::size_t tables = 0;
    std::size_t rows = 0;
    std::size_t indexes = 0;
    std::size_t entries = 0;
    std::size_t longValues = 0;
};

/// The data that all parts of the checker share.
struct CheckContext {
    PageSource& source;
    Findings& findings;
    PageOwners& owners;
    CheckCounts& counts;
};

}  // namespace jet
