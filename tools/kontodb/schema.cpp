#include <string>

#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/TableSchema.h"

namespace kontodb {
namespace {

constexpr base::TextView kSqlFlag = u"--sql";

/// Relationships come after all tables, since each needs two.
std::string asSql(const std::vector<TableSchema>& schemas) {
    std::string text;
    for (const TableSchema& schema : schemas)
        text += schemaAsSql(schema);
    for (const TableSchema& schema : schemas)
        text += relationshipsAsSql(schema);
    return text;
}

}  // namespace

int schema(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption}, {kJsonFlag, kSqlFlag});
    line.requireOperands({u"DATEI", u"TABELLE"}, 1);
    if (line.flag(kJsonFlag) && line.flag(kSqlFlag)) throw UsageError(u"--json und --sql schließen einander aus.");
    jet::Database database = openProtected(line.operand(0), line, console);
    const auto schemas = [&] {
        auto operation = database.beginRead();
        return readSchema(operation, line.count() > 1 ? &line.operand(1) : nullptr);
    }();
    if (line.flag(kSqlFlag)) {
        console.print(asSql(schemas));
        return kExitSuccess;
    }
    for (std::size_t i = 0; i < schemas.size(); ++i) {
        if (line.flag(kJsonFlag))
            console.print(schemaAsJson(schemas[i]));
        else
            console.print((i > 0 ? "\n" : "") + schemaForPeople(schemas[i]));
    }
    return kExitSuccess;
}

}  // namespace kontodb
