#include "jet/sql/Execution.h"

#include <variant>

#include "jet/sql/DeleteExecutor.h"
#include "jet/sql/InsertExecutor.h"
#include "jet/sql/Parser.h"
#include "jet/sql/SelectExecutor.h"
#include "jet/sql/SqlError.h"
#include "jet/sql/UpdateExecutor.h"
#include "jet/transaction/Transaction.h"

namespace jet::sql {

std::int32_t StatementRun::execute(const Statement& statement) {
    if (const auto* update = std::get_if<Update>(&statement)) return executeUpdate(writerOf(update->table), *update);
    if (const auto* remove = std::get_if<Delete>(&statement)) return executeDelete(writerOf(remove->table), *remove);
    if (const auto* insert = std::get_if<Insert>(&statement)) return executeInsert(writerOf(insert->table), *insert);
    throw notUpdatable();
}

TableWriter& StatementRun::writerOf(const base::Text& table) {
    if (!writer_ || table_ != table) {
        writer_.emplace(store_, table);
        table_ = table;
    }
    return *writer_;
}

std::int32_t execute(Database& database, const Statement& statement) {
    if (const auto* select = std::get_if<Select>(&statement)) {
        ReadOperation operation = database.beginRead();
        executeSelect(operation, *select);
        return 0;
    }
    Transaction transaction(database);
    const std::int32_t rows = StatementRun(transaction).execute(statement);
    transaction.commit();
    return rows;
}

std::int32_t execute(Database& database, base::TextView statement) {
    return execute(database, parse(statement));
}

}  // namespace jet::sql
