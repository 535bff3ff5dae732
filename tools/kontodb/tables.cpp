#include <string>
#include <vector>

#include "jet/table/Table.h"
#include "tools/kontodb/AlignedColumns.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/PrintBuffer.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/TableSchema.h"
#include "tools/kontodb/ValueText.h"

namespace kontodb {
namespace {

struct CountedTable {
    base::Text name;
    std::size_t rows = 0;
};

/// Counts the rows themselves: the count in a table's definition may be out of date.
std::vector<CountedTable> countTables(jet::PageSource& source) {
    std::vector<CountedTable> tables;
    for (const jet::CatalogEntry& entry : userTables(source)) {
        const jet::Table table(source, entry);
        CountedTable& counted = tables.emplace_back();
        counted.name = entry.name;
        for (jet::RowCursor cursor(table); cursor.next();)
            ++counted.rows;
    }
    return tables;
}

void printJson(const std::vector<CountedTable>& tables, PrintBuffer& lines) {
    for (const CountedTable& table : tables) {
        std::string line = R"({"table": )";
        appendJsonText(line, table.name);
        lines.put(line + R"(, "rows": )" + std::to_string(table.rows) + "}");
        lines.endLine();
    }
}

void printPlain(const std::vector<CountedTable>& tables, PrintBuffer& lines) {
    lines.put("Tabelle\tZeilen");
    lines.endLine();
    for (const CountedTable& table : tables) {
        std::string line;
        appendPlainText(line, table.name);
        lines.put(line + "\t" + std::to_string(table.rows));
        lines.endLine();
    }
}

void printAligned(const std::vector<CountedTable>& tables, PrintBuffer& lines) {
    std::vector<std::pair<std::string, std::string>> cells{{"Tabelle", "Zeilen"}};
    for (const CountedTable& table : tables)
        cells.emplace_back(withoutControls(base::toUtf8(table.name)), std::to_string(table.rows));
    AlignedColumns columns(2);
    for (const auto& [name, rows] : cells) {
        columns.measure(0, name);
        columns.measure(1, rows);
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
        columns.put(lines, 0, cells[i].first, false);
        columns.put(lines, 1, cells[i].second, true);
        lines.endLine();
        if (i == 0) columns.putRule(lines);
    }
}

}  // namespace

int tables(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption}, {kJsonFlag});
    line.requireOperands({u"DATEI"});
    jet::Database database = openProtected(line.operand(0), line, console);
    const auto counted = [&] {
        auto operation = database.beginRead();
        return countTables(operation);
    }();
    PrintBuffer lines(console);
    const auto print = line.flag(kJsonFlag) ? printJson : console.isTerminal() ? printAligned : printPlain;
    print(counted, lines);
    lines.flush();
    return kExitSuccess;
}

}  // namespace kontodb
