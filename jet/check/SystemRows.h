#pragma once

#include <optional>

#include "jet/check/Findings.h"
#include "jet/check/TableRows.h"
#include "jet/table/Catalog.h"
#include "jet/table/Table.h"

namespace jet {

/// A row of a system table, read by column names. A value that is null, damaged or of another type gives nothing.
class SystemRow {
public:
    SystemRow(const Table& table, RowPointer pointer, const RowView& view)
        : table_(table), pointer_(pointer), view_(view) {}

    RowPointer pointer() const { return pointer_; }

    template <typename T>
    std::optional<T> value(base::TextView name) const {
        std::optional<T> found;
        passingOverDamage([&] {
            const Column* column = table_.definition().column(name);
            if (column == nullptr) return;
            const base::Value value = table_.value(view_, *column);
            if (const T* wanted = std::get_if<T>(&value)) found = *wanted;
        });
        return found;
    }

    std::optional<base::Text> text(base::TextView name) const { return value<base::Text>(name); }
    std::optional<std::uint32_t> number(base::TextView name) const {
        const auto signedNumber = value<std::int32_t>(name);
        if (!signedNumber) return std::nullopt;
        return static_cast<std::uint32_t>(*signedNumber);
    }

private:
    const Table& table_;
    RowPointer pointer_;
    const RowView& view_;
};

/// Calls visit(SystemRow) for each readable row. Damage is ignored here, because the table itself is checked elsewhere.
template <typename Visit>
void eachSystemRow(PageSource& source, const CatalogEntry& entry, Visit&& visit) {
    passingOverDamage([&] {
        const Table table(source, entry);
        TableRows rows(table);
        auto page = table.ownedPages().next(0);
        for (; page && *page < source.pageCount(); page = table.ownedPages().next(*page + 1)) {
            passingOverDamage([&] {
                const DataPage data = DataPage::read(source, *page, table.definition().page);
                rows.addPage(*page, data.slotCount());
            });
        }
        rows.each([&](std::size_t, RowPointer pointer, const RowView* view) {
            if (view != nullptr) visit(SystemRow(table, pointer, *view));
        });
    });
}

}  // namespace jet
