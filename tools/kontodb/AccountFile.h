#pragma once

#include <cstdint>
#include <functional>

#include "base/Text.h"
#include "jet/fresh/TableDesign.h"
#include "jet/storage/PageIo.h"

namespace kontodb {

/// The account table as a fresh file gets it: numbers as primary key, an index on the names that lets equal ones
/// in, since the tool itself sees to it that there are none.
jet::TableDesign accountTableDesign();

/// Makes an account file.
/// @param io        an empty file
/// @param accounts  number of invented accounts
/// @param seed      which ones
/// @param report    is told the number made so far, before each account
void writeAccountFile(
    jet::PageIo& io, const base::Text& password, std::uint32_t accounts, std::uint64_t seed,
    const std::function<void(std::uint32_t)>& report = [](std::uint32_t) {});

}  // namespace kontodb
