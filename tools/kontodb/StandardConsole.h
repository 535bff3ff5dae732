#pragma once

#include <cstddef>
#include <string>

#include "tools/kontodb/Console.h"

namespace kontodb {

/// Standard output and standard error. On Windows bytes go out as they are, and a console window gets
/// wide characters, so that umlauts show whatever its code page is.
class StandardConsole final : public Console {
public:
    StandardConsole();
    void print(std::string_view utf8) override;
    void printError(std::string_view utf8) override;
    bool isTerminal() override;
    bool isErrorTerminal() override;
    std::optional<base::Text> askPassword(base::TextView prompt) override;
    std::string readLine(std::size_t mostBytes) override;
    void flush() override;

private:
    bool failed_ = false;
};

}  // namespace kontodb
