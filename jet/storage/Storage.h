#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "base/Text.h"
#include "jet/storage/LockFile.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// The place of a database: the file, the journal beside it, and the lock file of the original engine. A writer needs
/// more from the machine than the bytes of one file; this interface provides it.
///
/// Names are resolved once, through links and short names. So all programs find the same journal, whatever name they
/// use for the file.
///
/// Failures after which a caller can go on are results: the file is in use, the journal cannot be deleted. All others
/// are thrown as a RuntimeError, for example readOnly() without the right to write.
class Storage {
public:
    virtual ~Storage() = default;
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;

    /// The path as the user gave it, for messages.
    virtual const base::Text& path() const = 0;
    /// The file's own name, without its folder.
    virtual base::Text fileName() const = 0;
    virtual base::Text journalPath() const = 0;

    /// Opens for reading only. Others may read and write.
    virtual std::unique_ptr<PageIo> openForReading() = 0;

    /// Opens for reading and writing. Keeps others from writing where the system can do that (Windows). Does not wait.
    /// @return null if another program has the file open and prevents writing
    virtual std::unique_ptr<PageIo> openForWriting() = 0;

    /// Whether anything exists under the journal's name, even if it is not an ordinary file.
    virtual bool hasJournal() = 0;
    /// Opens for reading only. Refuses everything but ordinary files, and follows no links.
    virtual std::unique_ptr<PageIo> openJournal() = 0;

    /// Makes a new, empty journal under a temporary name (kNewJournalSuffix). It has the rights of the file: the users
    /// who may read and write the file may do so with the journal, and nobody else. (Windows: the users whom the folder
    /// allows.)
    /// @throws RuntimeError if something exists under that name
    virtual std::unique_ptr<PageIo> createJournal() = 0;

    /// Gives the new journal its final name, and returns when the name is on the disk. The journal must be written,
    /// flushed and closed. After a failure the journal no longer has the final name, if that is possible.
    /// @throws RuntimeError if something exists under the final name
    virtual void finishJournal() = 0;

    /// @return false if the journal could not be deleted. It must not be open.
    virtual bool removeJournal() = 0;

    /// Deletes an unfinished journal if there is one, if it is an ordinary file, and if it can be deleted.
    virtual void removeNewJournal() = 0;

    /// Finds a user who has the file open through the original engine: one whose byte of the lock file is locked. The
    /// lock file is neither changed nor deleted. In a lock file that was left over, no byte is locked.
    virtual std::optional<FileUser> originalUser() = 0;

protected:
    Storage() = default;
};

/// A journal has the name of the file and this suffix. So it comes right after the file in a sorted folder, and no
/// program that looks for databases takes it for one.
inline constexpr base::TextView kJournalSuffix = u"-journal";

/// The suffix until the journal is whole and on the disk. A journal of this name is unfinished, and the file is
/// untouched.
inline constexpr base::TextView kNewJournalSuffix = u"-journal-neu";

/// A file of this machine. This call opens nothing and does not fail.
std::unique_ptr<Storage> fileStorage(const base::Text& path);

}  // namespace jet
