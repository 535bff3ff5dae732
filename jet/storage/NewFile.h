#pragma once

#include <memory>

#include "base/Text.h"
#include "jet/storage/PageIo.h"
#include "jet/storage/Storage.h"

namespace jet {

/// A file in the making. It is written under a name beside its own ("NAME-neu-1") and gets its own name when all of it
/// is on the disk, so nobody ever finds half a file under that name, and a file that exists is never written over. What
/// is not published goes with this object; a program that is killed leaves at most the neighbour.
class NewFile {
public:
    /// @throws RuntimeError with the errors of openFile(), fileExists(), or if a journal of its name lies there, by
    /// which the new file would be taken for the half-written one
    explicit NewFile(const base::Text& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Empty at first. Until publish().
    PageIo& io() { return *io_; }

    /// Returns when the file lies on the disk under its name.
    /// @throws RuntimeError  fileExists() if somebody else has made one meanwhile; then, as after every failure,
    /// nothing is left
    void publish();

private:
    explicit NewFile(std::unique_ptr<Storage> storage);

    std::unique_ptr<Storage> storage_;
    base::Text name_;  ///< that it has now; empty if it is not to be removed
    std::unique_ptr<PageIo> io_;
};

/// What a file in the making wants of the machine.
namespace machine {

bool fileIsThere(const base::Text& path);

/// @param shownPath  for the messages
/// @return nothing if the name is taken
std::unique_ptr<PageIo> createFile(const base::Text& path, const base::Text& shownPath);

/// Renames a file that is not open; never over another one.
/// @throws RuntimeError  fileExists(newPath)
void renameFile(const base::Text& path, const base::Text& newPath);

/// Returns when the names in the file's folder are on the disk.
void syncFolder(const base::Text& path);

/// As far as it can be done.
void removeFile(const base::Text& path) noexcept;

}  // namespace machine

}  // namespace jet
