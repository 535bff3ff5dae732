#pragma once

#include <functional>
#include <vector>

#include "jet/salvage/DamagedDefinition.h"
#include "jet/salvage/DamagedRow.h"

namespace jet {

/// A table of a damaged file: its definition and its pages, as far as they were found. It gives the same rows in the
/// same order each time.
class SalvagedTable {
public:
    /// @param file  must outlive this
    SalvagedTable(DamagedFile& file, DamagedDefinition definition, std::vector<PageNumber> pages,
                  std::vector<PageNumber> lostPages);

    const TableDefinition& definition() const { return definition_.definition; }
    const std::vector<base::Text>& definitionLosses() const { return definition_.losses; }
    const std::vector<PageNumber>& lostPages() const { return lostPages_; }
    /// Whether the table's map names pages after the end of the file, which was cut off then.
    bool goesBeyondFile() const;

    using Visit = std::function<void(RowPointer, DamagedRow&)>;
    using Report = std::function<void(RowPointer, const base::Text& reason)>;

    /// Calls visit for each row: pages ascending, then slots. Then come the data of moved rows to which nothing points,
    /// if the table has lost rows: in a sound table they are leftovers.
    /// @param visit   may take the values out of the row
    /// @param report  is called for each row that cannot be read; may be empty
    void eachRow(const Visit& visit, const Report& report = {}) const;

private:
    class Scan;
    DamagedFile* file_;
    DamagedDefinition definition_;
    std::vector<PageNumber> pages_;
    std::vector<PageNumber> lostPages_;
};

}  // namespace jet
