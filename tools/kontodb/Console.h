#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/Text.h"

/// What the commands print, as UTF-8: results to the standard output, errors to the error output. A failed write is
/// noticed when the command ends, in flush.
namespace kontodb {

class Console {
public:
    virtual ~Console() = default;
    virtual void print(std::string_view utf8) = 0;
    virtual void printError(std::string_view utf8) = 0;

    /// Whether the output is a terminal.
    virtual bool isTerminal() { return false; }

    /// Whether the error output is a terminal.
    virtual bool isErrorTerminal() { return false; }

    /// Asks the user for a password. What is typed is not shown.
    /// @return nothing if there is no terminal to ask at
    virtual std::optional<base::Text> askPassword(base::TextView /*prompt*/) { return std::nullopt; }

    /// The next line of the standard input, in UTF-8, with its end.
    /// @param mostBytes  a longer one comes in parts
    /// @return empty at the end of the input
    virtual std::string readLine(std::size_t /*mostBytes*/) { return {}; }

    /// @throws base::RuntimeError if something printed did not get out (a full disk, a closed pipe)
    virtual void flush() = 0;

    /// Prints the result of a change that stays, whether its result gets out or not.
    /// @param done  German sentence that says so and holds the result
    /// @throws base::RuntimeError  that of flush(), with the sentence
    void printDone(std::string_view utf8, base::TextView done);
};

}  // namespace kontodb
