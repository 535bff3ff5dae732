#include "tests/kontodb/Command.h"

#include <iomanip>
#include <map>
#include <sstream>

namespace kontodb {
namespace {

constexpr std::string_view kWildcard = "…";

/// @param pattern  "…" in it stands for any text
bool matches(std::string_view text, std::string_view pattern) {
    const std::size_t wildcard = pattern.find(kWildcard);
    if (wildcard == pattern.npos) return text == pattern;
    if (!text.starts_with(pattern.substr(0, wildcard))) return false;
    for (std::size_t at = wildcard; at <= text.size(); ++at)
        if (matches(text.substr(at), pattern.substr(wildcard + kWildcard.size()))) return true;
    return false;
}

std::vector<Text> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    std::vector<Text> words;
    for (std::string word; stream >> std::quoted(word);)
        words.push_back(base::fromUtf8(word));
    return words;
}

/// Begins lines with "! " if they are errors, and shows control characters as their pictures, U+2400 and following.
std::string visible(const std::string& text, bool isError) {
    std::string lines;
    for (const char unit : text) {
        if (isError && (lines.empty() || lines.back() == '\n')) lines += "! ";
        if (unit == '\n' || static_cast<unsigned char>(unit) >= ' ')
            lines += unit;
        else
            lines.append("\xE2\x90").push_back(static_cast<char>(unit | 0x80));
    }
    return lines;
}

std::map<std::filesystem::path, std::string> filesHere() {
    std::map<std::filesystem::path, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        std::ifstream file(entry.path(), std::ios::binary);
        files[entry.path()] = {std::istreambuf_iterator<char>(file), {}};
    }
    return files;
}

void expectCall(const std::string& line, FakeConsole& console, const std::string& expected) {
    console.isScreen = line.ends_with(" > tty");
    console.isFull = line.ends_with(" > full");
    const std::vector<Text> words =
        wordsOf(console.isScreen || console.isFull ? line.substr(0, line.rfind(" > ")) : line);
    const auto before = filesHere();
    const int exitCode = run(words, console);
    std::string actual = visible(console.printed, false) + visible(console.errors, true);
    if (exitCode == kExitFaultsFound) actual += "(exit code 1)\n";
    EXPECT_TRUE(matches(actual, expected)) << line << "\n" << actual << "wanted:\n" << expected;
    const auto says = [&](const char* part) { return console.errors.find(part) != std::string::npos; };
    EXPECT_EQ(exitCode == kExitError, says("kontodb: ") || says("nichts wurde geschrieben")) << line << exitCode;
    EXPECT_TRUE(console.answers.empty()) << line;
    const bool onlyReads = line.starts_with(" check") || line.starts_with(" query") || says("Probelauf");
    const bool mayChange = !onlyReads && (exitCode != kExitError || says("trotzdem"));
    EXPECT_TRUE(mayChange || filesHere() == before) << line;
}

}  // namespace

void Command::expect(std::string_view transcript) {
    std::istringstream lines{std::string(transcript)};
    std::string line;
    std::getline(lines, line);  // the empty one after the opening quotes
    for (bool isMore = !std::getline(lines, line).fail(); isMore;) {
        const std::string called = line;
        ASSERT_TRUE(called.starts_with('$')) << called;
        FakeConsole console;
        std::string expected;
        while ((isMore = !std::getline(lines, line).fail()) && !line.starts_with('$')) {
            const std::string rest = line.substr(std::min<std::size_t>(line.size(), 2));
            if (line.starts_with('<'))
                console.input += rest + "\n";
            else if (line.starts_with('?'))
                console.answers.push_back(base::fromUtf8(rest));
            else
                expected += line + "\n";
        }
        expectCall(called.substr(1), console, expected);
    }
}

}  // namespace kontodb
