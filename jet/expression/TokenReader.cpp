#include "jet/expression/TokenReader.h"

#include <array>

namespace jet {

bool isName(const Token& token) {
    // These words are names only in brackets.
    constexpr std::array<base::TextView, 23> keywords = {u"AND",   u"ASC",  u"BETWEEN", u"BY",     u"DELETE", u"DESC",
                                                         u"FALSE", u"FROM", u"IN",      u"INSERT", u"INTO",   u"IS",
                                                         u"LIKE",  u"NOT",  u"NULL",    u"OR",     u"ORDER",  u"SELECT",
                                                         u"SET",   u"TRUE", u"UPDATE",  u"VALUES", u"WHERE"};
    if (token.kind == TokenKind::BracketedName) return true;
    if (token.kind != TokenKind::Word) return false;
    for (const base::TextView keyword : keywords)
        if (base::equalsIgnoringAsciiCase(token.text, keyword)) return false;
    return true;
}

}  // namespace jet
