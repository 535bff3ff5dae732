#pragma once

#include <cstdint>
#include <optional>

#include "base/Text.h"
#include "jet/change/TableWriter.h"
#include "jet/page/PageStore.h"
#include "jet/sql/Statement.h"
#include "jet/transaction/Database.h"

namespace jet::sql {

/// Carries out one statement in one transaction, so completely or not at all. A SELECT is carried out, too, but its
/// rows are dropped.
/// @return the number of rows that it added, changed or removed
/// @throws base::RuntimeError: the file cannot be written, is in use; the errors of the statement
std::int32_t execute(Database& database, const Statement& statement);

/// Carries out UPDATE, DELETE and INSERT statements one after the other; each sees what the ones before it have
/// changed. The caller commits the transaction, or drops it if one of them throws.
class StatementRun {
public:
    /// @param store  a transaction; nobody else may change it while this lives
    explicit StatementRun(PageStore& store) : store_(store) {}

    /// @return the number of rows that it added, changed or removed
    /// @throws base::RuntimeError: the errors of the statement; a SELECT is notUpdatable()
    std::int32_t execute(const Statement& statement);

private:
    TableWriter& writerOf(const base::Text& table);

    PageStore& store_;
    base::Text table_;
    /// For the table of the last statement. It is kept because it knows which pages are free: a new writer has to go
    /// through the file to find that out.
    std::optional<TableWriter> writer_;
};

/// Parses the statement and carries it out. If the statement is broken, the file is not touched.
/// @throws base::RuntimeError also for the errors of parse()
std::int32_t execute(Database& database, base::TextView statement);

}  // namespace jet::sql
