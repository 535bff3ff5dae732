#include <filesystem>
#include <memory>
#include <system_error>

#include "base/RuntimeError.h"
#include "jet/PageIo.h"
#include "tools/kontodb/AccountFile.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"

namespace kontodb {
namespace {

/// Database password of the account file, with which the account tool opens it.
constexpr base::TextView kOwnPassword = u"HwendorpliqZ";
constexpr std::int32_t kFileExists = 58;
constexpr std::uint64_t kMostAccounts = 1'000'000;
constexpr std::uint64_t kLargestSeed = ~std::uint64_t{0};

/// By way of UTF-8, since a half surrogate pair would be an error here.
std::filesystem::path nativePath(const base::Text& path) {
    const std::string utf8 = base::toUtf8(path);
    return std::u8string(utf8.begin(), utf8.end());
}

/// A file that was begun and goes away again unless it is kept.
class NewFile {
public:
    explicit NewFile(const base::Text& path) : path_(nativePath(path)) {
        // The opening below refuses an existing file too; this only says it better.
        std::error_code unknown;
        if (std::filesystem::exists(path_, unknown)) {
            throw base::RuntimeError(kFileExists, u"Die Datei '" + path + u"' existiert bereits.");
        }
        io_ = jet::openFile(path, jet::OpenMode::CreateNew);
    }
    ~NewFile() {
        if (!io_) return;
        io_.reset();
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    jet::PageIo& io() { return *io_; }
    void keep() { io_.reset(); }

private:
    std::filesystem::path path_;
    std::unique_ptr<jet::PageIo> io_;
};

}  // namespace

int create(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {u"--password", u"--accounts", u"--seed"});
    line.requireOperands(1);
    const base::Text password = line.option(u"--password").value_or(base::Text(kOwnPassword));
    const auto accounts = static_cast<std::uint32_t>(line.number(u"--accounts", 0, kMostAccounts));
    const std::uint64_t seed = line.number(u"--seed", 1, kLargestSeed);

    NewFile file(line.operand(0));
    writeAccountFile(file.io(), password, accounts, seed);
    file.keep();
    console.print(base::toUtf8(line.operand(0)) + ": " + std::to_string(accounts) +
                  (accounts == 1 ? " Konto\n" : " Konten\n"));
    return kExitSuccess;
}

}  // namespace kontodb
