#pragma once

#include "tools/kontodb/Console.h"

namespace kontodb {

/// Standard output and standard error. On Windows bytes go out as they are, and a console window gets
/// wide characters, so that umlauts show whatever its code page is.
class StandardConsole final : public Console {
public:
    StandardConsole();
    void print(std::string_view utf8) override;
    void printError(std::string_view utf8) override;
    std::optional<base::Text> askPassword(base::TextView prompt) override;
    void flush() override;

private:
    bool failed_ = false;
};

}  // namespace kontodb
