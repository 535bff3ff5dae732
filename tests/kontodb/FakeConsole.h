#pragma once

#include <string>

#include "tools/kontodb/Console.h"

namespace kontodb {

/// Keeps what was printed; nobody sits before it who could be asked.
class FakeConsole : public Console {
public:
    void print(std::string_view utf8) override { printed += utf8; }
    void printError(std::string_view utf8) override { errors += utf8; }
    std::optional<base::Text> askPassword(base::TextView) override { return answer; }
    void flush() override {}

    std::string printed;
    std::string errors;
    std::optional<base::Text> answer;
};

}  // namespace kontodb
