#pragma once

#include "jet/page/Header.h"
#include "jet/page/PageSource.h"

namespace jet {

/// Reads a file and its compacted copy side by side.
/// The stored bytes of all values must be equal, and all facts of the definitions; places and counts may differ.
/// Whether the indexes of the copy agree with its rows is not looked at: that is what checkDatabase() is for.
/// @throws RuntimeError that names the first difference: in the header, the tables, a definition or a row, the order of
/// rows included; or damage in one of them
void requireSameContents(PageSource& original, const Header& originalHeader, PageSource& copy,
                         const Header& copyHeader);

}  // namespace jet
