#pragma once

#include "jet/page/PageStore.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The counters in a table's definition, changed in place in its pages.
class DefinitionCounters {
public:
    /// @param definition  must have been read through this store; both must outlive this object
    DefinitionCounters(PageStore& store, const TableDefinition& definition) : store_(store), definition_(definition) {}

    std::uint32_t rowCount() const;
    std::uint32_t lastAutoNumber() const;
    void setRowCount(std::uint32_t count);
    void setLastAutoNumber(std::uint32_t number);

    /// For the index at this position of TableDefinition::indexes. The number is only a hint, and never goes down.
    std::uint32_t distinctKeys(std::size_t index) const;
    void setDistinctKeys(std::size_t index, std::uint32_t count);

private:
    std::uint32_t read(std::size_t offset) const;
    void write(std::size_t offset, std::uint32_t value);

    PageStore& store_;
    const TableDefinition& definition_;
};

}  // namespace jet
