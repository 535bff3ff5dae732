#pragma once

#include <cstdint>

#include "base/Text.h"
#include "jet/page/PageStore.h"
#include "jet/sql/Statement.h"
#include "jet/transaction/Database.h"

namespace jet::sql {

/// Carries out a statement whole or not at all: what it changes reaches the file in one transaction. The rows of a
/// SELECT are read and given up.
/// @return the number of rows that it added, changed or removed
/// @throws base::RuntimeError: the file cannot be written, is in use; the errors of the statement
std::int32_t execute(Database& database, const Statement& statement);

/// Carries out an UPDATE, DELETE or INSERT in a transaction that the caller commits, or drops if this throws.
/// @return the number of rows that it added, changed or removed
/// @throws base::RuntimeError: the errors of the statement; a SELECT is notUpdatable()
std::int32_t execute(PageStore& store, const Statement& statement);

/// Parses and carries out. A broken statement does not touch the file.
/// @throws base::RuntimeError also for the errors of parse()
std::int32_t execute(Database& database, base::TextView statement);

}  // namespace jet::sql
