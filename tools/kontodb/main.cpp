#include <vector>

#include "tools/kontodb/Commands.h"
#include "tools/kontodb/StandardConsole.h"

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

int runWith(const std::vector<base::Text>& arguments) {
    kontodb::StandardConsole console;
    return kontodb::run(arguments, console);
}

}  // namespace

#ifdef _WIN32
int wmain(int count, wchar_t** words) {
    std::vector<base::Text> arguments;
    for (int i = 1; i < count; ++i) {
        const wchar_t* word = words[i];
        base::Text& argument = arguments.emplace_back();
        for (; *word != 0; ++word)
            argument.push_back(static_cast<char16_t>(*word));
    }
    return runWith(arguments);
}
#else
namespace {

/// Replaces standard streams that are closed. Otherwise the next opened file would get the number of such a stream, and
/// what is printed would go into that file. The replacements can be neither read nor written.
void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

/// A name that is not UTF-8 would become that of another file.
int refuse(const base::Text& argument) {
    kontodb::StandardConsole console;
    console.printError("kontodb: 5: Das Argument '" + base::toUtf8(argument) +
                       "' ist nicht in UTF-8. Eine Datei, deren\n" +
                       "Name es nicht ist, muss zuerst umbenannt werden.\n");
    return kontodb::kExitError;
}

}  // namespace

int main(int count, char** words) {
    occupyStandardStreams();
    std::vector<base::Text> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(base::fromUtf8(words[i]));
        if (base::toUtf8(arguments.back()) != words[i]) return refuse(arguments.back());
    }
    return runWith(arguments);
}
#endif
