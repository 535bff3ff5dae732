#pragma once

#include "jet/page/PageStore.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The counts in a table's definition, changed where they stand in its pages.
class DefinitionCounters {
public:
    /// @param definition  as read through this store; both must outlive this
    DefinitionCounters(PageStore& store, const TableDefinition& definition) : store_(store), definition_(definition) {}

    std::uint32_t rowCount() const;
    std::uint32_t lastAutoNumber() const;
    void setRowCount(std::uint32_t count);
    void setLastAutoNumber(std::uint32_t number);

    /// Of the index at this position of TableDefinition::indexes; a hint that never goes down.
    std::uint32_t distinctKeys(std::size_t index) const;
    void setDistinctKeys(std::size_t index, std::uint32_t count);

private:
    std::uint32_t read(std::size_t offset) const;
    void write(std::size_t offset, std::uint32_t value);

    PageStore& store_;
    const TableDefinition& definition_;
};

}  // namespace jet
