#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "base/Text.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// Who holds a file through the original engine, as its lock file names him; either name may be empty.
struct FileUser {
    base::Text computer;
    base::Text user;
};

enum class Refusal {
    None,
    InUse,     ///< somebody has it open in a way that excludes us
    ReadOnly,  ///< the file, the folder or the medium may not be written
};

/// A file opened for writing, or the reason why it was not.
struct OpenedFile {
    std::unique_ptr<PageIo> io;
    Refusal refusal = Refusal::None;
};

/// Where a database lies: the file, the journal beside it, and the lock file of the original engine. What a writer
/// needs of the machine beyond the bytes of one file.
///
/// Names are resolved once, through links and short names, so that everybody who opens the file by whatever name
/// finds the same journal. All methods throw a RuntimeError when the machine fails in another way than said here.
class Storage {
public:
    virtual ~Storage() = default;
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;

    /// As the user named it, for messages.
    virtual const base::Text& path() const = 0;
    /// The file's own name, without folder.
    virtual base::Text fileName() const = 0;
    virtual base::Text journalPath() const = 0;

    /// For reading only; others may read and write.
    virtual std::unique_ptr<PageIo> openForReading() = 0;

    /// For reading and writing, denying others the writing where the system can (Windows). Does not wait.
    virtual OpenedFile openForWriting() = 0;

    /// Whether something lies there under the journal's name, whatever it is.
    virtual bool journalLies() = 0;
    /// For reading only. What is no ordinary file is refused, and links are not followed.
    virtual std::unique_ptr<PageIo> openJournal() = 0;

    /// A new, empty journal under a name of its own (kNewJournalSuffix). Whoever may read and write the file may do so
    /// with the journal, and nobody else (Windows: whoever the folder lets).
    /// @throws RuntimeError if something lies there under that name
    virtual OpenedFile createJournal() = 0;

    /// Gives the new journal, written, flushed and closed, its final name and returns when the name is on the disk. If
    /// that fails, it has the name no more, where it can be helped.
    /// @throws RuntimeError if something lies there under that name
    virtual Refusal finishJournal() = 0;

    /// @return false if the journal could not be deleted. It must not be open.
    virtual bool removeJournal() = 0;

    /// Deletes an unfinished journal, if there is one, it is an ordinary file, and it can be deleted.
    virtual void removeNewJournal() = 0;

    /// Who holds the file through the original engine: looks whether anybody has locked his byte of the lock file. The
    /// lock file is neither changed nor deleted; one that was left behind has no locked byte.
    virtual std::optional<FileUser> originalUser() = 0;

protected:
    Storage() = default;
};

/// What a journal is called: the file's name and this. It keeps beside the file in a sorted folder, and no program
/// that looks for databases takes it for one.
inline constexpr base::TextView kJournalSuffix = u"-journal";

/// What it is called until it is whole and on the disk. So one of this name is unfinished, and the file untouched.
inline constexpr base::TextView kNewJournalSuffix = u"-journal-neu";

/// A file of this machine. Opens nothing yet and does not fail.
std::unique_ptr<Storage> fileStorage(const base::Text& path);

}  // namespace jet
