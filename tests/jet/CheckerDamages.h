#pragma once

#include <functional>
#include <string>
#include <vector>

#include "jet/table/Catalog.h"
#include "jet/transaction/Database.h"

namespace jet {

/// A file in memory. The engine reads it, and the test changes it byte by byte.
class FileAtHand : public PageSource {
public:
    explicit FileAtHand(base::Bytes file) : bytes(std::move(file)) {}

    PageNumber pageCount() const override { return static_cast<PageNumber>(bytes.size() / kPageSize); }
    PageView page(PageNumber number) override;
    std::span<std::uint8_t> at(PageNumber number) { return std::span(bytes).subspan(number * kPageSize, kPageSize); }

    std::uint32_t u32(PageNumber number, std::size_t offset) { return page(number).bytes.u32(offset); }
    std::uint16_t u16(PageNumber number, std::size_t offset) { return page(number).bytes.u16(offset); }

    base::Bytes bytes;
};

/// Damage to a sound file, and what the checker must report.
struct Damage {
    std::string name;
    std::function<base::Text(FileAtHand&)> apply;  ///< returns a part of the expected finding
};

/// Damages that no change of a single byte makes; those are swept (CheckerSweepTest.cpp).
std::vector<Damage> damages();

}  // namespace jet
