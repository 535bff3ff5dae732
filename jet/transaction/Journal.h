#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "jet/storage/PageIo.h"
#include "jet/storage/Storage.h"
#include "jet/transaction/JournalRecord.h"

/// The file beside the database that makes a write atomic. It holds the old bytes of all pages that a transaction
/// changes. It exists from the transaction's commit until the changed pages are flushed.
///
/// It is first written and flushed under a temporary name (kNewJournalSuffix), and then gets its final name. So a
/// journal under the temporary name is *unfinished*: the file has not been touched. A journal under the final name was
/// whole once.
///
/// A writer holds the exclusive lock from before the journal is made until it is deleted. So if there is a journal
/// while the lock is free, its writer died: it is a *left* journal. It is *whole* if its header, its index, all images
/// and its length agree with the checksums. A page is *torn* if each of its 512-byte sectors
/// is either the old or the new one.
///
/// Promises, each with the test that tries to break it (tests/jet/CrashTest.cpp):
///
///  1. No byte of the file changes before the journal is whole and, with its final name, on the disk.
///     CrashSweep.EveryStopLeavesTheOldFileOrTheNewOne
///  2. The journal is deleted only after all pages are on the disk. After a failed flush, memory may hold bytes that
///     are not on the disk. So recovery writes every page once more before it flushes.
///     FailingMachine.TheNextProgramFlushesWhatItReads
///  3. A commit that has returned is permanent, even if the deletion of its journal is lost: a left journal whose pages
///     are all new in the file is deleted, not applied.   CrashSweep.EveryStopLeavesTheOldFileOrTheNewOne
///  4. A left journal is applied only if every page that it names is old, new or torn in the file, if the file's length
///     is between the old and the new one, and if the original engine has not committed since.
///     LeftJournal.IsNeverAppliedToAFileThatAnotherProgramHasWritten
///  5. A journal that is not whole is neither applied nor deleted.
///     LeftJournal.IsNeitherAppliedNorDeletedIfItIsDamaged
///  6. A journal of another file, or a file that is not a journal, is never applied.
///     LeftJournal.OfAnotherFileIsNeverApplied
///  7. If 4, 5 or 6 refuses, nothing is changed: neither the file nor the journal.   The same three tests
///  8. A rollback that is interrupted can be repeated.   CrashSweep.AnInterruptedRollbackCanBeRepeated
///  9. If a write fails while its program goes on, the file is the old one again, or the journal stays for the next
///     opener.   RandomWork.GivesTheExpectedRowsInASoundFile
///
/// What may be lost: the transaction that was being committed. What cannot be detected: a journal that was moved or
/// deleted while it was needed; a journal that was put back after this engine has written again, if all pages it names
/// happen to be old or new; and a second hard link to the file under another name.
namespace jet {

class Journal {
public:
    /// @param storage  must outlive the journal
    explicit Journal(Storage& storage) : storage_(storage) {}

    /// Makes the journal and returns when it is on the disk. After a failure it is deleted if possible.
    /// @param file     in its old state
    /// @param changes  first the changed pages, then the appended ones, each group in ascending order
    /// @throws RuntimeError  readOnly() if the system does not allow us to create the journal
    void write(PageIo& file, PageNumber oldPageCount, const std::vector<PageChange>& changes);

    /// The reason why there is a journal.
    enum class Cause {
        Left,         ///< its writer died. If all pages are new, the commit may have returned, so the new state is kept
        FailedWrite,  ///< a page could not be written; nothing was flushed
        FailedFlush,  ///< memory and disk may differ
    };

    /// Recovers from the journal, if there is one. Afterwards the file is whole and on the disk, and the journal is
    /// deleted.
    /// @param file  open for writing, and locked
    /// @throws RuntimeError that names both files if the journal must not be applied (promises 4 to 6)
    void recover(PageIo& file, Cause cause);

    /// Deletes a journal that is not needed any more. If that fails, the next opener deletes it (promise 3).
    void remove() { storage_.removeJournal(); }

private:
    void settle(PageIo& file, PageIo& journal, Cause cause);
    [[noreturn]] void refuse(base::TextView why) const;

    Storage& storage_;
};

}  // namespace jet
