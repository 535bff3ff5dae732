#pragma once

#include <chrono>
#include <memory>

#include "base/Text.h"
#include "jet/Header.h"
#include "jet/PageFile.h"
#include "jet/PageIo.h"

namespace jet {

/// How long an operation waits for another program of this engine.
inline constexpr std::chrono::milliseconds kLockWait{2000};

class ReadOperation;

/// An open file. Nothing read from it is kept between operations: other programs announce no change.
/// Opening, reading and closing change no byte of the file.
class Database {
public:
    /// Checks format and password.
    /// @param displayPath  for error messages
    /// @param password     ignored by a file that has none; case counts
    /// @throws RuntimeError: unknown format (no database, an older or a later one), wrong password
    static Database open(std::unique_ptr<PageIo> io, base::Text displayPath, base::TextView password);

    const base::Text& path() const { return path_; }

    /// A view of the file as it is now, steady until the operation ends. The database must outlive it. One at a time.
    /// @throws RuntimeError if somebody keeps the file locked
    ReadOperation beginRead();

private:
    friend class ReadOperation;
    Database(std::unique_ptr<PageIo> io, base::Text path) : io_(std::move(io)), path_(std::move(path)) {}

    std::unique_ptr<PageIo> io_;
    base::Text path_;
};

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

private:
    /// Gives the lock back also when the beginning of an operation fails.
    class SharedLock {
    public:
        explicit SharedLock(Database& database);
        ~SharedLock();
        SharedLock(const SharedLock&) = delete;
        SharedLock& operator=(const SharedLock&) = delete;

    private:
        PageIo& io_;
    };

    SharedLock lock_;
    Header header_;
    std::unique_ptr<PageFile> pages_;
};

}  // namespace jet
