#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/sql/Statement.h"
#include "tools/kontodb/ExplainedError.h"

namespace kontodb {

/// Statements from the command line or a file, parsed; no table has been looked up yet.
class Script {
public:
    struct Part {
        std::size_t begin = 0;  ///< in the text, in units
        std::size_t end = 0;
        jet::sql::Statement statement;
    };

    /// One statement.
    /// @throws ExplainedError if it is broken
    static Script ofOne(base::Text text);

    /// Any number of statements with semicolons between them. Semicolons in texts and names do not count. Lines that
    /// begin with "--" are remarks.
    /// @throws ExplainedError that names the statement, if one is broken
    static Script ofMany(base::Text text);

    const std::vector<Part>& parts() const { return parts_; }

    /// The error of a part, with an explanation: the number of the statement if there may be several, its line, a caret
    /// under the place if the error has one, and the advice.
    /// @param advice  whole lines, in UTF-8; may be empty
    ExplainedError explained(const base::RuntimeError& error, std::size_t part, const std::string& advice) const;

private:
    explicit Script(base::Text text) : text_(std::move(text)) {}

    void blankRemarks();
    void addPart(std::size_t begin, std::size_t end);
    void addBrokenPart(std::size_t begin);

    base::Text text_;
    std::vector<Part> parts_;
    bool isOfMany_ = false;
};

}  // namespace kontodb
