#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TempFolder.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/Console.h"

namespace kontodb {

using base::Text;

/// Keeps what is printed, and answers the question for the password if it is to.
class FakeConsole : public Console {
public:
    void print(std::string_view utf8) override { printed += utf8; }
    void printError(std::string_view utf8) override { errors += utf8; }
    std::optional<Text> askPassword(base::TextView) override { return answer; }
    void flush() override {}

    std::string printed;
    std::string errors;
    std::optional<Text> answer;
};

/// Calls commands as a user would, on files in a folder of the test's own.
class Command : public testing::Test {
protected:
    struct Outcome {
        int exitCode;
        std::string printed;
        std::string errors;
    };

    static Outcome call(const std::vector<Text>& arguments, std::optional<Text> answer = {}) {
        FakeConsole console;
        console.answer = std::move(answer);
        const int exitCode = run(arguments, console);
        return {exitCode, console.printed, console.errors};
    }

    Text path(base::TextView name) const { return (folder_ / name).u16string(); }

    test::TempFolder folder_;
};

}  // namespace kontodb
