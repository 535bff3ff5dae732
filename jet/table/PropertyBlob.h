#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/RowPointer.h"

/// Properties of a table and its columns (LvProp of the catalog).
///
///     "MR2" 0, then chunks: u32 size (with these 6 bytes), u16 kind, body
///     kind 80   first: names, each u16 byte length, UTF-16LE; values name a property by its position in this list
///     kind 0    of the object: u32 size of the owner block, u16 name length, owner's name; then values
///     kind 1    of one column, likewise
///     value     u16 size (with itself), u8 design flag, u8 type, u16 name number, u16 data length, data
///
/// See docs/file-format.md, "Properties".
namespace jet {

struct Property {
    base::Text name;
    std::uint8_t designFlag = 1;
    std::uint8_t type = 0;  ///< code of a column type
    base::Bytes data;

    /// The data as a boolean: true if any byte is not 0.
    bool asBoolean() const;
    /// The data as UTF-16LE text.
    base::Text asText() const;
};

struct PropertyOwner {
    std::uint16_t kind = 1;  ///< 0 the object itself, 1 a column
    base::Text name;         ///< of the column
    std::vector<Property> properties;
};

class PropertyBlob {
public:
    /// @param place  the catalog row, for error messages
    /// @throws RuntimeError (damage)
    static PropertyBlob read(std::span<const std::uint8_t> bytes, RowPointer place);

    base::Bytes encode() const;

    std::vector<base::Text> names;  ///< in stored order; encode() appends those that are missing
    std::vector<PropertyOwner> owners;

    struct Chunk {
        std::uint16_t kind = 0;
        base::Bytes body;
    };
    std::vector<Chunk> unknownChunks;  ///< kept, and written after the owners

    /// @param column  empty for the object itself
    /// @return null if there is no such property
    const Property* find(base::TextView column, base::TextView name) const;

    /// What this column requires of its values, as far as properties say so.
    bool isRequired(base::TextView column) const;
    bool allowsZeroLength(base::TextView column) const;  ///< false if no property says so
};

}  // namespace jet
