#include <gtest/gtest.h>

#include "jet/transaction/Transaction.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

using test::Machine;

TEST(Transaction, ShowsItsChangesOnlyToItselfUntilCommit) {
    const base::Bytes old = test::sampleFile({});
    const Machine machine(old);
    Database database = Database::open(machine.storage(), {});
    Transaction transaction(database);
    const PageView earlier = transaction.page(6);
    const std::uint8_t byte = earlier.bytes.u8(100);
    transaction.change(6)[100] = static_cast<std::uint8_t>(byte + 1);
    transaction.change(6)[101] = 9;
    const PageNumber added = transaction.append();
    EXPECT_EQ(added, old.size() / kPageSize);
    EXPECT_EQ(transaction.pageCount(), added + 1);
    EXPECT_EQ(transaction.page(6).bytes.u8(100), static_cast<std::uint8_t>(byte + 1));
    EXPECT_EQ(transaction.page(added).bytes.u32(0), 0U);
    EXPECT_EQ(earlier.bytes.u8(100), byte);
    EXPECT_THROW(transaction.change(added + 1), base::RuntimeError);
    EXPECT_THROW(transaction.page(added + 1), base::RuntimeError);
    EXPECT_EQ(machine.file(), old);
    transaction.commit();
    EXPECT_EQ(machine.steps(), 9) << "two of them write pages, see the next test";
    EXPECT_EQ(machine.file()[6 * kPageSize + 101], 9);
    EXPECT_EQ(database.beginRead().pageCount(), added + 1);
}

TEST(Transaction, CostsTwoFlushesOrNothingIfNothingChanged) {
    const base::Bytes old = test::sampleFile({});
    const Machine machine(old);
    Database database = Database::open(machine.storage(), {});
    {
        Transaction idle(database);
        idle.change(4)[7] ^= 0U;
        idle.commit();
        Transaction forgotten(database);
        forgotten.change(4)[7] ^= 1U;
        Transaction dropped(database);
        dropped.change(4)[7] ^= 1U;
        dropped.drop();
    }
    EXPECT_EQ(machine.steps(), 0);
    Transaction transaction(database);
    for (const PageNumber page : {4U, 9U, 11U})
        transaction.change(page)[7] ^= 1U;
    transaction.commit();
    EXPECT_EQ(machine.flushes(), 2);
    // Create, write, flush and rename the journal, flush its name; write three pages, flush; delete the journal.
    EXPECT_EQ(machine.steps(), 10);
}

TEST(Transaction, IsRefusedInAFileThatEndsInsideAPage) {
    base::Bytes file = test::sampleFile({});
    file.push_back(1);
    Database database = test::openSample(file);
    EXPECT_NE(errorOf([&] { Transaction{database}; }).find("mitten in dieser Seite"), std::string::npos);
}

}  // namespace
}  // namespace jet
