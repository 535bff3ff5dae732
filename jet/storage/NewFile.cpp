#include "jet/storage/NewFile.h"

#include <utility>

#include "jet/Errors.h"

namespace jet {
namespace {

constexpr base::TextView kNeighbourSuffix = u"-neu-";
/// There are never more than a few. A suffix with a number up to this is no longer than the suffix of a journal.
constexpr int kMostNeighbours = 999;

base::RuntimeError journalInTheWay(base::TextView path, base::TextView journalPath) {
    return failure(
        u"Die Datei " + quoted(path) + u" wird nicht angelegt: Das Journal " + quoted(journalPath) +
        u" liegt noch da, das der Datei gehört, die vorher so hieß. Wird diese noch gebraucht, geben Sie ihr "
        u"den Namen zurück und öffnen Sie sie; sonst löschen Sie das Journal.");
}

}  // namespace

NewFile::NewFile(const base::Text& path) : NewFile(fileStorage(path)) {
    if (storage_->hasJournal()) throw journalInTheWay(path, storage_->journalPath());
}

/// If a temporary file of this name exists, somebody may be writing it: so the next number is used.
NewFile::NewFile(std::unique_ptr<Storage> storage) : storage_(std::move(storage)) {
    const base::Text& path = storage_->path();
    if (machine::fileIsThere(path)) throw fileExists(path);
    for (int number = 1; !io_; ++number) {
        name_ = path + base::Text(kNeighbourSuffix) + base::decimal(number);
        io_ = machine::createFile(name_, path);
        if (!io_ && number == kMostNeighbours) throw fileExists(name_);
    }
}

NewFile::~NewFile() {
    io_.reset();
    if (!name_.empty()) machine::removeFile(name_);
}

void NewFile::publish() {
    io_->sync();
    io_.reset();
    machine::renameFile(name_, storage_->path());
    name_ = storage_->path();
    machine::syncFolder(name_);
    name_.clear();
}

}  // namespace jet
