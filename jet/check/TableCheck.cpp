#include "jet/check/TableCheck.h"

#include <algorithm>
#include <set>
#include <unordered_set>

#include "jet/check/DefinitionCheck.h"
#include "jet/check/IndexCheck.h"
#include "jet/check/LongValueCheck.h"
#include "jet/check/TableRows.h"
#include "jet/table/Table.h"

namespace jet {
namespace {

/// A damaged definition may claim to have thousands of trees. The format allows 32.
constexpr std::size_t kMaxIndexes = 255;
constexpr std::uint16_t kColumnProperties = 1;  ///< PropertyOwner::kind

class TableCheck {
public:
    TableCheck(const CheckContext& context, const Table& table, CheckedTable& result, const Place& place,
               PageOwners::Owner owner)
        : context_(context),
          findings_(context.findings),
          table_(table),
          definition_(result.definition),
          result_(result),
          place_(place),
          owner_(owner),
          rows_(table),
          longValues_(context, definition_, place) {}

    void run() {
        const auto owned = context_.owners.readMap(definition_.ownedPages, place_);
        if (owned) {
            context_.owners.readPagesWithSpace(definition_.pagesWithSpace, *owned, place_);
            longValues_.claimPages();
            for (const PageNumber page : owned->pages)
                takePage(page);
            checkRows();
            longValues_.checkUnused();
        }
        for (std::size_t i = 0; i < std::min(definition_.indexes.size(), kMaxIndexes); ++i)
            checkIndex(context_, rows_, i, place_);
        findings_.guard(place_.withColumn(u"LvProp"), [&] { checkProperties(table_.properties()); });
    }

private:
    void takePage(PageNumber number) {
        if (!context_.owners.claim(number, owner_, place_)) return;
        findings_.guard(place_.onPage(number), [&] {
            const DataPage page = DataPage::read(context_.source, number, definition_.page);
            checkFreeBytes(page, findings_, place_);
            rows_.addPage(number, page.slotCount());
        });
    }

    void checkRows() {
        for (std::size_t i = 0, next = 0; i < rows_.slotCount(); i = next) {
            const PageNumber number = rows_.rowAt(i).page;
            const DataPage page = DataPage::read(context_.source, number, definition_.page);
            next = i + page.slotCount();
            for (std::size_t slot = 0; slot < page.slotCount(); ++slot)
                checkSlot(page, slot);
        }
        checkHiddenRows();
        checkCounters();
    }

    void checkSlot(const DataPage& page, std::size_t index) {
        const Slot slot = page.slot(index);
        const RowPointer pointer{page.number(), static_cast<std::uint8_t>(index)};
        switch (slot.state) {
            case SlotState::Live:
                ++result_.rowCount;
                findings_.guard(place_.atRow(pointer), [&] { checkRow(RowView(slot.bytes, definition_, pointer)); });
                break;
            case SlotState::Moved:
                ++result_.rowCount;
                findings_.guard(place_.atRow(pointer), [&] {
                    const Row row = table_.rowAt(pointer);
                    checkTarget(pointer, row.view.place());
                    checkRow(row.view);
                });
                break;
            case SlotState::Hidden:
                hidden_.push_back(pointer);
                break;
            case SlotState::Deleted:
                break;
        }
    }

    void checkTarget(RowPointer row, RowPointer target) {
        if (!rows_.hasPage(target.page)) {
            findings_.fault(place_.atRow(row), u"Die Daten der verschobenen Zeile stehen auf Seite " +
                                                   base::decimal(target.page) + u", die nicht zur Tabelle gehört.");
        }
        if (!targets_.insert(target.packed()).second) {
            findings_.fault(place_.atRow(row), u"Auf die Daten der verschobenen Zeile (" + rowText(target) +
                                                   u") verweist noch eine zweite Zeile.");
        }
    }

    void checkRow(const RowView& row) {
        checkNullMask(row);
        for (const Column& column : definition_.columns)
            findings_.guard(place_.atRow(row.place()), [&] { checkValue(row, column); });
    }

    /// In all rows the bits after the last column are 0.
    void checkNullMask(const RowView& row) {
        const unsigned columns = base::ByteView{row.bytes()}.u16(0);
        if (columns % 8 != 0 && (row.bytes().back() >> (columns % 8)) != 0) {
            findings_.fault(place_.atRow(row.place()),
                            u"Die Nullmaske hat Bits hinter der letzten der " + countText(columns) + u" Spalten.");
        }
    }

