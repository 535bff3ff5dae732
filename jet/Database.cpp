#include "jet/Database.h"

#include <algorithm>

#include "jet/Errors.h"

namespace jet {
namespace {

Header readHeader(PageIo& io, const base::Text& path) {
    base::Bytes page(static_cast<std::size_t>(std::min<std::uint64_t>(io.sizeBytes(), kPageSize)));
    io.read(0, page);
    const base::ByteView bytes{page};
    if (Header::formatOf(bytes) != Header::Format::Jet4 || page.size() < kPageSize) throw unknownFormat(path);
    return Header::read(bytes);
}

}  // namespace

Database Database::open(std::unique_ptr<PageIo> io, base::Text displayPath, base::TextView password) {
    Database database(std::move(io), std::move(displayPath));
    const ReadOperation operation(database);
    const base::Text& wanted = operation.header().password;
    if (!wanted.empty() && wanted != password) throw wrongPassword();
    return database;
}

ReadOperation Database::beginRead() {
    return ReadOperation(*this);
}

ReadOperation::SharedLock::SharedLock(Database& database) : io_(*database.io_) {
    if (!io_.lock(LockKind::Shared, kLockWait)) throw fileInUse(database.path_);
}

ReadOperation::SharedLock::~SharedLock() {
    io_.lock(LockKind::None, {});
}

ReadOperation::ReadOperation(Database& database)
    : lock_(database),
      header_(readHeader(*database.io_, database.path_)),
      pages_(std::make_unique<PageFile>(*database.io_, header_.databaseKey)) {}

}  // namespace jet
