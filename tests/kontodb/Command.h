#pragma once

#include <algorithm>
#include <deque>
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

/// Keeps what is printed, and answers questions for a password as long as it has answers.
class FakeConsole : public Console {
public:
    void print(std::string_view utf8) override { printed += utf8; }
    void printError(std::string_view utf8) override { errors += utf8; }
    bool isTerminal() override { return isScreen; }
    std::optional<Text> askPassword(base::TextView) override {
        if (answers.empty()) return std::nullopt;
        Text answer = std::move(answers.front());
        answers.pop_front();
        return answer;
    }
    std::string readLine(std::size_t) override {
        std::string line = input.substr(0, input.find('\n') + 1);
        if (line.empty()) line = input;
        input.erase(0, line.size());
        return line;
    }
    void flush() override {
        if (isFull) throw base::RuntimeError(57, u"Voll.");
    }

    std::string printed;
    std::string errors;
    std::string input;
    std::deque<Text> answers;
    bool isFull = false;
    bool isScreen = false;
};

/// Calls commands as a user would. The current folder is a temporary one of the test's own.
class Command : public testing::Test {
protected:
    struct Outcome {
        int exitCode;
        std::string printed;
        std::string errors;
    };

    Command() { std::filesystem::current_path(folder_.path); }
    ~Command() override { std::filesystem::current_path(folder_.path.parent_path()); }
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    static Outcome call(const std::vector<Text>& arguments, const std::string& input = {}) {
        FakeConsole console;
        console.input = input;
        const int exitCode = run(arguments, console);
        return {exitCode, console.printed, console.errors};
    }

    /// Calls the commands of a transcript and compares what they print with it. A line that begins with
    ///   $  is a call; double quotes keep words together; "> tty" or "> full" at its end: to a terminal, to a full disk
    ///   <  is a line of the standard input
    ///   ?  is an answer to the question for a password; none may be left over
    ///   !  is printed as an error
    /// All other lines are printed as results. Control characters are shown as "␉" and the like; "…" is any text.
    /// Also checks that each call ends with kExitError if and only if it prints an error, and that it changes no file
    /// if it only reads or has failed.
    static void expect(std::string_view transcript);

    /// The names of everything in the folder, sorted.
    static std::vector<std::string> names() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator("."))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

    static std::string contentOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void write(const std::filesystem::path& path, std::string_view content) {
        std::ofstream(path, std::ios::binary) << content;
    }

    Text path(base::TextView name) const { return (folder_ / name).u16string(); }

    test::TempFolder folder_;
};

}  // namespace kontodb
