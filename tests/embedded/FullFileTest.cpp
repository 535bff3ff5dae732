#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "jet/page/PageSource.h"
#include "jet/sql/Execution.h"
#include "jet/table/Catalog.h"
#include "jet/table/Table.h"
#include "jet/transaction/Database.h"
#include "tests/support/SampleFile.h"
#include "tests/support/TempFolder.h"

namespace jet {
namespace {

using base::Text;

TEST(FullFile, AStatementThatNeedsTooManyPagesIsRefusedBeforeTheFirstWrite) {
    constexpr std::uint64_t kLongest = std::uint64_t{kMaxPages} * kPageSize;
    const test::TempFolder folder;
    const std::filesystem::path file = folder / "Probe.mdb";
    const base::Bytes start = test::sampleFile({test::kontoTable()});
    std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(start.data()), std::ssize(start));
    std::filesystem::resize_file(file, kLongest - 50 * kPageSize);  // a sparse file
    const auto sizeBytes = [&] { return std::filesystem::file_size(file); };
    Database database = Database::open(fileStorage(file.u16string()), {}, LeftJournalRule::RollBack);
    // Each note takes twenty pages. The map of a new file has a few hundred free pages, then the file grows.
    const Text insert = u"INSERT INTO Konto (Notiz) VALUES ('" + Text(40'000, u'Ω') + u"')";
    int added = 0;
    std::string refusal;
    while (refusal.empty() && added < 60) {
        const auto written = std::filesystem::last_write_time(file);
        try {
            sql::execute(database, insert);
            ++added;
        } catch (const base::RuntimeError& error) {
            refusal = error.what();
            EXPECT_EQ(std::filesystem::last_write_time(file), written);
        }
        ASSERT_LE(sizeBytes(), kLongest);
    }
    EXPECT_GT(sizeBytes(), kLongest - 50 * kPageSize);
    EXPECT_EQ(refusal, "-2147467259: Ungültiges Argument.");
    // Statements that need no new page still work, and freed pages are used again.
    EXPECT_EQ(sql::execute(database, u"INSERT INTO Konto (Notiz) VALUES ('kurz')"), 1);
    EXPECT_EQ(sql::execute(database, u"DELETE FROM Konto WHERE Nr = 3"), 1);
    EXPECT_EQ(sql::execute(database, insert), 1);
    auto operation = database.beginRead();
    EXPECT_EQ(openTable(operation, u"Konto")->definition().rowCount, static_cast<std::uint32_t>(added) + 3);
}

}  // namespace
}  // namespace jet
