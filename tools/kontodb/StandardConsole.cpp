#include "tools/kontodb/StandardConsole.h"

#include <cstdio>

#include "base/RuntimeError.h"
#include "tools/kontodb/PasswordPrompt.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <cerrno>
#include <unistd.h>
#endif

namespace kontodb {
namespace {

constexpr std::int32_t kDiskOrPipeError = 57;

#ifdef _WIN32
bool isWindow(std::FILE* stream) {
    return _isatty(_fileno(stream)) != 0;
}

void prepare(std::FILE* stream) {
    std::fflush(stream);
    _setmode(_fileno(stream), isWindow(stream) ? _O_U16TEXT : _O_BINARY);
    // Otherwise a console stream is written byte by byte: slow, and not every C runtime accepts half a character.
    std::setvbuf(stream, nullptr, _IOFBF, BUFSIZ);
}

/// A console window delivers wide characters, whatever its code page is.
std::string readTyped(std::size_t mostUnits) {
    _setmode(_fileno(stdin), _O_U16TEXT);
    base::Text line;
    for (wint_t unit = 0; unit != L'\n' && line.size() < mostUnits && (unit = std::fgetwc(stdin)) != WEOF;)
        line.push_back(static_cast<char16_t>(unit));
    return base::toUtf8(line);
}

bool write(std::FILE* stream, std::string_view utf8) {
    if (!isWindow(stream)) return std::fwrite(utf8.data(), 1, utf8.size(), stream) == utf8.size();
    const base::Text text = base::fromUtf8(utf8);
    for (const char16_t unit : text) {
        if (std::fputwc(static_cast<wchar_t>(unit), stream) == WEOF) return false;
    }
    return true;
}
#else
bool isWindow(std::FILE* stream) {
    return ::isatty(::fileno(stream)) != 0;
}

void prepare(std::FILE*) {}

/// Bypasses the stream, which would try for ever if the other side accepts nothing.
bool write(std::FILE* stream, std::string_view utf8) {
    while (!utf8.empty()) {
        const ssize_t count = ::write(::fileno(stream), utf8.data(), utf8.size());
        if (count == 0 || (count < 0 && errno != EINTR)) return false;
        if (count > 0) utf8.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}
#endif

}  // namespace

StandardConsole::StandardConsole() {
    prepare(stdout);
    prepare(stderr);
}

void StandardConsole::print(std::string_view utf8) {
    failed_ = failed_ || !write(stdout, utf8);
}

void StandardConsole::printError(std::string_view utf8) {
    // If errors cannot be written, there is no other way to report that.
    static_cast<void>(write(stderr, utf8));
    std::fflush(stderr);
}

bool StandardConsole::isTerminal() {
    return isWindow(stdout);
}

bool StandardConsole::isErrorTerminal() {
    return isWindow(stderr);
}

std::optional<base::Text> StandardConsole::askPassword(base::TextView prompt) {
    if (!isInputTerminal()) return std::nullopt;
    printError(base::toUtf8(prompt));
    auto password = readHiddenLine();
    printError("\n");
    return password;
}

std::string StandardConsole::readLine(std::size_t mostBytes) {
#ifdef _WIN32
    if (isInputTerminal()) return readTyped(mostBytes);
#endif
    std::string line;
    for (int unit = 0; unit != '\n' && line.size() < mostBytes && (unit = std::getc(stdin)) != EOF;)
        line.push_back(static_cast<char>(unit));
    return line;
}

void StandardConsole::flush() {
    if (std::fflush(stdout) != 0 || failed_) {
        failed_ = false;
        throw base::RuntimeError(kDiskOrPipeError, u"Die Ausgabe konnte nicht geschrieben werden.");
    }
}

}  // namespace kontodb
