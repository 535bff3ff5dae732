#include "tools/kontodb/Script.h"

#include <algorithm>
#include <iterator>

#include "jet/expression/Lexer.h"
#include "jet/expression/StatementError.h"
#include "jet/sql/Parser.h"
#include "jet/sql/SelectList.h"
#include "tools/kontodb/StatementFault.h"

namespace kontodb {
namespace {

bool beginsLine(base::TextView text, std::size_t place) {
    const std::size_t before = place == 0 ? base::TextView::npos : text.find_last_not_of(u" \t\r", place - 1);
    return before == base::TextView::npos || text[before] == u'\n';
}

bool isBroken(const jet::Token& token) {
    using enum jet::TokenKind;
    constexpr jet::TokenKind kBroken[] = {BrokenText, BrokenDate, BrokenGuid, BrokenName, BrokenNumber};
    return std::ranges::find(kBroken, token.kind) != std::end(kBroken);
}

}  // namespace

Script Script::ofOne(base::Text text) {
    Script script(std::move(text));
    script.addPart(0, script.text_.size());
    return script;
}

Script Script::ofMany(base::Text text) {
    Script script(std::move(text));
    script.isOfMany_ = true;
    script.blankRemarks();
    jet::Lexer lexer(script.text_);
    std::size_t begin = 0, end = 0;
    for (jet::Token token = lexer.next();; token = lexer.next()) {
        const bool isEnd = token.kind == jet::TokenKind::End;
        if (isBroken(token)) script.addBrokenPart(begin == end ? token.begin : begin);
        if (isEnd || (token.kind == jet::TokenKind::Symbol && token.text == u";")) {
            if (begin < end) script.addPart(begin, end);
            if (isEnd) return script;
            begin = end = token.end;
        } else {
            if (begin == end) begin = token.begin;
            end = token.end;
        }
    }
}

/// Adds a statement with a text, name or date that has no end. Where this statement ends is not known, so it is cut
/// after the line of the fault: the error must not quote all further statements.
void Script::addBrokenPart(std::size_t begin) {
    const base::TextView text = text_;
    std::size_t end = text.size();
    try {
        const base::TextView longest = text.substr(begin, jet::sql::kMaxStatementLength);
        static_cast<void>(jet::sql::parse(longest, jet::sql::parseSelectList));
    } catch (const jet::StatementError& error) {
        end = std::min(text.find(u'\n', begin + error.place()), end);
    }
    addPart(begin, end);
}

/// Replaces remarks by blanks, so that all other text keeps its place.
void Script::blankRemarks() {
    jet::Lexer lexer(text_);
    for (jet::Token token = lexer.next(); token.kind != jet::TokenKind::End; token = lexer.next()) {
        if (text_.compare(token.begin, 2, u"--") != 0 || !beginsLine(text_, token.begin)) continue;
        const std::size_t end = std::min(text_.find(u'\n', token.begin), text_.size());
        std::fill(text_.begin() + static_cast<std::ptrdiff_t>(token.begin),
                  text_.begin() + static_cast<std::ptrdiff_t>(end), u' ');
    }
}

void Script::addPart(std::size_t begin, std::size_t end) {
    parts_.push_back({begin, end, {}});
    const base::TextView text = text_;
    const base::TextView statement = text.substr(begin, end - begin);
    try {
        parts_.back().statement = jet::sql::parse(statement, jet::sql::parseSelectList);
    } catch (const jet::StatementError& error) {
        throw explained(error, parts_.size() - 1, adviceOnSyntax(statement, error));
    } catch (const base::RuntimeError& error) {
        throw explained(error, parts_.size() - 1, {});
    }
}

ExplainedError Script::explained(const base::RuntimeError& error, std::size_t part, const std::string& advice) const {
    const auto* placed = dynamic_cast<const jet::StatementError*>(&error);
    const std::size_t place = parts_[part].begin + (placed != nullptr ? placed->place() : 0);
    std::string lines;
    if (isOfMany_)
        lines = "Anweisung " + std::to_string(part + 1) + ", Zeile " + std::to_string(lineNumber(text_, place)) + ":\n";
    if (isOfMany_ || placed != nullptr) lines += shownLine(text_, place, placed != nullptr);
    lines += advice;
    if (isOfMany_) lines += "Keine der Anweisungen ist ausgeführt.\n";
    return {error, lines};
}

}  // namespace kontodb
