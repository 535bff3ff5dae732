#include "tools/kontodb/AccessHint.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "jet/Errors.h"

namespace kontodb {
namespace {

namespace fs = std::filesystem;

bool isFile(const base::Text& path) {
    std::error_code ignored;
    return fs::is_regular_file(fs::path(path), ignored);
}

/// Nothing is written: the file is only opened.
bool isWritable(const base::Text& path) {
    return std::fstream(fs::path(path), std::ios::binary | std::ios::in | std::ios::out).is_open();
}

std::string quoted(const base::Text& path) {
    return "'" + base::toUtf8(path) + "'";
}

std::string onReadOnly(std::span<const base::Text> operands) {
    for (const base::Text& operand : operands) {
        if (isFile(operand) && !isWritable(operand))
            return "Die Datei " + quoted(operand) + " ist schreibgeschützt, oder Sie dürfen sie nicht ändern.\n";
    }
    return "Der Ordner der Datei ist schreibgeschützt, oder Sie dürfen darin keine Dateien anlegen: Während\n"
           "geschrieben wird, liegt dort ein Journal.\n";
}

std::string onAccessDenied(const base::Text& path) {
    std::error_code ignored;
    const auto kind = fs::status(fs::path(path), ignored).type();
    if (kind == fs::file_type::directory) return quoted(path) + " ist ein Ordner.\n";
    if (kind == fs::file_type::not_found)
        return "Der Ordner von " + quoted(path) +
               " ist schreibgeschützt, oder Sie dürfen darin keine Dateien anlegen.\n";
    return {};
}

}  // namespace

void hintAtAccess(const base::RuntimeError& error, std::span<const base::Text> operands, Console& console) {
    if (error.description() == jet::readOnly().description()) return console.printError(onReadOnly(operands));
    for (const base::Text& operand : operands) {
        if (error.description() == jet::accessDenied(operand).description())
            return console.printError(onAccessDenied(operand));
    }
}

}  // namespace kontodb
