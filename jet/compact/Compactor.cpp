#include "jet/compact/Compactor.h"

#include <algorithm>
#include <utility>

#include "jet/compact/TableCopy.h"

namespace jet {

Compactor::Compactor(PageSource& source, const Header& header) : header_(header), tables_(localTables(source)) {}

void Compactor::writeTo(PageIo& io) const {
    FreshFile file(io, header_);
    const ObjectNumbers numbers = giveNumbers(file);
    for (const Table& table : tables_) {
        TableDefinition definition = table.definition();
        definition.page = numbers.of(definition.page);
        numbers.renumber(definition.logicalIndexes);
        const auto fresh = file.addTable(table.name(), std::move(definition));
        TableCopy(table, numbers, *fresh).run();
    }
    file.finish();
}

/// Relationships name tables that come later, so all numbers are given first.
ObjectNumbers Compactor::giveNumbers(FreshFile& file) const {
    ObjectNumbers numbers;
    for (const Table& table : tables_) {
        const PageNumber page = table.definition().page;
        if (std::ranges::find(header_.systemTables, page) == header_.systemTables.end())
            numbers.give(page, file.reserveDefinition());
    }
    return numbers;
}

}  // namespace jet
