#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/kontodb/Command.h"

namespace kontodb {
namespace {

class Repair : public Command {
protected:
    Repair() { call({u"create", file_, u"--accounts", u"50", u"--password", u"geheim"}); }

    Outcome repair() const { return call({u"repair", file_, target_, u"--password", u"geheim"}); }

    void overwrite(std::streamoff page, std::streamoff offset, const std::string& bytes) const {
        std::fstream file(std::filesystem::path(file_), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(page * 4096 + offset);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    Text file_ = path(u"Konten.mdb");
    Text target_ = path(u"Gerettet.mdb");
};

TEST_F(Repair, ReportsLossesAndHasExitCodeOneOnlyIfThereAreAny) {
    EXPECT_EQ(repair().exitCode, kExitSuccess);
    EXPECT_EQ(call({u"check", target_, u"--password=geheim"}).exitCode, kExitSuccess);
    std::filesystem::remove(target_);

    overwrite(0, 0, std::string(4096, '\0'));    // the header, so that no password is known
    overwrite(2, 0, std::string(4096, '\xFF'));  // the definition of the catalog
    overwrite(20, 14, std::string(2, '\x1F'));   // the offset of the first account
    const std::string damaged = contentOf(file_);
    const Outcome outcome = repair();
    EXPECT_EQ(outcome.exitCode, kExitFaultsFound) << outcome.errors;
    EXPECT_NE(outcome.printed.find(": 1 Tabelle, 48 Datensätze ganz, 2 verloren\nTabelle 'Benutzerkonto': 48 "),
              std::string::npos)
        << outcome.printed;
    EXPECT_NE(outcome.printed.find("  Seite 20, Zeile 0: Der Datensatz ist nicht lesbar: "), std::string::npos);
    EXPECT_NE(outcome.printed.find("Hinweis: Das Datenbankkennwort"), std::string::npos);
    EXPECT_TRUE(contentOf(file_) == damaged);
    EXPECT_EQ(call({u"check", target_, u"--password=geheim"}).exitCode, kExitSuccess);
}

}  // namespace
}  // namespace kontodb
