#include "jet/expression/Lexer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "jet/expression/DateLiteral.h"
#include "jet/value/ExactNumber.h"
#include "jet/value/GuidText.h"

namespace jet {

namespace {

/// The number of digits that a Decimal can hold.
constexpr std::uint8_t kExactDigits = 28;

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

bool startsName(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'_' || unit >= 0x80;
}

bool isBlank(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n';
}

/// The value of the number, or null if it is too large for every type.
base::Value numberOf(const std::string& typed) {
    const std::optional<ExactNumber> number = ExactNumber::fromText(typed);
    if (!number) return base::Null{};
    const std::size_t point = typed.find('.');
    const std::size_t scale = point == std::string::npos ? 0 : typed.size() - point - 1;
    if (scale <= kExactDigits && typed.find('e') == std::string::npos) {
        const auto whole = scale == 0 ? number->scaledTo(0) : std::nullopt;
        if (whole && *whole <= std::numeric_limits<std::int32_t>::max()) return static_cast<std::int32_t>(*whole);
        if (const auto decimal = number->decimal(kExactDigits, static_cast<std::uint8_t>(scale))) return *decimal;
    }
    const double floating = number->toDouble();
    return std::isfinite(floating) ? base::Value(floating) : base::Null{};
}

}  // namespace

Token Lexer::next() {
    while (has(place_) && isBlank(statement_[place_]))
        ++place_;
    Token token;
    token.begin = place_;
    if (has(place_)) {
        const char16_t unit = statement_[place_];
        const bool pointOfNumber = unit == u'.' && has(place_ + 1) && isDigit(statement_[place_ + 1]);
        if (startsName(unit))
            scanWord(token);
        else if (unit == u'[')
            scanBracketed(token);
        else if (unit == u'\'' || unit == u'"')
            scanText(token);
        else if (isDigit(unit) || pointOfNumber)
            scanNumber(token);
        else if (unit == u'#')
            scanDate(token);
        else if (unit == u'{')
            scanGuid(token);
        else
            scanSymbol(token);
    }
    token.end = place_;
    return token;
}

void Lexer::scanWord(Token& token) {
    token.kind = TokenKind::Word;
    while (has(place_) && (startsName(statement_[place_]) || isDigit(statement_[place_])))
        token.text += statement_[place_++];
}

void Lexer::scanBracketed(Token& token) {
    const std::size_t close = statement_.find(u']', place_);
    const bool closed = close != base::TextView::npos;
    token.text = statement_.substr(place_ + 1, closed ? close - place_ - 1 : base::TextView::npos);
    token.kind = closed && !token.text.empty() ? TokenKind::BracketedName : TokenKind::BrokenName;
    place_ = closed ? close + 1 : statement_.size();
}

void Lexer::scanText(Token& token) {
    const char16_t quote = statement_[place_++];
    base::Text text;
    while (has(place_)) {
        const char16_t unit = statement_[place_++];
        if (unit == quote) {
            if (!has(place_) || statement_[place_] != quote) {
                token.kind = TokenKind::Literal;
                token.value = std::move(text);
                return;
            }
            ++place_;
        }
        text += unit;
    }
    token.kind = TokenKind::BrokenText;
}

void Lexer::scanNumber(Token& token) {
    std::string typed;
    const auto takeDigits = [&] {
        while (has(place_) && isDigit(statement_[place_]))
            typed += static_cast<char>(statement_[place_++]);
    };
    takeDigits();
    if (has(place_) && statement_[place_] == u'.') {
        typed += '.';
        ++place_;
        takeDigits();
    }
    if (has(place_) && (statement_[place_] == u'e' || statement_[place_] == u'E')) {
        std::size_t digits = place_ + 1;
        if (has(digits) && (statement_[digits] == u'+' || statement_[digits] == u'-')) ++digits;
        if (has(digits) && isDigit(statement_[digits])) {
            typed += 'e';
            if (statement_[place_ + 1] == u'-') typed += '-';
            place_ = digits;
            takeDigits();
        }
    }
    token.value = numberOf(typed);
    token.kind = base::isNull(token.value) ? TokenKind::BrokenNumber : TokenKind::Literal;
}

void Lexer::scanDate(Token& token) {
    const std::size_t close = statement_.find(u'#', place_ + 1);
    token.kind = TokenKind::BrokenDate;
    if (close == base::TextView::npos) {
        place_ = statement_.size();
        return;
    }
    if (const auto date = dateFromLiteral(statement_.substr(place_ + 1, close - place_ - 1))) {
        token.kind = TokenKind::Literal;
        token.value = *date;
    }
    place_ = close + 1;
}

void Lexer::scanGuid(Token& token) {
    token.kind = TokenKind::BrokenGuid;
    const std::size_t inner = statement_.find(u'{', ++place_);
    const std::size_t innerEnd = statement_.find(u'}', place_);
    const std::size_t end = innerEnd == base::TextView::npos ? innerEnd : statement_.find(u'}', innerEnd + 1);
    if (inner > innerEnd || end == base::TextView::npos) {
        place_ = std::min(innerEnd, statement_.size() - 1) + 1;
        return;
    }
    const auto blankOr = [&](std::size_t from, std::size_t to, base::TextView word) {
        return base::equalsIgnoringAsciiCase(base::trimBlanks(statement_.substr(from, to - from)), word);
    };
    const auto guid = guidFromText(statement_.substr(inner, innerEnd + 1 - inner));
    if (guid && blankOr(place_, inner, u"guid") && blankOr(innerEnd + 1, end, u"")) {
        token.kind = TokenKind::Literal;
        token.value = *guid;
    }
    place_ = end + 1;
}

void Lexer::scanSymbol(Token& token) {
    token.kind = TokenKind::Symbol;
    const base::TextView pair = statement_.substr(place_, 2);
    const bool twoUnits = pair == u"<=" || pair == u">=" || pair == u"<>";
    token.text = statement_.substr(place_, twoUnits ? 2 : 1);
    place_ += token.text.size();
}

}  // namespace jet
