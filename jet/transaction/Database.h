#pragma once

#include <memory>
#include <optional>

#include "base/Text.h"
#include "jet/page/Header.h"
#include "jet/page/PageFile.h"
#include "jet/storage/PageIo.h"
#include "jet/storage/Storage.h"

namespace jet {

class ReadOperation;

/// What an operation that reads does about a journal that a dead writer left.
enum class LeftJournalRule {
    Refuse,    ///< for those who must not write: an error that says so
    RollBack,  ///< for those who may write
    Ignore,    ///< for who reports the journal himself, and shows the file as it lies there
};

/// An open file. Nothing read from it is kept between operations: other programs announce no change.
/// Opening, reading and closing change no byte of the file.
class Database {
public:
    /// Checks format and password.
    /// @param password     ignored by a file that has none; case counts
    /// @throws RuntimeError: the file cannot be opened; unknown format (no database, an older or a later one), wrong
    ///         password; a journal lies there
    static Database open(std::unique_ptr<Storage> storage, base::TextView password,
                         LeftJournalRule rule = LeftJournalRule::Refuse);

    /// The same for bytes that lie nowhere: they can be read only.
    /// @param displayPath  for error messages
    /// @param password     ignored by a file that has none; case counts
    /// @throws RuntimeError: unknown format (no database, an older or a later one), wrong password
    static Database open(std::unique_ptr<PageIo> io, base::Text displayPath, base::TextView password);

    const base::Text& path() const { return path_; }

    /// A view of the file as it is now, steady until the operation ends. The database must outlive it. One at a time.
    /// @throws RuntimeError if somebody keeps the file locked, or a journal lies there that is not rolled back
    ReadOperation beginRead();

private:
    friend class ReadOperation;
    friend class Transaction;
    Database(std::unique_ptr<PageIo> io, base::Text path) : io_(std::move(io)), path_(std::move(path)) {}

    void checkPassword(base::TextView password);
    bool journalLies() const;

    std::unique_ptr<Storage> storage_;  ///< none for bytes that lie nowhere
    std::unique_ptr<PageIo> io_;
    base::Text path_;
    LeftJournalRule rule_ = LeftJournalRule::Ignore;
};

/// @throws RuntimeError if this is no database of the format
Header readHeader(PageIo& io, const base::Text& path);

/// The file during one operation: takes the shared lock and starts with nothing cached.
///
///     auto operation = database.beginRead();
///     auto table = openTable(operation, u"Benutzerkonto");
class ReadOperation final : public PageSource {
public:
    explicit ReadOperation(Database& database);

    PageNumber pageCount() const override { return pages_->pageCount(); }
    PageView page(PageNumber number) override { return pages_->page(number); }

    const Header& header() const { return header_; }
    const PageFile& pages() const { return *pages_; }
    /// Of the file, a last page that is cut short included.
    std::uint64_t sizeBytes() const { return database_.io_->sizeBytes(); }

    /// The journal that lies beside the file. While an operation reads nobody writes, so an interrupted writer left it;
    /// there can be one only where the database ignores it.
    std::optional<base::Text> leftJournal() const;

private:
    /// Gives the lock back also when the beginning of an operation fails. No journal lies there while it is held,
    /// unless the database ignores it.
    class SharedLock {
    public:
        explicit SharedLock(Database& database);
        ~SharedLock();
        SharedLock(const SharedLock&) = delete;
        SharedLock& operator=(const SharedLock&) = delete;

    private:
        /// From here on the destructor gives back whatever was taken.
        explicit SharedLock(PageIo& io) : io_(io) {}

        PageIo& io_;
    };

    const Database& database_;
    SharedLock lock_;
    Header header_;
    std::unique_ptr<PageFile> pages_;
};

}  // namespace jet
