#include "jet/salvage/Rebuild.h"

#include <algorithm>
#include <deque>
#include <map>
#include <utility>

#include "jet/fresh/ObjectNumbers.h"
#include "jet/fresh/SystemTables.h"
#include "jet/page/Header.h"
#include "jet/salvage/FreshCatalog.h"

namespace jet {
namespace {

/// The limit that Access documents for a file. A count above it is damaged itself.
constexpr std::size_t kMaxObjects = 32'768;

/// The order of texts that most columns have.
TextOrder usualOrder(const Salvage& salvage) {
    std::map<std::pair<std::uint16_t, std::uint8_t>, std::size_t> counts;
    for (const TableOfSalvage& table : salvage.tables()) {
        for (const Column& column : table.rows.definition().columns) {
            if (column.isText()) ++counts[{column.textOrder.lcid, column.textOrder.version}];
        }
    }
    const auto most = std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; });
    return most == counts.end() ? TextOrder{} : TextOrder{most->first.first, most->first.second};
}

/// Only password and encoding are those of the damaged file; the numbers of the accounts that own objects depend on the
/// creation date.
Header freshHeader(const DamagedFile& file, TextOrder order) {
    Header header = Header::fresh(knownCreationStamp().date);
    header.password = file.password();
    header.databaseKey = file.databaseKey();
    header.textOrder = order;
    return header;
}

class Rebuild {
public:
    Rebuild(DamagedFile& file, PageIo& io)
        : file_(file), salvage_(file), fresh_(io, freshHeader(file, usualOrder(salvage_))), catalog_(fresh_) {}

    SalvageReport run() {
        const TextOrder order = usualOrder(salvage_);
        report_.tables.resize(salvage_.tables().size());
        for (std::size_t i = 0; i < salvage_.tables().size(); ++i)
            plans_.emplace_back(salvage_.tables()[i], order, report_.tables[i]);
        std::vector<PageNumber> definitionPages;
        for (const TablePlan& plan : plans_) {
            definitionPages.push_back(fresh_.reserveDefinition());
            numbers_.give(plan.table().rows.definition().page, definitionPages.back());
        }
        RelationshipPlans relationships(salvage_, plans_, report_);
        for (std::size_t i = 0; i < plans_.size(); ++i)
            survey(i, relationships);
        relationships.settle(definitionPages);
        for (std::size_t i = 0; i < plans_.size(); ++i)
            write(plans_[i], definitionPages[i]);
        catalog_.addRelationships(relationships, plans_);
        catalog_.addObjects(salvage_, report_);
        catalog_.finish();
        fresh_.finish();
        reportRest();
        return std::move(report_);
    }

private:
    /// The columns of the table that hold numbers of objects.
    static std::vector<const Column*> numberColumns(const TablePlan& plan) {
        CatalogEntry entry;
        entry.name = plan.name();
        entry.flags = plan.table().flags;
        return ObjectNumbers::columnsIn(entry, plan.definition());
    }

    void survey(std::size_t table, RelationshipPlans& relationships) {
        TablePlan& plan = plans_[table];
        const auto numbers = numberColumns(plan);
        plan.survey([&](std::vector<base::Value>& row) {
            numbers_.renumber(numbers, row);
            relationships.addRow(table, row);
        });
    }

    void write(TablePlan& plan, PageNumber page) {
        TableDefinition definition = plan.definition();
        definition.page = page;
        const auto numbers = numberColumns(plan);
        fresh_.startMapPage();
        const auto table = fresh_.addTable(plan.name(), std::move(definition));
        plan.eachRow([&](std::vector<base::Value>& row) {
            numbers_.renumber(numbers, row);
            table->addRow(row);
        });
        table->finish();
        catalog_.addTable(plan, page);
    }

    void reportRest() {
        const PageNumber last = file_.pageCount() - 1;
        if (file_.bytesOf(last) < kPageSize)
            report_.file.lose(u"Die Datei endet mitten in Seite " + base::decimal(last) +
                              u"; sie ist wohl abgeschnitten.");
        for (const Salvage::LostTable& lost : salvage_.lostTables())
            reportLost(lost);
        const std::size_t counted = salvage_.countedObjects(), found = salvage_.objects().size();
        if (counted > found && counted <= kMaxObjects)
            report_.file.lose(u"Das Verzeichnis der Tabellen zählt " + countText(counted, u"Eintrag", u"Einträge") +
                              u", gefunden sind " + base::decimal(found) +
                              u": Es können Tabellen fehlen, die hier nicht genannt sind.");
        for (const Salvage::LostRow& lost : salvage_.lostSystemRows())
            report_.file.lose(placeText(lost.row) + u": " + lost.reason + u".");
        if (!file_.isPasswordCertain())
            report_.remarks.emplace_back(
                u"Das Datenbankkennwort ist nicht mehr ganz lesbar; die neue Datei hat das angegebene.");
    }

    void reportLost(const Salvage::LostTable& lost) {
        report_.file.lostRows += lost.rows;
        base::Text line = u"Die Tabelle '" + lost.name + u"' ist nicht lesbar: Ihr Bauplan auf Seite " +
                          base::decimal(lost.page) +
                          (lost.page < file_.pageCount() ? u" ist zerstört" : u" fehlt, die Datei endet davor");
        if (lost.rows > 0) line += u"; " + countText(lost.rows, u"Datensatz ist", u"Datensätze sind") + u" verloren";
        report_.file.lose(line + u".");
    }

    DamagedFile& file_;
    Salvage salvage_;
    SalvageReport report_;
    FreshFile fresh_;
    ObjectNumbers numbers_;
    FreshCatalog catalog_;
    std::deque<TablePlan> plans_;
};

}  // namespace

SalvageReport rebuild(DamagedFile& file, PageIo& io) {
    return Rebuild(file, io).run();
}

}  // namespace jet
