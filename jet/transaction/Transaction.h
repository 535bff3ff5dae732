#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "jet/Errors.h"
#include "jet/page/PageStore.h"
#include "jet/transaction/Database.h"
#include "jet/transaction/Journal.h"
#include "jet/transaction/WriteAccess.h"

namespace jet {

/// All changes of one `Update` or one statement. The changed pages stay in memory and reach the file all at once or not
/// at all. As soon as the transaction is over, others can read and write again.
///
///     Transaction transaction(database);
///     ... openTable(transaction, ...), transaction.change(page), ...
///     transaction.commit();
///
/// States:
///
///                 commit()           all flushed, journal gone
///        Open ---------------> Writing -------------------------> Committed
///         |                       |
///         | drop(),               | a write or flush fails
///         | destructor            v
///         v                     Failed
///       Dropped
///
///     Open       only this transaction may write; the file is untouched; changed pages are in memory
///     Writing    first the journal is being made, then the file is written
///     Committed  the file is the new one and on the disk
///     Failed     the file is the old one again, or its journal exists for the next opener to recover from
///     Dropped    the file is untouched
///
/// In all states but Open and Writing, file, lock and memory are released, and the pages must not be used any more: the
/// next operation reads the file again.
class Transaction final : public PageStore {
public:
    enum class State { Open, Writing, Committed, Failed, Dropped };

    /// Begins: keeps others from writing, looks for users of the original engine, takes the lock (all this waits at
    /// most kLockWait), rolls back the work of an interrupted writer, and reads the file again. No other operation of
    /// the same database may be running.
    /// @throws WriteRefused: in use, read-only; and the errors of WriteAccess
    explicit Transaction(Database& database);
    ~Transaction() override;
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    PageNumber pageCount() const override { return pageCount_; }
    PageView page(PageNumber number) override;
    std::span<std::uint8_t> change(PageNumber number) override;
    PageNumber append() override;

    const Header& header() const { return header_; }
    State state() const { return state_; }

    /// Writes the changed pages. The transaction ends in any case.
    /// @throws RuntimeError if the commit failed; then the state is Failed
    void commit();

    /// Ends the transaction; the file stays as it was.
    void drop();

private:
    struct ChangedPage;

    std::vector<PageChange> changes();
    void write(const std::vector<PageChange>& changes);
    void writePages(const std::vector<PageChange>& changes);
    void undo(Journal& journal);
    void end(State state);

    Storage& storage_;
    State state_ = State::Open;
    std::unique_ptr<WriteAccess> access_;
    Header header_;
    std::unique_ptr<PageFile> pages_;
    PageNumber oldPageCount_ = 0;
    PageNumber pageCount_ = 0;
    std::unordered_map<PageNumber, std::shared_ptr<ChangedPage>> changed_;
    bool isFlushing_ = false;  ///< all pages have been written
};

}  // namespace jet
