#pragma once

#include <cstdint>

#include "jet/check/Findings.h"
#include "jet/page/PageSource.h"

namespace jet {

/// What the checker has looked at.
struct CheckCounts {
    std::size_t pages = 0;
    std::size_t tables = 0;
    std::size_t rows = 0;
    std::size_t indexes = 0;
    std::size_t entries = 0;
    std::size_t longValues = 0;
};

struct CheckResult {
    Findings findings;
    CheckCounts counts;

    bool isSound() const { return findings.faultCount() == 0; }
};

/// Says whether a file is sound: every structure, and each against the others in both directions. It goes on behind
/// a fault, so that one run names all of them; what can be reached only through a damaged page is not looked at.
///
/// - header, global map: each page belongs to one owner or to none; none that is owned is free
/// - definitions: chains, lengths, marks, free bytes
/// - data pages: slots, free bytes, owner; rows: every value of every column; moved rows and their data, one to one
/// - long values: each part used once, chains, the maps of their columns
/// - indexes: a sorted, linked tree with every live row once and under its own key; the map has the tree's pages
/// - catalog, rights and relationships, which must agree with the definitions
///
/// What is a fault and what a note: docs/file-format.md, "Faults and notes". Memory grows with the file's pages and
/// with the rows of one table (8 bytes a row), time with the file's size; neither with what a damaged file claims to
/// hold. Changes nothing.
///
/// @param source     steady until the checker returns; page 0 must be one that Header::isJet4 knows
/// @param sizeBytes  of the file
/// @throws RuntimeError only if the file cannot be read, never for damage
CheckResult checkDatabase(PageSource& source, std::uint64_t sizeBytes);

}  // namespace jet
