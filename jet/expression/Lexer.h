#pragma once

#include <cstddef>

#include "base/Text.h"
#include "base/Value.h"

namespace jet {

enum class TokenKind {
    End,
    Word,           ///< a name or a keyword; the parser decides which
    BracketedName,  ///< a name in square brackets; never a keyword
    Literal,        ///< text, number, date or GUID, as a value
    Symbol,         ///< one of ( ) , . ; * = < > <= >= <> + - and any other unit
    BrokenText,     ///< a text without a closing quote; extends to the end
    BrokenDate,     ///< no date between two #, or the second # is missing
    BrokenGuid,     ///< a brace that does not begin a GUID; extends to its closing brace or the end
    BrokenName,     ///< a bracket that is not closed, or empty brackets
    BrokenNumber,   ///< a number that is too large for every type
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::size_t begin = 0;  ///< offset in the statement, in units
    std::size_t end = 0;
    base::Text text;  ///< the name without brackets, the symbol
    base::Value value;
};

/// Splits a statement into tokens. It reads only one token at a time, so that of two faults the first one is reported.
/// It does not throw for a broken token: the parser decides which error that is.
///
/// Names consist of ASCII letters, digits, "_" and all units from U+0080 on. A text is written '..' or ".."; inside, a
/// doubled quote means one quote. Numbers have a decimal point. Up to 28 digits they are exact (int32_t if possible,
/// otherwise Decimal); with an exponent or more digits they are doubles. A GUID is written {guid {...}}.
class Lexer {
public:
    /// The statement must outlive the lexer.
    explicit Lexer(base::TextView statement, std::size_t begin = 0) : statement_(statement), place_(begin) {}

    Token next();

private:
    bool has(std::size_t place) const { return place < statement_.size(); }
    void scanWord(Token& token);
    void scanBracketed(Token& token);
    void scanText(Token& token);
    void scanNumber(Token& token);
    void scanDate(Token& token);
    void scanGuid(Token& token);
    void scanSymbol(Token& token);

    base::TextView statement_;
    std::size_t place_;
};

}  // namespace jet
