#include "tools/kontodb/Console.h"

#include "base/RuntimeError.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {

void Console::printDone(std::string_view utf8, base::TextView done) {
    failOnClosedPipes();
    try {
        print(utf8);
        flush();
    } catch (const base::RuntimeError& error) {
        throw base::RuntimeError(error.number(), error.description() + u" " + base::Text(done));
    }
}

}  // namespace kontodb
