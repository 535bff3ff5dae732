#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "jet/IndexCursor.h"
#include "jet/IndexKey.h"
#include "jet/LongValue.h"
#include "jet/TableWriter.h"
#include "jet/UsageMap.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/SampleFile.h"

namespace jet {

/// Understands what tests write in properties: "7" is a default, "*" none, ">0" a rule.
class FewExpressions final : public ExpressionReader {
public:
    std::optional<base::Value> defaultValue(base::TextView expression) const override {
        if (expression == u"7") return base::Value(std::int32_t{7});
        return std::nullopt;
    }

    std::unique_ptr<ValidationRule> validationRule(base::TextView rule, const TableDefinition& /*table*/,
                                                   const Column* column) const override {
        if (rule != u">0" || column == nullptr) return nullptr;
        return std::make_unique<Positive>(*column);
    }

private:
    class Positive final : public ValidationRule {
    public:
        explicit Positive(const Column& column) : column_(column) {}
        bool permits(const RowValues& row) const override {
            const base::Value value = row.valueOf(column_);
            const auto* number = std::get_if<std::int32_t>(&value);
            return number != nullptr && *number > 0;
        }

    private:
        const Column& column_;
    };
};

/// A file of tables in memory with one transaction after the other over it.
class WrittenFile {
public:
    explicit WrittenFile(const std::vector<test::SampleTable>& tables) : store(test::sampleFile(tables)) {}
    explicit WrittenFile(const base::Bytes& file) : store(file) {}

    TableWriter writer(base::TextView table, WriteKind kind = WriteKind::Execute) {
        return {store, table, kind, expressions};
    }

    /// The table's rows by the value of its first column, which is a Long.
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
    FewExpressions expressions;
};

/// What is wrong with the table's books: pages of its maps that are free or owned twice, entries that are missing or
/// too many, a wrong count of rows. Empty if nothing is.
inline std::string faultsOf(PageSource& source, base::TextView name) {
    const Table table = *openTable(source, name);
    const TableDefinition& definition = table.definition();
    std::string faults;
    std::map<PageNumber, int> owners;
    const auto own = [&](RowPointer row) {
        const UsageMap map = UsageMap::read(source, row);
        for (auto page = map.next(0); page; page = map.next(*page + 1))
            ++owners[*page];
    };
    own(definition.ownedPages);
    for (const LongValueMaps& maps : definition.longValueMaps)
        own(maps.owned);
    for (const IndexDefinition& index : definition.indexes)
        own(index.usageMap);
    const UsageMap free = UsageMap::read(source, {1, 0});
    for (const auto& [page, count] : owners) {
        if (count != 1 || free.contains(page))
            faults += "page " + std::to_string(page) + " is owned and free, or twice; ";
    }
    std::size_t rows = 0;
    for (RowCursor cursor(table); cursor.next();)
        ++rows;
    if (rows != definition.rowCount) faults += "the count of rows is wrong; ";
    for (const IndexDefinition& index : definition.indexes) {
        std::size_t expected = 0;
        for (RowCursor cursor(table); cursor.next();) {
            base::Bytes key;
            if (keyOfRow(source, index, cursor.row().view, key)) ++expected;
        }
        std::size_t entries = 0;
        IndexCursor cursor(source, definition, index);
        for (bool there = cursor.first(); there; there = cursor.next(), ++entries)
            rowAtEntry(table, index, cursor);
        if (entries != expected) faults += "an index has " + std::to_string(entries) + " entries; ";
    }
    return faults;
}

}  // namespace jet
