#pragma once

#include <cstdint>

#include "base/Text.h"
#include "jet/RowPointer.h"

namespace jet {

/// An object of the catalog (MSysObjects).
struct CatalogEntry {
    static constexpr std::int16_t kLocalTable = 1;
    static constexpr std::int16_t kRelationship = 8;
    static constexpr std::int16_t kCheckConstraint = 9;  ///< a condition for a whole table
    static constexpr std::uint32_t kTablesContainer = 0x0F000001;
    static constexpr std::uint32_t kRelationshipsContainer = 0x0F000003;
    static constexpr std::uint32_t kSystemFlags = 0x80000002;  ///< a system object, or hidden like one

    static constexpr PageNumber kDefinitionOfCatalog = 2;

    /// The entry that opens MSysObjects itself.
    static CatalogEntry ofCatalog() {
        return {kDefinitionOfCatalog, kTablesContainer, u"MSysObjects", kLocalTable, kSystemFlags, {}};
    }

    std::uint32_t id = 0;  ///< local tables: first page of the definition
    std::uint32_t parentId = 0;
    base::Text name;
    std::int16_t type = 0;
    std::uint32_t flags = 0;
    RowPointer row;

    bool isLocalTable() const { return type == kLocalTable; }
    bool isSystem() const { return (flags & kSystemFlags) != 0; }
};

}  // namespace jet
