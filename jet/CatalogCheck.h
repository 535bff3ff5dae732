#pragma once

#include <vector>

#include "jet/Catalog.h"
#include "jet/TableCheck.h"

namespace jet {

/// The catalog's rows that can be read; damaged ones are reported with the table MSysObjects.
std::vector<CatalogEntry> readCatalog(PageSource& source);

/// Checks the catalog in itself: parents, doubled numbers and names.
void checkCatalog(const CheckContext& context, const std::vector<CatalogEntry>& entries);

/// Checks that rights are rights to something that is there.
void checkRights(const CheckContext& context, const std::vector<CatalogEntry>& entries);

}  // namespace jet
