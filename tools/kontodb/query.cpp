#include <string>

#include "jet/sql/SelectExecutor.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/ValueText.h"

namespace kontodb {

namespace {

constexpr base::TextView kJsonFlag = u"--json";
/// So much is gathered before it is printed.
constexpr std::size_t kBufferBytes = std::size_t{64} * 1024;

class Printer {
public:
    Printer(const jet::sql::ResultSet& rows, Console& console) : rows_(rows), console_(console) {}

    void printPlain() {
        for (std::size_t column = 0; column < rows_.columnCount(); ++column) {
            if (column > 0) buffer_ += '\t';
            appendPlainText(buffer_, rows_.column(column).name);
        }
        endLine();
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            const jet::sql::ResultRow fields = rows_.row(row);
            for (std::size_t column = 0; column < rows_.columnCount(); ++column) {
                if (column > 0) buffer_ += '\t';
                if (const auto units = fields.latinText(column))
                    appendPlainLatin(buffer_, *units);
                else
                    appendPlain(buffer_, fields.value(column));
            }
            endLine();
        }
        console_.print(buffer_);
    }

    void printJson() {
        std::vector<std::string> names(rows_.columnCount());
        for (std::size_t column = 0; column < names.size(); ++column) {
            names[column] = column == 0 ? "{" : ", ";
            appendJsonText(names[column], rows_.column(column).name);
            names[column] += ": ";
        }
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            const jet::sql::ResultRow fields = rows_.row(row);
            for (std::size_t column = 0; column < names.size(); ++column) {
                buffer_ += names[column];
                appendJson(buffer_, fields.value(column));
            }
            buffer_ += '}';
            endLine();
        }
        console_.print(buffer_);
    }

private:
    void endLine() {
        buffer_ += '\n';
        if (buffer_.size() < kBufferBytes) return;
        console_.print(buffer_);
        buffer_.clear();
    }

    const jet::sql::ResultSet& rows_;
    Console& console_;
    std::string buffer_;
};

}  // namespace

int query(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption}, {kJsonFlag});
    line.requireOperands(2);
    jet::Database database = openProtected(line.operand(0), line, console);
    auto operation = database.beginRead();
    const jet::sql::ResultSet rows = jet::sql::executeSelect(operation, line.operand(1));
    Printer printer(rows, console);
    if (line.flag(kJsonFlag))
        printer.printJson();
    else
        printer.printPlain();
    return kExitSuccess;
}

}  // namespace kontodb
