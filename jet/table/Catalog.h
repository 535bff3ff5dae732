#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/page/PageSource.h"

namespace jet {

/// An object of the catalog (MSysObjects).
struct CatalogEntry {
    static constexpr std::int16_t kLocalTable = 1;
    static constexpr std::int16_t kRelationship = 8;
    static constexpr std::int16_t kCheckConstraint = 9;  ///< a condition over a whole table
    static constexpr std::uint32_t kTablesContainer = 0x0F000001;
    static constexpr std::uint32_t kRelationshipsContainer = 0x0F000003;
    static constexpr std::uint32_t kSystemFlags = 0x80000002;  ///< system, or hidden as such

    std::uint32_t id = 0;  ///< local tables: page of the definition
    std::uint32_t parentId = 0;
    base::Text name;
    std::int16_t type = 0;
    std::uint32_t flags = 0;
    RowPointer row;

    bool isLocalTable() const { return type == kLocalTable; }
    bool isSystem() const { return (flags & kSystemFlags) != 0; }
};

/// What lies in the file: the rows of MSysObjects (definition on page 2), read once.
class Catalog {
public:
    static constexpr PageNumber kDefinitionPage = 2;

    /// The entry by which MSysObjects itself is opened.
    static CatalogEntry ownEntry();

    /// @throws RuntimeError (damage)
    explicit Catalog(PageSource& source);

    const std::vector<CatalogEntry>& entries() const { return entries_; }

    /// Local tables, system tables included, by name.
    /// @return null if there is none
    /// @throws RuntimeError (damage) if two have this name
    const CatalogEntry* table(base::TextView name) const;

private:
    std::vector<CatalogEntry> entries_;
};

}  // namespace jet
