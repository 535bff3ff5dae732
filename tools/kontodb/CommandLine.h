#pragma once

#include <exception>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Text.h"

namespace kontodb {

/// The command was not called as its usage text says. Shown with the usage text; exit code 2.
class UsageError : public std::exception {
public:
    explicit UsageError(const base::Text& description) : what_(base::toUtf8(description)) {}
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string what_;
};

/// The usage text is wanted and nothing else.
struct HelpWanted {};

bool isHelp(base::TextView argument);

/// An argument that stands for what comes in by the standard input.
inline constexpr base::TextView kStandardInput = u"-";

/// Results for programs, an object a line.
inline constexpr base::TextView kJsonFlag = u"--json";

/// Nothing is changed; the command says what it would do.
inline constexpr base::TextView kDryRunFlag = u"--dry-run";

/// The arguments after a command's name, by kind: `--option VALUE` (or `--option=VALUE`), `--flag`, and the others in
/// their order. An argument that begins with "-" is an option, except "-" alone and everything after `--`.
class CommandLine {
public:
    /// @throws UsageError for an unknown option, one that is there twice, or one without its value
    /// @throws HelpWanted
    CommandLine(std::span<const base::Text> arguments, std::initializer_list<base::TextView> options,
                std::initializer_list<base::TextView> flags = {});

    std::size_t count() const { return operands_.size(); }

    /// @param names     of the arguments that are no options, for the message
    /// @param optional  how many of the last ones may be missing
    /// @throws UsageError if there are fewer or more
    void requireOperands(std::initializer_list<base::TextView> names, std::size_t optional = 0) const;
    const base::Text& operand(std::size_t i) const { return operands_.at(i); }

    std::optional<base::Text> option(base::TextView name) const;
    bool flag(base::TextView name) const { return values_.find(name) != values_.end(); }

    /// The option as a whole number from 0 to `largest`, or `otherwise` if it is not given.
    /// @throws UsageError if it is anything else
    std::uint64_t number(base::TextView name, std::uint64_t otherwise, std::uint64_t largest) const;

private:
    std::vector<base::Text> operands_;
    std::map<base::Text, base::Text, std::less<>> values_;
};

}  // namespace kontodb
