#include "jet/table/Catalog.h"

#include "jet/Errors.h"
#include "jet/value/SortKey.h"

namespace jet {
namespace {

/// Reads columns of a system table by name. A value of another type than the format demands is damage.
class SystemTable {
public:
    explicit SystemTable(const Table& table) : table_(table) {}

    const Column& column(base::TextView name) const {
        const Column* column = table_.definition().column(name);
        if (column == nullptr) {
            throw damaged(table_.definition().page, u"Die Systemtabelle hat keine Spalte '" + base::Text(name) + u"'");
        }
        return *column;
    }

    template <typename T>
    T value(const Row& row, const Column& column) const {
        const base::Value value = table_.value(row.view, column);
        const T* wanted = std::get_if<T>(&value);
        if (wanted == nullptr) {
            throw damagedRow(row.pointer,
                             u"Spalte '" + column.name + u"' der Systemtabelle hat keinen brauchbaren Wert");
        }
        return *wanted;
    }

    std::uint32_t unsignedLong(const Row& row, const Column& column) const {
        return static_cast<std::uint32_t>(value<std::int32_t>(row, column));
    }

private:
    const Table& table_;
};

}  // namespace

Catalog::Catalog(PageSource& source) {
    const Table table(source, CatalogEntry::ofCatalog());
    const SystemTable system(table);
    const Column& id = system.column(u"Id");
    const Column& parentId = system.column(u"ParentId");
    const Column& name = system.column(u"Name");
    const Column& type = system.column(u"Type");
    const Column& flags = system.column(u"Flags");
    for (RowCursor cursor(table); cursor.next();) {
        const Row& row = cursor.row();
        entries_.push_back({system.unsignedLong(row, id), system.unsignedLong(row, parentId),
                            system.value<base::Text>(row, name), system.value<std::int16_t>(row, type),
                            row.view.isNull(flags) ? 0 : system.unsignedLong(row, flags), row.pointer});
    }
}

const CatalogEntry* Catalog::table(base::TextView name) const {
    const CatalogEntry* found = nullptr;
    for (const CatalogEntry& entry : entries_) {
        if (!entry.isLocalTable()) continue;
        if (!base::equalsIgnoringAsciiCase(entry.name, name) && !textsAreEqual(entry.name, name)) continue;
        if (found != nullptr) throw damagedRow(entry.row, u"Die Tabelle '" + entry.name + u"' ist doppelt verzeichnet");
        found = &entry;
    }
    return found;
}

std::optional<Table> openTable(PageSource& source, base::TextView name) {
    const Catalog catalog(source);
    const CatalogEntry* entry = catalog.table(name);
    if (entry == nullptr) return std::nullopt;
    return Table(source, *entry);
}

}  // namespace jet
