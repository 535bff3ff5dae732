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

/// What a reading operation does if it finds a journal that a dead writer left.
enum class LeftJournalRule {
    Refuse,    ///< for callers that must not write: an error says so
    RollBack,  ///< for callers that may write
    Ignore,    ///< for callers that report the journal themselves, and show the file as it is
};

/// An open file. Nothing that was read is kept between operations, because other programs do not announce their
/// changes.
/// Opening, reading and closing change no byte of the file.
class Database {
public:
    /// Checks format and password.
    /// @param password     ignored if the file has none; case-sensitive
    /// @throws RuntimeError if the file cannot be opened, its format is unknown (no database, an older or a later one),
    /// the password is wrong, or there is a journal that must not be rolled back
    static Database open(std::unique_ptr<Storage> storage, base::TextView password,
                         LeftJournalRule rule = LeftJournalRule::Refuse);

    /// The same for bytes that are in no file; they can only be read.
    /// @param displayPath  for error messages
    /// @param password     ignored if the bytes have none; case-sensitive
    /// @throws RuntimeError if the format is unknown (no database, an older or a later one) or the password is wrong
    static Database open(std::unique_ptr<PageIo> io, base::Text displayPath, base::TextView password);

    const base::Text& path() const { return path_; }

    /// A view of the file as it is now. It does not change until the operation ends. The database must outlive it. Only
    /// one operation at a time.
    /// @throws RuntimeError if somebody keeps the file locked, or there is a journal that is not rolled back
    ReadOperation beginRead();

private:
    friend class ReadOperation;
    friend class Transaction;
    Database(std::unique_ptr<PageIo> io, base::Text path) : io_(std::move(io)), path_(std::move(path)) {}

    void checkPassword(base::TextView password);
    bool hasJournal() const;

    std::unique_ptr<Storage> storage_;  ///< null if the bytes are in no file
    std::unique_ptr<PageIo> io_;
    base::Text path_;
    LeftJournalRule rule_ = LeftJournalRule::Ignore;
};

/// @throws RuntimeError if this is not a database of this format
Header readHeader(PageIo& io, const base::Text& path);

/// The file during one reading operation. It takes the shared lock and starts with an empty cache.
///
///     auto operation = database.beginRead();
///     auto table = openTable(operation, u"Benutzerkonto");
class ReadOperation final : public PageSource {
public:
    explicit ReadOperation(Database& database);

    PageNumber pageCount() const override { return pages_->pageCount(); }
    PageView page(PageNumber number) override { return pages_->page(number); }

    const Header& header() const { return header_; }
    /// The size of the file, including an incomplete last page.
    std::uint64_t sizeBytes() const { return database_.io_->sizeBytes(); }

    /// The journal beside the file, if any. Nobody writes during a reading operation, so an interrupted writer left it.
    /// There can be one only if the database ignores journals.
    std::optional<base::Text> leftJournal() const;

private:
    /// Releases the lock even if the beginning of the operation fails. While it is held there is no journal, unless the
    /// database ignores journals.
    class SharedLock {
    public:
        explicit SharedLock(Database& database);
        ~SharedLock();
        SharedLock(const SharedLock&) = delete;
        SharedLock& operator=(const SharedLock&) = delete;

    private:
        /// From now on the destructor releases whatever lock was taken.
        explicit SharedLock(PageIo& io) : io_(io) {}

        PageIo& io_;
    };

    const Database& database_;
    SharedLock lock_;
    Header header_;
    std::unique_ptr<PageFile> pages_;
};

}  // namespace jet
