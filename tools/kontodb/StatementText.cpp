#include "tools/kontodb/StatementText.h"

#include <string>

#include "tools/kontodb/ProtectedFile.h"

namespace kontodb {
namespace {

/// No statement that somebody writes is nearly as long.
constexpr std::size_t kMostBytes = std::size_t{1} << 20U;

/// Whether the pattern of a LIKE holds a wildcard of Access's own windows. A text that merely speaks of LIKE may be
/// taken for one; it is only for a hint.
bool hasForeignWildcard(base::TextView statement) {
    const auto isLike = [&](std::size_t at) { return base::equalsIgnoringAsciiCase(statement.substr(at, 4), u"like"); };
    for (std::size_t at = 0; at < statement.size(); ++at) {
        if (!isLike(at)) continue;
        const std::size_t quote = statement.find_first_not_of(u" \t\r\n", at + 4);
        if (quote == base::TextView::npos || (statement[quote] != u'\'' && statement[quote] != u'"')) continue;
        const std::size_t end = statement.find(statement[quote], quote + 1);
        const base::TextView pattern = statement.substr(quote, end - quote);
        if (pattern.find_first_of(u"*?") != base::TextView::npos) return true;
    }
    return false;
}

}  // namespace

base::Text statementOf(const CommandLine& line, std::size_t operand, Console& console) {
    if (line.operand(operand) != kStandardInput) return line.operand(operand);
    if (line.option(kPasswordFileOption) == base::Text(kStandardInput))
        throw UsageError(u"Aus der Standardeingabe kommt entweder die Anweisung oder das Kennwort.");
    std::string text;
    for (std::string part = console.readLine(kMostBytes); !part.empty(); part = console.readLine(kMostBytes)) {
        text += part;
        if (text.size() > kMostBytes) throw UsageError(u"Die Standardeingabe ist zu lang für eine Anweisung.");
    }
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
        throw UsageError(u"In der Standardeingabe steht keine Anweisung.");
    return base::fromUtf8(text);
}

void hintAtWildcards(base::TextView statement, Console& console) {
    if (!hasForeignWildcard(statement)) return;
    console.printError(
        "Hinweis: Bei LIKE steht % für beliebig viele Zeichen und _ für eines; * und ? sind Zeichen wie andere.\n");
}

}  // namespace kontodb
