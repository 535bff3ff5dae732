#include "tools/kontodb/StatementText.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <variant>

#include "jet/Errors.h"
#include "tools/kontodb/ProtectedFile.h"

namespace kontodb {
namespace {

/// No text that somebody writes is nearly as long.
constexpr std::size_t kMostBytes = std::size_t{1} << 26U;
constexpr std::size_t kInputBytesAtOnce = std::size_t{1} << 16U;

[[noreturn]] void failTooLong(const base::Text& source) {
    throw UsageError(source + u" ist zu lang; erlaubt sind 64 MB.");
}

std::string standardInput(const CommandLine& line, Console& console) {
    if (line.option(kPasswordFileOption) == base::Text(kStandardInput))
        throw UsageError(u"Aus der Standardeingabe kommt entweder die Anweisung oder das Kennwort.");
    std::string text;
    for (std::string part = console.readLine(kMostBytes); !part.empty(); part = console.readLine(kMostBytes)) {
        text += part;
        if (text.size() > kMostBytes) failTooLong(u"Die Standardeingabe");
    }
    return text;
}

std::string contentOf(const base::Text& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) throw jet::fileNotFound(path);
    std::string text, part(kInputBytesAtOnce, '\0');
    do {
        file.read(part.data(), static_cast<std::streamsize>(part.size()));
        text.append(part, 0, static_cast<std::size_t>(file.gcount()));
        if (text.size() > kMostBytes) failTooLong(u"Die Datei '" + path + u"'");
    } while (file);
    if (file.bad()) throw jet::accessDenied(path);
    return text;
}

/// Bytes of another encoding would get into the database as other characters.
base::Text decoded(std::string text, const base::Text& source) {
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    base::Text units = base::fromUtf8(text);
    if (base::toUtf8(units) != text || units.find(u'\0') != base::Text::npos)
        throw UsageError(source + u" ist nicht in UTF-8 gespeichert.");
    return units;
}

bool misreadsLike(const jet::Expression& expression, bool foundNothing) {
    using Kind = jet::Expression::Kind;
    if (expression.kind == Kind::Like && (foundNothing || expression.negated)) {
        const auto* pattern = std::get_if<base::Text>(&expression.operands[1].value);
        if (pattern != nullptr && pattern->find_first_of(u"*?") != base::Text::npos) return true;
    }
    return std::ranges::any_of(expression.operands, [&](const jet::Expression& operand) {
        return misreadsLike(operand, foundNothing || expression.kind == Kind::Not);
    });
}

const jet::Expression* conditionOf(const jet::sql::Statement& statement) {
    return std::visit(
        [](const auto& each) -> const jet::Expression* {
            if constexpr (requires { each.where; }) return each.where ? &*each.where : nullptr;
            return nullptr;
        },
        statement);
}

}  // namespace

base::Text statementOf(const CommandLine& line, std::size_t operand, Console& console) {
    if (line.operand(operand) != kStandardInput) return line.operand(operand);
    base::Text text = statementsIn(base::Text(kStandardInput), line, console);
    if (text.find_first_not_of(u" \t\r\n") == base::Text::npos)
        throw UsageError(u"In der Standardeingabe steht keine Anweisung.");
    return text;
}

base::Text statementsIn(const base::Text& path, const CommandLine& line, Console& console) {
    if (path == kStandardInput) return decoded(standardInput(line, console), u"Die Standardeingabe");
    return decoded(contentOf(path), u"Die Datei '" + path + u"'");
}

bool hintAtWildcards(const jet::sql::Statement& statement, bool foundNothing, Console& console) {
    const jet::Expression* condition = conditionOf(statement);
    if (condition == nullptr || !misreadsLike(*condition, foundNothing)) return false;
    console.printError(
        "Hinweis: Bei LIKE steht % für beliebig viele Zeichen und _ für eines; * und ? sind Zeichen wie andere.\n");
    return true;
}

}  // namespace kontodb
