#include "tools/kontodb/AccountFile.h"

#include <utility>
#include <vector>

#include "accounts/AccountTable.h"
#include "jet/fresh/Creator.h"
#include "tools/kontodb/InventedAccounts.h"

namespace kontodb {
namespace {

namespace table = tolv::accountTable;

jet::ColumnDesign textColumn(base::TextView name, std::uint16_t maxUnits) {
    return {base::Text(name), jet::ColumnType::Text, maxUnits};
}

}  // namespace

jet::TableDesign accountTableDesign() {
    jet::ColumnDesign id{base::Text(table::kId), jet::ColumnType::Long};
    id.isAutoNumber = true;
    jet::TableDesign design;
    design.name = table::kTable;
    design.columns = {id,
                      textColumn(table::kName, 100),
                      textColumn(table::kPass, 64),
                      textColumn(table::kServerPath, 255),
                      {base::Text(table::kProgUpdate), jet::ColumnType::Boolean}};
    design.indexes = {
        {u"PrimaryKey",
         {{base::Text(table::kId)}},
         true,
         jet::IndexDefinition::kUnique | jet::IndexDefinition::kRequired},
        {base::Text(table::kName), {{base::Text(table::kName)}}},
    };
    return design;
}

void writeAccountFile(jet::PageIo& io, const base::Text& password, std::uint32_t accounts, std::uint64_t seed,
                      const std::function<void(std::uint32_t)>& report) {
    jet::Creator creator(io, password);
    InventedAccounts invented(seed);
    std::uint32_t made = 0;
    creator.addTable(accountTableDesign(), [&](std::vector<base::Value>& row) {
        if (made == accounts) return false;
        report(made);
        Account account = invented.next();
        row = {static_cast<std::int32_t>(++made), std::move(account.name), std::move(account.password),
               std::move(account.serverPath), account.programUpdate};
        return true;
    });
    creator.finish();
}

}  // namespace kontodb
