#include <vector>

#include "tools/kontodb/Commands.h"
#include "tools/kontodb/StandardConsole.h"

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
int main(int count, char** words) {
    std::vector<base::Text> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(base::fromUtf8(words[i]));
    return runWith(arguments);
}
#endif
