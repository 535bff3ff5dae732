#pragma once

#include <cstdint>

#include "jet/check/CheckContext.h"
#include "jet/check/Findings.h"
#include "jet/page/PageSource.h"

namespace jet {

struct CheckResult {
    Findings findings;
    CheckCounts counts;

    bool isSound() const { return findings.faultCount() == 0; }
};

/// Checks whether a file is sound: every structure by itself, and each against the others in both directions. The check
/// continues after a fault, so that one run names all faults. What can be reached only through a damaged page is not
/// checked.
///
/// - header, global map: each page has at most one owner; no page with an owner is free
/// - definitions: chains, lengths, marks, free bytes
/// - data pages: slots, free bytes, owner; rows: every value of every column; each moved row and its data belong
///   together
/// - long values: no part is used twice; chains; the maps of their columns
/// - indexes: a sorted, linked tree that has every live row once, under its own key; the map has the pages of the tree
/// - catalog, rights and relationships, which must agree with the definitions
///
/// For the difference between a fault and a note see docs/file-format.md, "Faults and notes". Memory grows with the
/// pages of the file and with the rows of one table (8 bytes per row), time with the size of the file. Neither depends
/// on numbers that a damaged file may invent. Nothing is changed.
///
/// @param source     must not change before the checker returns; Header::isJet4 must accept its page 0
/// @param sizeBytes  of the file
/// @throws RuntimeError only if the file cannot be read, never because of damage
CheckResult checkDatabase(PageSource& source, std::uint64_t sizeBytes);

}  // namespace jet
