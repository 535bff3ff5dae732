#pragma once

#include "jet/expression/Lexer.h"

namespace jet {

/// Goes through the tokens of a statement; all parsers use it.
class TokenReader {
public:
    /// The statement must outlive the reader.
    explicit TokenReader(base::TextView statement) : statement_(statement), lexer_(statement) { advance(); }

    const Token& token() const { return token_; }
    base::TextView statement() const { return statement_; }

    /// The current token as it was typed.
    base::TextView typed() const { return statement_.substr(token_.begin, token_.end - token_.begin); }

    void advance() { token_ = lexer_.next(); }

    /// Whether the current token is this keyword, in upper or lower case, or this symbol.
    bool at(base::TextView wordOrSymbol) const { return is(token_, wordOrSymbol); }
    bool atEnd() const { return token_.kind == TokenKind::End; }

    bool take(base::TextView wordOrSymbol) {
        const bool found = at(wordOrSymbol);
        if (found) advance();
        return found;
    }

    static bool is(const Token& token, base::TextView wordOrSymbol) {
        if (token.kind == TokenKind::Symbol) return token.text == wordOrSymbol;
        return token.kind == TokenKind::Word && base::equalsIgnoringAsciiCase(token.text, wordOrSymbol);
    }

private:
    base::TextView statement_;
    Lexer lexer_;
    Token token_;
};

/// Whether the token can be the name of a table or column. Keywords can be names only in brackets.
bool isName(const Token& token);

}  // namespace jet
