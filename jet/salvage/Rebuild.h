#pragma once

#include "jet/salvage/Salvage.h"
#include "jet/salvage/SalvageReport.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// Writes what can still be read of a damaged file into a fresh one that passes every check. No row is left out because
/// of a rule: an index that two rows contradict is no longer unique, a relationship that a row contradicts is no longer
/// enforced, and both are reported. Password and encoding are kept. Every table is read twice; memory grows with the
/// pages of the file and with the keys of one table.
///
/// @param file  must not change before the function returns
/// @param io    an empty file; the new one is on the disk when the function returns
/// @throws RuntimeError if the file is no database, if the machine fails, or if the new file would be too large
SalvageReport rebuild(DamagedFile& file, PageIo& io);

}  // namespace jet
