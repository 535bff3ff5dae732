#pragma once

#include <optional>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/salvage/DamagedDataPage.h"
#include "jet/table/TableDefinition.h"

namespace jet {

struct LostValue {
    const Column* column;
    base::Text reason;  ///< without page and slot
};

/// The values of a row as far as they can be read.
struct DamagedRow {
    std::vector<base::Value> values;  ///< by column number; null where the value was lost
    std::vector<LostValue> lost;
};

/// Reads the bytes of a row of which any may be wrong. If the counts of the row are damaged, but the rest fits the
/// definition exactly, they are restored. If the offsets are damaged, the columns of the fixed area remain. If one
/// value cannot be read, the others remain.
/// @param row     reused memory for the result
/// @param reason  why the row cannot be read, if it cannot
/// @return false if nothing of it can be trusted
bool readDamagedRow(DamagedFile& file, const TableDefinition& definition, const DamagedSlot& slot, RowPointer place,
                    DamagedRow& row, base::Text& reason);

/// The bytes of a long value whose parts may be damaged, or may lie on damaged pages. Only parts that add up exactly to
/// the stored length are accepted.
/// @throws RuntimeError (damage)
base::Bytes readDamagedLongValue(DamagedFile& file, std::span<const std::uint8_t> stored, RowPointer place);

}  // namespace jet
