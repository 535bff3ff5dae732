#pragma once

#include <vector>

#include "jet/fresh/FreshFile.h"
#include "jet/fresh/ObjectNumbers.h"
#include "jet/page/Header.h"
#include "jet/page/PageSource.h"
#include "jet/storage/PageIo.h"
#include "jet/table/Table.h"

namespace jet {

/// Writes everything that a file holds into a fresh one, without the pages, rows and index entries that were deleted:
/// creation date, password, encoding and order of text; every table with its definition, properties, indexes,
/// relationships, last auto number and rows; and all other objects, which are rows of the system tables (queries,
/// rights, forms, linked tables).
///
/// The rows of a table keep their order. The same file gives the same bytes, and so does its copy. Time grows with the
/// size of the file, memory by 8 bytes for each row of the longest table.
class Compactor {
public:
    /// @param source  must not change, and must outlive this
    /// @param header  of the source
    /// @throws RuntimeError that names the table whose definition cannot be read
    Compactor(PageSource& source, const Header& header);

    /// @param io  an empty file; the copy is on the disk when the function returns
    /// @throws RuntimeError (damage)
    void writeTo(PageIo& io) const;

private:
    ObjectNumbers giveNumbers(FreshFile& file) const;

    Header header_;
    std::vector<Table> tables_;
};

}  // namespace jet
