#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "tests/support/TempFolder.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/Console.h"

namespace kontodb {

using base::Text;

/// Keeps what is printed, answers the question for the password if it is to, and is a full disk if it is to.
class FakeConsole : public Console {
public:
    void print(std::string_view utf8) override { printed += utf8; }
    void printError(std::string_view utf8) override { errors += utf8; }
    bool isTerminal() override { return isScreen; }
    std::optional<Text> askPassword(base::TextView) override { return answer; }
    std::string readLine(std::size_t) override {
        std::string line = input.substr(0, input.find('\n') == std::string::npos ? input.npos : input.find('\n') + 1);
        input.erase(0, line.size());
        return line;
    }
    void flush() override {
        if (isFull) throw base::RuntimeError(57, u"Voll.");
    }

    std::string printed;
    std::string errors;
    std::string input;
    std::optional<Text> answer;
    bool isFull = false;
    bool isScreen = false;
};

/// Calls commands as a user would, on files in a folder of the test's own.
class Command : public testing::Test {
protected:
    struct Outcome {
        int exitCode;
        std::string printed;
        std::string errors;
    };

    static Outcome call(const std::vector<Text>& arguments, std::optional<Text> answer = {},
                        const std::string& input = {}) {
        FakeConsole console;
        console.input = input;
        console.answer = std::move(answer);
        const int exitCode = run(arguments, console);
        return {exitCode, console.printed, console.errors};
    }

    /// What lies in the folder, in order.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

    static std::string contentOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    Text path(base::TextView name) const { return (folder_ / name).u16string(); }

    test::TempFolder folder_;
};

}  // namespace kontodb
