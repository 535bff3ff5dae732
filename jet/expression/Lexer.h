#pragma once

#include <cstddef>

#include "base/Text.h"
#include "base/Value.h"

namespace jet {

enum class TokenKind {
    End,
    Word,           ///< a name or a keyword; which of them, the parser knows
    BracketedName,  ///< a name in square brackets; never a keyword
    Literal,        ///< text, number, date or GUID, as a value
    Symbol,         ///< one of ( ) , . ; * = < > <= >= <> + - and any unit that has no meaning
    BrokenText,     ///< a text whose closing quote is missing; reaches to the end
    BrokenDate,     ///< no date between number signs, or the second one missing
    BrokenGuid,     ///< a brace that begins no GUID; reaches to the last one behind it
    BrokenName,     ///< a bracket that is not closed, or with nothing in it
    BrokenNumber,   ///< digits beyond every number
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::size_t begin = 0;  ///< place in the statement, in units
    std::size_t end = 0;
    base::Text text;  ///< the name without brackets, the symbol
    base::Value value;
};

/// Cuts a statement into tokens, one at a time and never further than asked: of two faults in a statement
/// the one is reported that comes first. A broken token is a token too; it is the parser who says what it
/// breaks.
///
/// Names consist of ASCII letters, digits, "_" and all units from U+0080 on. Text stands in '..' or "..",
/// a doubled quote is one. Numbers have a decimal point: up to 28 digits are exact (int32_t if they fit,
/// else Decimal), an exponent or more digits give a double. A GUID stands as {guid {...}}.
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
