#include "tests/fuzz/ReadEverything.h"

#include <functional>
#include <memory>
#include <utility>

#include "base/RuntimeError.h"
#include "jet/check/Checker.h"
#include "jet/index/IndexedRow.h"
#include "jet/table/Catalog.h"
#include "jet/table/Table.h"
#include "jet/transaction/Database.h"
#include "jet/tree/IndexCursor.h"
#include "tests/support/FaultyStorage.h"

namespace jet {
namespace {

/// Damage ends only this step: what follows a broken table must be read, too.
void countingDamage(ReadEverythingResult& result, const std::function<void()>& step) {
    try {
        step();
    } catch (const base::RuntimeError& error) {
        // The tool shows the description to the user, so it must not be empty.
        if (error.description().empty()) throw std::logic_error("a run-time error without description");
        if (result.damageCount++ == 0) result.firstDamage = base::toUtf8(error.description());
    }
}

void readIndex(PageSource& source, const Table& table, const IndexDefinition& index, ReadEverythingResult& result) {
    IndexCursor cursor(source, table.definition().page, index.rootPage);
    for (bool there = cursor.first(); there; there = cursor.next()) {
        rowAtEntry(table, index, cursor);
        ++result.valueCount;
    }
    for (bool there = cursor.last(); there; there = cursor.previous())
        ++result.valueCount;
}

void readTable(PageSource& source, const CatalogEntry& entry, ReadEverythingResult& result) {
    const Table table(source, entry);
    countingDamage(result, [&] {
        for (RowCursor cursor(table); cursor.next();) {
            for (const Column& column : table.definition().columns) {
                table.value(cursor.row().view, column);
                ++result.valueCount;
            }
        }
    });
    countingDamage(result, [&] { table.properties(); });
    for (const IndexDefinition& index : table.definition().indexes) {
        countingDamage(result, [&] { readIndex(source, table, index, result); });
    }
}

/// The checker must report damage and not throw because of it.
std::size_t faultsOf(PageSource& source, std::uint64_t sizeBytes) {
    try {
        return checkDatabase(source, sizeBytes).findings.faultCount();
    } catch (const base::RuntimeError& error) {
        throw std::logic_error("damage stops the checker: " + base::toUtf8(error.description()));
    }
}

}  // namespace

ReadEverythingResult readEverything(base::Bytes file, base::TextView password) {
    ReadEverythingResult result;
    const std::uint64_t sizeBytes = file.size();
    countingDamage(result, [&] {
        Database database = Database::open(test::Machine(std::move(file)).storage(), password);
        ReadOperation operation = database.beginRead();
        result.faultCount = faultsOf(operation, sizeBytes);
        const Catalog catalog(operation);
        for (const CatalogEntry& entry : catalog.entries()) {
            if (entry.isLocalTable()) countingDamage(result, [&] { readTable(operation, entry, result); });
        }
        if (result.damageCount > 0 && result.faultCount == 0)
            throw std::logic_error("the checker finds no fault in a file that cannot be read: " + result.firstDamage);
    });
    return result;
}

}  // namespace jet
