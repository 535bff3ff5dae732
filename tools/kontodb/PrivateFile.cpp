#include "tools/kontodb/PrivateFile.h"

#include <filesystem>
#include <system_error>

#include "jet/storage/Storage.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace kontodb {

void warnOfOriginalUser(const base::Text& path, base::TextView done, Console& console) {
    if (!jet::fileStorage(path)->originalUser()) return;
    console.printError(
        "Hinweis: Die Datei ist auch in Access geöffnet. Ändert dort jemand etwas, während sie " + base::toUtf8(done) +
        " wird,\ngehört die neue Datei zu keinem Zeitpunkt; sicherer ist es, wenn Access geschlossen ist.\n");
}

#ifdef _WIN32

std::unique_ptr<jet::NewFile> newPrivateFile(const base::Text& path) {
    return std::make_unique<jet::NewFile>(path);
}

void shareLike(const base::Text& /*original*/, const base::Text& /*copy*/) {}

#else

std::unique_ptr<jet::NewFile> newPrivateFile(const base::Text& path) {
    const mode_t before = ::umask(S_IRWXG | S_IRWXO);
    try {
        auto file = std::make_unique<jet::NewFile>(path);
        ::umask(before);
        return file;
    } catch (...) {
        ::umask(before);
        throw;
    }
}

void shareLike(const base::Text& original, const base::Text& copy) {
    std::error_code ignored;
    std::filesystem::permissions(copy, std::filesystem::status(original, ignored).permissions(), ignored);
}

#endif

}  // namespace kontodb
