#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <random>
#include <vector>

#include "bench/CountingStorage.h"
#include "jet/change/TableWriter.h"
#include "jet/sql/Execution.h"
#include "jet/table/Catalog.h"
#include "jet/transaction/Database.h"
#include "jet/transaction/Transaction.h"

namespace {

constexpr base::TextView kPassword = u"HwendorpliqZ";
constexpr base::TextView kTable = u"Benutzerkonto";
constexpr int kRounds = 51;

double microseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

/// The slowest of the fastest tenth: the others are slow because of whatever else the machine does.
double fastestTenth(std::vector<double> times) {
    const auto place = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 10);
    std::nth_element(times.begin(), place, times.end());
    return *place;
}

/// An account file with counted reads and writes, and plain files of the same number of bytes beside it.
class AccountFile {
public:
    explicit AccountFile(const base::Text& path)
        : database_(jet::Database::open(std::make_unique<bench::CountingStorage>(path, traffic_), kPassword,
                                        jet::LeftJournalRule::RollBack)),
          plainPath_(path + u".plain") {
        auto operation = database_.beginRead();
        rows_ = jet::openTable(operation, kTable)->definition().rowCount;
    }

    std::uint32_t rows() const { return rows_; }

    /// Carries out a statement in many rounds, each time for another account.
    void measure(const char* name, const std::function<base::Text(std::uint32_t id)>& statement) {
        std::vector<double> times;
        std::vector<double> plainTimes;
        bench::Traffic most;
        for (int round = 0; round < kRounds; ++round) {
            const base::Text text = statement(nextId());
            traffic_ = {};
            times.push_back(microseconds([&] { jet::sql::execute(database_, text); }));
            most.pagesRead = std::max(most.pagesRead, traffic_.pagesRead);
            most.pagesWritten = std::max(most.pagesWritten, traffic_.pagesWritten);
            most.flushes = std::max(most.flushes, traffic_.flushes);
            const base::Bytes bytes(traffic_.bytesWritten, static_cast<std::uint8_t>(round));
            plainTimes.push_back(microseconds([&] {
                const auto plain = jet::openFile(plainPath_, jet::OpenMode::CreateNew);
                plain->write(0, bytes);
                plain->sync();
            }));
            std::filesystem::remove(base::toUtf8(plainPath_));
        }
        std::printf("\"%s\": {\"us\": %.1f, \"plain_us\": %.1f, \"read\": %zu, \"written\": %zu, \"flushes\": %zu}, ",
                    name, fastestTenth(times), fastestTenth(plainTimes), most.pagesRead, most.pagesWritten,
                    most.flushes);
    }

    /// Adds accounts in one transaction, which is not committed. @return microseconds of processor time for each
    /// account
    double insert(const std::vector<std::uint32_t>& names) {
        jet::Transaction transaction(database_);
        jet::TableWriter writer(transaction, kTable);
        const auto column = writer.table().definition().column(u"BenKTO_Name")->number;
        const std::clock_t start = std::clock();
        for (const std::uint32_t name : names) {
            const jet::Assignment assignment{column, u"Neues Konto " + base::decimal(name)};
            writer.insert(std::span(&assignment, 1));
        }
        const auto ticks = static_cast<double>(std::clock() - start);
        return ticks / CLOCKS_PER_SEC * 1e6 / static_cast<double>(names.size());
    }

private:
    /// Far from the one before; never the same twice.
    std::uint32_t nextId() {
        last_ = static_cast<std::uint32_t>((last_ + rows_ * 0.381966) + 1) % rows_;
        return last_ + 1;
    }

    bench::Traffic traffic_;
    jet::Database database_;
    base::Text plainPath_;
    std::uint32_t rows_ = 0;
    std::uint32_t last_ = 0;
};

}  // namespace

/// Writes to an account file of `kontodb create` through the embedded engine, one account at a time and many at once,
/// and to plain files FILE.plain, which must not exist yet: account_file FILE. Prints, as JSON, the times of the
/// fastest tenth and the largest numbers of reads, writes and flushes in one round.
int main(int count, char** arguments) {
    if (count != 2) return 2;
    AccountFile file(base::fromUtf8(arguments[1]));
    std::printf("{\"rows\": %u, ", file.rows());
    const auto where = [](std::uint32_t id) { return u" WHERE BenKTO_ID = " + base::decimal(id); };
    file.measure("update", [&](std::uint32_t id) {
        return u"UPDATE Benutzerkonto SET BenKTO_ServerPath = 'D:\\Umzug " + base::decimal(id) + u"'" + where(id);
    });
    file.measure("rename", [&](std::uint32_t id) {
        return u"UPDATE Benutzerkonto SET BenKTO_Name = 'Umbenannt " + base::decimal(id) + u"'" + where(id);
    });
    file.measure("insert", [&](std::uint32_t id) {
        return u"INSERT INTO Benutzerkonto (BenKTO_Name) VALUES ('Neu " + base::decimal(id) + u"')";
    });
    file.measure("delete", [&](std::uint32_t id) { return u"DELETE FROM Benutzerkonto" + where(id); });

    std::vector<std::uint32_t> names(10'000);
    for (std::uint32_t i = 0; i < names.size(); ++i)
        names[i] = 10'000 + i;
    const double ascending = file.insert(names);
    std::shuffle(names.begin(), names.end(), std::mt19937(1));
    std::printf("\"insert_ascending_us\": %.2f, \"insert_random_us\": %.2f}\n", ascending, file.insert(names));
}
