#pragma once

#include <vector>

#include "jet/check/TableCheck.h"
#include "jet/table/Catalog.h"

namespace jet {

/// The catalog's rows that can be read, with a fault for those that lack what each must have; other damage is
/// reported with the table MSysObjects.
std::vector<CatalogEntry> readCatalog(PageSource& source, Findings& findings);

/// Checks the catalog in itself: parents, kinds, doubled numbers, names.
void checkCatalog(const CheckContext& context, const std::vector<CatalogEntry>& entries);

/// Checks that rights are rights to something that is there.
void checkRights(const CheckContext& context, const std::vector<CatalogEntry>& entries);

}  // namespace jet
