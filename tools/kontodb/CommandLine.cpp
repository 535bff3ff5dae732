#include "tools/kontodb/CommandLine.h"

#include <algorithm>

#include "tools/kontodb/Suggestion.h"

namespace kontodb {
namespace {

bool contains(std::initializer_list<base::TextView> names, base::TextView name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

bool isHelp(base::TextView argument) {
    return argument == u"--help" || argument == u"-h";
}

CommandLine::CommandLine(std::span<const base::Text> arguments, std::initializer_list<base::TextView> options,
                         std::initializer_list<base::TextView> flags) {
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const base::Text& argument = arguments[i];
        if (optionsEnded || !argument.starts_with(u'-') || argument == kStandardInput) {
            operands_.push_back(argument);
            continue;
        }
        if (isHelp(argument)) throw HelpWanted{};
        if (argument == u"--") {
            optionsEnded = true;
            continue;
        }
        const std::size_t equals = argument.find(u'=');
        const base::Text name = argument.substr(0, equals);
        base::Text value;
        if (contains(options, name)) {
            if (equals != base::Text::npos)
                value = argument.substr(equals + 1);
            else if (++i < arguments.size())
                value = arguments[i];
            else
                throw UsageError(u"Zu " + name + u" fehlt der Wert.");
        } else if (!contains(flags, argument)) {
            if (contains(flags, name)) throw UsageError(u"Die Option " + name + u" nimmt keinen Wert.");
            std::vector<base::TextView> known{u"--help"};
            known.insert(known.end(), options.begin(), options.end());
            known.insert(known.end(), flags.begin(), flags.end());
            throw UsageError(u"Unbekannte Option " + name + u"." + suggestion(name, known));
        }
        if (!values_.emplace(name, value).second) throw UsageError(u"Die Option " + name + u" steht zweimal da.");
    }
}

void CommandLine::requireOperands(std::initializer_list<base::TextView> names, std::size_t optional) const {
    if (operands_.size() + optional < names.size())
        throw UsageError(u"Es fehlt das Argument " + base::Text(names.begin()[operands_.size()]) + u".");
    if (operands_.size() > names.size()) throw UsageError(u"Überzähliges Argument '" + operands_[names.size()] + u"'.");
}

std::optional<base::Text> CommandLine::option(base::TextView name) const {
    const auto found = values_.find(name);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

std::uint64_t CommandLine::number(base::TextView name, std::uint64_t otherwise, std::uint64_t largest) const {
    const auto text = option(name);
    if (!text) return otherwise;
    std::uint64_t number = 0;
    bool sound = !text->empty();
    for (const char16_t unit : *text) {
        const std::uint64_t digit = static_cast<std::uint64_t>(unit) - u'0';
        sound = unit >= u'0' && unit <= u'9' && digit <= largest && number <= (largest - digit) / 10;
        if (!sound) break;
        number = number * 10 + digit;
    }
    if (!sound) {
        throw UsageError(base::Text(name) + u" verlangt eine ganze Zahl von 0 bis " +
                         base::fromUtf8(std::to_string(largest)) + u".");
    }
    return number;
}

}  // namespace kontodb
