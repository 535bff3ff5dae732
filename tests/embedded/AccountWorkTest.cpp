#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <string>

#include "ado/embedded/Factory.h"
#include "tests/fuzz/Seeds.h"
#include "tests/support/Environment.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace ado::embedded {
namespace {

using base::Text;
using base::Value;

constexpr base::TextView kColumns[] = {u"BenKTO_Name", u"BenKTO_Pass", u"BenKTO_ServerPath", u"BenKTO_R_ProgUpdate"};
enum Place : std::size_t { kName, kPassword, kServerPath, kRight };
using Account = std::vector<Value>;
using Accounts = std::map<std::int32_t, Account>;
using Changes = std::map<std::size_t, Value>;

/// An account file at work, and beside it what it must hold.
class AccountWork {
public:
    AccountWork(const base::Bytes& file, std::uint32_t seed) : machine_(file), random_(seed) {
        connection_->setProvider(u"Microsoft.Jet.OLEDB.4.0");
        connection_->Properties().Item(u"Jet OLEDB:Database Password").setValue(Text(jet::kSeedPassword));
        connection_->Open(u"", u"", u"", -1);
        expected_ = stored();
        auto rows = open();
        rows->AddNew();
        lastNumber_ = numberOf(*rows);
    }

    void step() {
        switch (expected_.empty() ? 0 : below(9)) {
            case 0:
            case 1:
                return add();
            case 2:
                return insert();
            case 3:
                return start();
            case 4:
            case 5:
                return change();
            case 6:
                return updateOne();
            case 7:
                return updateSome();
            default:
                return remove();
        }
    }

    const Accounts& expected() const { return expected_; }
    const base::Bytes& file() const { return machine_.file(); }

