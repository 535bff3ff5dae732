#include "jet/transaction/Database.h"

#include <algorithm>

#include "jet/Errors.h"
#include "jet/transaction/WriteAccess.h"

namespace jet {
namespace {

/// A few writers may die one after the other, but not more.
constexpr int kRollBacks = 5;

}  // namespace

Header readHeader(PageIo& io, const base::Text& path) {
    base::Bytes page(static_cast<std::size_t>(std::min<std::uint64_t>(io.sizeBytes(), kPageSize)));
    io.read(0, page);
    const base::ByteView bytes{page};
    if (page.size() < kPageSize || !Header::isJet4(bytes)) throw unknownFormat(path);
    return Header::read(bytes);
}

Database Database::open(std::unique_ptr<Storage> storage, base::TextView password, LeftJournalRule rule) {
    auto io = storage->openForReading();
    Database database(std::move(io), storage->path());
    database.storage_ = std::move(storage);
    database.rule_ = rule;
    database.checkPassword(password);
    return database;
}

Database Database::open(std::unique_ptr<PageIo> io, base::Text displayPath, base::TextView password) {
    Database database(std::move(io), std::move(displayPath));
    database.checkPassword(password);
    return database;
}

void Database::checkPassword(base::TextView password) {
    const ReadOperation operation(*this);
    const base::Text& wanted = operation.header().password;
    if (!wanted.empty() && wanted != password) throw wrongPassword();
}

bool Database::hasJournal() const {
    return storage_ && storage_->hasJournal();
}

ReadOperation Database::beginRead() {
    return ReadOperation(*this);
}

ReadOperation::SharedLock::SharedLock(Database& database) : SharedLock(*database.io_) {
    for (int rollBacks = 0;; ++rollBacks) {
        if (!io_.lock(LockKind::Shared, kLockWait)) throw fileInUse(database.path_);
        if (database.rule_ == LeftJournalRule::Ignore || !database.hasJournal()) return;
        io_.lock(LockKind::None, {});
        Storage& storage = *database.storage_;
        if (database.rule_ == LeftJournalRule::Refuse || rollBacks == kRollBacks)
            throw journalLeft(storage.path(), storage.journalPath());
        WriteAccess::rollBack(storage);
    }
}

ReadOperation::SharedLock::~SharedLock() {
    io_.lock(LockKind::None, {});
}

ReadOperation::ReadOperation(Database& database)
    : database_(database),
      lock_(database),
      header_(readHeader(*database.io_, database.path_)),
      pages_(std::make_unique<PageFile>(*database.io_, header_.databaseKey)) {}

std::optional<base::Text> ReadOperation::leftJournal() const {
    return database_.hasJournal() ? std::optional(database_.storage_->journalPath()) : std::nullopt;
}

}  // namespace jet