    void checkValue(const RowView& row, const Column& column) {
        if (column.type == ColumnType::Boolean || row.isNull(column)) return;
        const auto stored = row.stored(column);
        if (column.isLongValue()) {
            ++context_.counts.longValues;
            longValues_.checkValue(column, stored, row.place());
        }
        const base::Value value = valueOf(context_.source, row, column);
        if (const auto* text = std::get_if<base::Text>(&value); text != nullptr && column.type == ColumnType::Text)
            checkLength(row, column, 2 * text->size());
        if (column.type == ColumnType::Binary) checkLength(row, column, stored.size());
        if (const auto* number = std::get_if<std::int32_t>(&value); number != nullptr && column.isAutoNumber())
            highestNumber_ = std::max(highestNumber_, *number);
    }

    void checkLength(const RowView& row, const Column& column, std::size_t bytes) {
        if (bytes <= column.lengthBytes) return;
        findings_.fault(
            place_.withColumn(column.name).atRow(row.place()),
            u"Der Wert hat " + countText(bytes) + u" Bytes, erlaubt sind " + countText(column.lengthBytes) + u".");
    }

    /// Other writers leave data of moved rows. But if the table counts more rows than were found, some of this data was
    /// a row.
    void checkHiddenRows() {
        for (const RowPointer row : hidden_) {
            if (targets_.contains(row.packed())) continue;
            base::Text what = u"Auf die Daten einer verschobenen Zeile verweist keine Zeile.";
            if (result_.countsMoreThanFound())
                findings_.fault(place_.atRow(row), std::move(what));
            else
                findings_.note(place_.atRow(row), std::move(what));
        }
    }

    void checkCounters() {
        context_.counts.rows += result_.rowCount;
        if (definition_.rowCount != result_.rowCount) {
            findings_.note(place_.onPage(definition_.page), u"Die Zahl der Datensätze ist " +
                                                                base::decimal(definition_.rowCount) + u", es sind " +
                                                                countText(result_.rowCount) + u".");
        }
        if (highestNumber_ > static_cast<std::int32_t>(definition_.lastAutoNumber)) {
            findings_.note(place_.onPage(definition_.page),
                           u"Der letzte Autowert ist " + base::decimal(definition_.lastAutoNumber) +
                               u", vergeben ist schon " + base::decimal(highestNumber_) + u".");
        }
    }

    /// If a name was damaged, there are properties of the old name and a column without properties.
    void checkProperties(const PropertyBlob& properties) {
        const auto hasColumn = [&](const PropertyOwner& owner) {
            return owner.kind != kColumnProperties || definition_.column(owner.name) != nullptr;
        };
        const auto hasOwner = [&](const Column& column) {
            return std::ranges::any_of(properties.owners, [&](const PropertyOwner& owner) {
                return owner.kind == kColumnProperties && textsAreEqual(owner.name, column.name);
            });
        };
        const auto stranger = std::ranges::find_if_not(properties.owners, hasColumn);
        if (stranger == properties.owners.end() || std::ranges::all_of(definition_.columns, hasOwner)) return;
        findings_.fault(place_.withColumn(stranger->name).onPage(definition_.page),
                        u"Die Spalte hat Eigenschaften, und es gibt sie nicht.");
    }

    CheckContext context_;
    Findings& findings_;
    const Table& table_;
    const TableDefinition& definition_;
    CheckedTable& result_;
    Place place_;
    PageOwners::Owner owner_;
    TableRows rows_;
    LongValueCheck longValues_;
    std::vector<RowPointer> hidden_;
    std::unordered_set<std::uint32_t> targets_;
    std::int32_t highestNumber_ = 0;
};

}  // namespace

std::optional<CheckedTable> checkTable(const CheckContext& context, const CatalogEntry& entry) {
    const Place place = Place::ofTable(entry.name);
    const PageOwners::Owner owner = context.owners.addOwner(u"zur Tabelle '" + entry.name + u"'");
    std::optional<CheckedTable> checked;
    context.findings.guard(place.onPage(entry.id), [&] {
        checked = {entry.name, TableDefinition::read(context.source, entry.id)};
    });
    if (!checked) return std::nullopt;
    ++context.counts.tables;
    bool isOwn = true;
    for (const PageNumber page : checked->definition.chain)
        isOwn = context.owners.claim(page, owner, place) && isOwn;
    if (!isOwn) return std::nullopt;
    checkDefinition(context, checked->definition, place);
    // If the map of owned pages cannot be read, the table cannot either. That is reported with the map.
    std::optional<Table> table;
    passingOverDamage([&] { table.emplace(context.source, entry); });
    if (table)
        TableCheck(context, *table, *checked, place, owner).run();
    else
        context.owners.readMap(checked->definition.ownedPages, place);
    return checked;
}

}  // namespace jet