    Accounts stored() {
        Accounts accounts;
        for (auto rows = open(); !rows->isEOF(); rows->MoveNext()) {
            Account account;
            for (const base::TextView column : kColumns)
                account.push_back(rows->Fields().Item(column).Value());
            accounts[numberOf(*rows)] = std::move(account);
        }
        return accounts;
    }

private:
    std::uint32_t below(std::size_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

    std::unique_ptr<ado::Recordset> open(base::TextView condition = {}) {
        auto rows = factory_.createRecordset();
        rows->Open(u"SELECT * FROM Benutzerkonto" + Text(condition), *connection_, CursorType::adOpenStatic,
                   LockType::adLockPessimistic, -1);
        return rows;
    }

    static std::int32_t numberOf(ado::Recordset& rows) {
        return std::get<std::int32_t>(rows.Fields().Item(u"BenKTO_ID").Value());
    }

    Text someText(std::size_t longest) {
        static constexpr base::TextView kLetters = u"abcxyzÄöüßéABC 019-.";
        Text text;
        for (std::size_t left = 1 + below(longest); left > 0; --left)
            text.push_back(kLetters[below(kLetters.size())]);
        return text;
    }

    /// One that there is not yet: a file's own index may want that.
    Text someName() { return someText(20) + u"#" + base::decimal(++names_); }

    Value someValue(std::size_t place) {
        if (place == kRight) return below(2) == 0;
        if (place != kName && below(4) == 0) return base::Null{};
        if (place == kName) return someName();
        return someText(place == kServerPath && below(3) == 0 ? 60 : 10);
    }

    Changes someChanges() {
        Changes changes;
        for (std::size_t place = 0; place < std::size(kColumns); ++place)
            if (below(3) != 0) changes[place] = someValue(place);
        if (changes.empty()) changes[kServerPath] = someValue(kServerPath);
        return changes;
    }

    static void apply(Account& account, const Changes& changes) {
        for (const auto& [place, value] : changes)
            account[place] = value;
    }

    /// As a statement has it.
    static Text literal(const Value& value) {
        if (base::isNull(value)) return u"NULL";
        if (const auto* flag = std::get_if<bool>(&value)) return *flag ? u"TRUE" : u"FALSE";
        return u"'" + std::get<Text>(value) + u"'";
    }

    Text assignments(const Changes& changes) const {
        Text all;
        for (const auto& [place, value] : changes)
            all += (all.empty() ? u"" : u", ") + Text(kColumns[place]) + u" = " + literal(value);
        return all;
    }

    Accounts::iterator someAccount() {
        return std::next(expected_.begin(), static_cast<std::ptrdiff_t>(below(expected_.size())));
    }

    /// A new row whose number is taken, whatever becomes of it.
    std::unique_ptr<ado::Recordset> started() {
        auto rows = open(u" WHERE BenKTO_ID = 0");
        rows->AddNew();
        EXPECT_EQ(numberOf(*rows), ++lastNumber_);
        return rows;
    }
    void start() { started(); }

    void add() {
        auto rows = started();
        Account account = {Text(), base::Null{}, base::Null{}, false};
        Changes changes = someChanges();
        changes[kName] = someValue(kName);
        for (const auto& [place, value] : changes)
            rows->Fields().Item(kColumns[place]).setValue(value);
        rows->Update();
        apply(account, changes);
        expected_[lastNumber_] = account;
    }

    void insert() {
        const Text name = someName();
        connection_->Execute(u"INSERT INTO Benutzerkonto (BenKTO_Name, BenKTO_R_ProgUpdate) VALUES (" + literal(name) +
                             u", -1)");
        expected_[++lastNumber_] = {name, base::Null{}, base::Null{}, true};
    }

    void change() {
        const auto account = someAccount();
        auto rows = open(u" WHERE BenKTO_ID = " + base::decimal(account->first));
        const Changes changes = someChanges();
        for (const auto& [place, value] : changes)
            rows->Fields().Item(kColumns[place]).setValue(value);
        rows->Update();
        apply(account->second, changes);
    }

    void updateOne() {
        const auto account = someAccount();
        const Changes changes = someChanges();
        connection_->Execute(u"UPDATE Benutzerkonto SET " + assignments(changes) + u" WHERE BenKTO_ID = " +
                             base::decimal(account->first));
        apply(account->second, changes);
    }

    void updateSome() {
        const auto first = someAccount();
        const std::int32_t end = first->first + static_cast<std::int32_t>(below(25));
        Changes changes = someChanges();
        changes.erase(kName);
        changes[kServerPath] = someValue(kServerPath);
        for (auto account = first; account != expected_.end() && account->first <= end; ++account)
            if (account->second[kRight] == Value(true)) apply(account->second, changes);
        connection_->Execute(u"UPDATE Benutzerkonto SET " + assignments(changes) +
                             u" WHERE BenKTO_R_ProgUpdate = TRUE AND BenKTO_ID" + u" BETWEEN " +
                             base::decimal(first->first) + u" AND " + base::decimal(end));
    }

    void remove() {
        const auto first = someAccount();
        const std::int32_t end = first->first + (below(4) == 0 ? static_cast<std::int32_t>(below(30)) : 0);
        const auto behind = expected_.upper_bound(end);
        try {
            connection_->Execute(u"DELETE FROM Benutzerkonto WHERE BenKTO_ID >= " + base::decimal(first->first) +
                                 u" AND BenKTO_ID <= " + base::decimal(end));
            expected_.erase(first, behind);
        } catch (const base::RuntimeError& error) {
            // Rows of other tables of the file refer to one of them: then all stay.
            if (error.description().find(u"in Beziehung stehende") == Text::npos) throw;
        }
    }

    test::Machine machine_;
    std::mt19937 random_;
    Factory factory_{[this](const Text&) { return machine_.storage(); }};
    std::unique_ptr<ado::Connection> connection_ = factory_.createConnection();
    Accounts expected_;
    std::int32_t lastNumber_ = 0;
    std::int32_t names_ = 0;
};

std::vector<jet::Seed> accountFiles() {
    std::vector<jet::Seed> files;
    for (const jet::Seed& seed : jet::seeds()) {
        if (seed.name == "types" || seed.name == "related" ||
            (seed.name.ends_with(".mdb") && !seed.name.starts_with("BenKTO")))
            continue;
        files.push_back(seed);
        const bool isPlain = jet::Header::read(base::ByteView(seed.file)).databaseKey == 0;
        if (isPlain) files.push_back({seed.name + ", encoded", test::encoded(seed.file, 0xA1B2C3D4U)});
    }
    return files;
}

/// TOLV_OPERATIONS and TOLV_RANDOM_SEED make longer runs, and the same ones again.
TEST(AccountWork, AtRandomEndsWhereAMapEndsInASoundFile) {
    constexpr std::uint32_t kBatch = 100;
    const std::uint32_t operations = test::environmentNumber("TOLV_OPERATIONS", 300);
    const std::uint32_t seed = test::environmentNumber("TOLV_RANDOM_SEED", std::random_device{}());
    std::cout << "TOLV_RANDOM_SEED=" << seed << "\n";
    for (const jet::Seed& file : accountFiles()) {
        const bool isOurs = file.name.find('.') == std::string::npos;
        const auto writers = isOurs ? test::Writers::OnlyWe : test::Writers::Others;
        AccountWork work(file.file, seed);
        for (std::uint32_t i = 1; i <= operations; ++i) {
            ASSERT_NO_THROW(work.step()) << file.name << ", operation " << i;
            if (i % kBatch != 0 && i != operations) continue;
            ASSERT_EQ(work.stored(), work.expected()) << file.name << ", operation " << i;
            ASSERT_EQ(test::faultsIn(work.file(), jet::kSeedPassword, writers), "") << file.name << ", operation " << i;
        }
    }
}

}  // namespace
}  // namespace ado::embedded
