#pragma once

#include <vector>

#include "jet/check/TableCheck.h"
#include "jet/table/Catalog.h"

namespace jet {

/// Reads the rows of the catalog. Reports a fault for each row that lacks a necessary value. Other damage is reported
/// when the table MSysObjects is checked.
std::vector<CatalogEntry> readCatalog(PageSource& source, Findings& findings);

/// Checks the catalog itself: parents, kinds, duplicate numbers, names.
void checkCatalog(const CheckContext& context, const std::vector<CatalogEntry>& entries);

/// Checks that each row of rights names an existing object.
void checkRights(const CheckContext& context, const std::vector<CatalogEntry>& entries);

}  // namespace jet
