#include <string>

#include "base/RuntimeError.h"
#include "jet/sql/SelectExecutor.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/PrintBuffer.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/ValueText.h"

namespace kontodb {

namespace {

constexpr base::TextView kJsonFlag = u"--json";
class Printer {
public:
    Printer(const jet::sql::ResultSet& rows, Console& console) : rows_(rows), lines_(console) {}

    /// @throws base::RuntimeError (damage) when the rows before the damaged one are printed
    void print(bool asJson) {
        try {
            if (asJson)
                putJson();
            else
                putPlain();
        } catch (const base::RuntimeError&) {
            lines_.dropLine();
            lines_.flush();
            throw;
        }
        lines_.flush();
    }

private:
    void putPlain() {
        for (std::size_t column = 0; column < rows_.columnCount(); ++column) {
            if (column > 0) lines_.put('\t');
            appendPlainText(value_, rows_.column(column).name);
            putValue();
        }
        lines_.endLine();
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            const jet::sql::ResultRow fields = rows_.row(row);
            for (std::size_t column = 0; column < rows_.columnCount(); ++column) {
                if (column > 0) lines_.put('\t');
                putField(fields, column);
            }
            lines_.endLine();
        }
    }

    void putJson() {
        std::vector<std::string> names(rows_.columnCount());
        for (std::size_t column = 0; column < names.size(); ++column) {
            names[column] = column == 0 ? "{" : ", ";
            appendJsonText(names[column], rows_.column(column).name);
            names[column] += ": ";
        }
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            const jet::sql::ResultRow fields = rows_.row(row);
            for (std::size_t column = 0; column < names.size(); ++column) {
                lines_.put(names[column]);
                appendJson(value_, fields.value(column));
                putValue();
            }
            lines_.put('}');
            lines_.endLine();
        }
    }

    void putField(const jet::sql::ResultRow& fields, std::size_t column) {
        if (const auto units = fields.latinText(column)) {
            lines_.endAt(writePlainLatin(lines_.room(kMostLatinBytes * units->size()), *units));
        } else {
            appendPlain(value_, fields.value(column));
            putValue();
        }
    }

    void putValue() {
        lines_.put(value_);
        value_.clear();
    }

    const jet::sql::ResultSet& rows_;
    PrintBuffer lines_;
    std::string value_;  ///< its room is used again
};

}  // namespace

int query(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption}, {kJsonFlag});
    line.requireOperands({u"DATEI", u"ANWEISUNG"});
    jet::Database database = openProtected(line.operand(0), line, console);
    // Whoever reads what is printed may take his time: nothing is locked meanwhile.
    const jet::sql::ResultSet rows = [&] {
        auto operation = database.beginRead();
        return jet::sql::executeSelect(operation, line.operand(1));
    }();
    Printer(rows, console).print(line.flag(kJsonFlag));
    return kExitSuccess;
}

}  // namespace kontodb
