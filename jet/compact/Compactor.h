#pragma once

#include "jet/page/Header.h"
#include "jet/page/PageSource.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// Writes everything that a file holds into a fresh one, without the pages, rows and index entries that were deleted:
/// the header with password, encoding and order of text; every table with its definition, properties, indexes,
/// relationships, last auto number and rows; and all other objects, which are rows of the system tables.
///
/// The rows of a table keep their order. The same file gives the same bytes, and so does its copy. Memory grows with
/// the keys of one table, time with the size of the file.
///
/// @param source  sound; must not change before the function returns
/// @param header  of the source
/// @param io      an empty file; the copy is on the disk when the function returns
/// @throws RuntimeError, before anything is written, that names what cannot be carried over; later, if the source is
/// damaged, or a row has a key that is not certain (sortKeyIsCertain)
void compactDatabase(PageSource& source, const Header& header, PageIo& io);

}  // namespace jet
