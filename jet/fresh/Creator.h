#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/fresh/FreshFile.h"
#include "jet/fresh/FreshTable.h"
#include "jet/fresh/SystemTables.h"
#include "jet/fresh/TableDesign.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// Makes a new file: the system tables as the original engine makes them, and tables with their rows and indexes. The
/// same calls give the same bytes on every machine; the creation date is always the same.
///
/// Pages: 0 header, 1 global map, 2 to 5 definitions of the system tables, 6 their maps, 7 to 13 roots of their
/// indexes, 14 and 15 their rows, then the tables in order. See docs/file-format.md, "A fresh file".
class Creator {
public:
    /// Supplies the rows of a table one after the other, with values by column number. Returns false when there are no
    /// more.
    using RowFeed = std::function<bool(std::vector<base::Value>& row)>;

    /// @param io        an empty file; must outlive the creator. The file is not sound before finish().
    /// @param password  at most 20 units; empty for none
    /// @throws RuntimeError if the password is longer or contains a zero unit
    Creator(PageIo& io, base::Text password, CreationStamp stamp = knownCreationStamp());

    /// @throws RuntimeError if a row is too long, or two rows are equal in a unique index
    void addTable(const TableDesign& design, const RowFeed& nextRow);

    /// Writes the rest and waits until everything is on the disk.
    void finish();

private:
    void addObject(const TableDesign& design, PageNumber definitionPage);

    CreationStamp stamp_;
    FreshFile file_;
    std::vector<std::unique_ptr<FreshTable>> systemTables_;
};

}  // namespace jet
