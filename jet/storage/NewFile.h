#pragma once

#include <memory>

#include "base/Text.h"
#include "jet/storage/PageIo.h"
#include "jet/storage/Storage.h"

namespace jet {

/// A new file that is being made. It is written under a temporary name in the same folder ("NAME-neu-1") and gets its
/// own name when all of it is on the disk. So nobody ever finds half a file under the final name, and an existing file
/// is never overwritten. The destructor deletes a file that was not published. If the program is killed, at most the
/// temporary file remains.
class NewFile {
public:
    /// @throws RuntimeError with the errors of openFile() and fileExists(). Also if a journal of its name exists: the
    /// new file would be mistaken for the half-written file of that journal.
    explicit NewFile(const base::Text& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Empty at first. Must not be used after publish().
    PageIo& io() { return *io_; }

    /// Returns when the file is on the disk under its final name.
    /// @throws RuntimeError  fileExists() if somebody else has made such a file meanwhile. After this and any other
    /// failure nothing is left.
    void publish();

private:
    explicit NewFile(std::unique_ptr<Storage> storage);

    std::unique_ptr<Storage> storage_;
    base::Text name_;  ///< its present name; empty if it must not be deleted
    std::unique_ptr<PageIo> io_;
};

/// The operations of the machine that a new file needs.
namespace machine {

bool fileIsThere(const base::Text& path);

/// @param shownPath  the path for messages
/// @return nothing if the name is taken
std::unique_ptr<PageIo> createFile(const base::Text& path, const base::Text& shownPath);

/// Renames a file that is not open. Never replaces another file.
/// @throws RuntimeError  fileExists(newPath)
void renameFile(const base::Text& path, const base::Text& newPath);

/// Returns when the names in the folder of the file are on the disk.
void syncFolder(const base::Text& path);

/// Deletes the file if possible.
void removeFile(const base::Text& path) noexcept;

}  // namespace machine

}  // namespace jet
