#pragma once

#include <map>
#include <vector>

#include "jet/change/TableWriter.h"
#include "jet/table/Catalog.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/SampleFile.h"

namespace jet {

/// A file in memory whose tables are changed through TableWriter.
class WrittenFile {
public:
    explicit WrittenFile(const std::vector<test::SampleTable>& tables) : store(test::sampleFile(tables)) {}
    explicit WrittenFile(const base::Bytes& file) : store(file) {}

    TableWriter writer(base::TextView table) { return {store, table}; }

    /// The rows of the table by the value of the first column, which is a Long.
    std::map<std::int32_t, std::vector<base::Value>> rows(base::TextView name) {
        std::map<std::int32_t, std::vector<base::Value>> found;
        const Table table = *openTable(store, name);
        for (RowCursor cursor(table); cursor.next();) {
            std::vector<base::Value> values;
            for (const Column& column : table.definition().columns)
                values.push_back(table.value(cursor.row().view, column));
            found[std::get<std::int32_t>(values[0])] = std::move(values);
        }
        return found;
    }

    RowPointer find(base::TextView name, std::int32_t number) {
        const Table table = *openTable(store, name);
        for (RowCursor cursor(table); cursor.next();) {
            if (table.value(cursor.row().view, table.definition().columns[0]) == base::Value(number))
                return cursor.row().pointer;
        }
        return {};
    }

    test::MemoryPageStore store;
};

}  // namespace jet
