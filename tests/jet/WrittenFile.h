#pragma once

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "jet/change/TableWriter.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/SampleFile.h"

namespace jet {

/// Understands the expressions that tests use in properties: "7" is a default, "*" means none, ">0" is a rule.
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

/// A file of tables in memory, changed by one transaction after the other.
class WrittenFile {
public:
    explicit WrittenFile(const std::vector<test::SampleTable>& tables) : store(test::sampleFile(tables)) {}
    explicit WrittenFile(const base::Bytes& file) : store(file) {}

    TableWriter writer(base::TextView table, WriteKind kind = WriteKind::Execute) {
        return {store, table, kind, expressions};
    }

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
    FewExpressions expressions;
};

}  // namespace jet
