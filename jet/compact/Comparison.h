#pragma once

#include "jet/page/Header.h"
#include "jet/page/PageSource.h"

namespace jet {

/// Reads a file and its compacted copy side by side.
/// @throws RuntimeError that names the first difference: in the header, the objects, a definition or a row, values and
/// their order included; or damage in one of them
void requireSameContents(PageSource& original, const Header& originalHeader, PageSource& copy,
                         const Header& copyHeader);

}  // namespace jet
