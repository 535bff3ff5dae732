#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "jet/storage/PageIo.h"
#include "jet/storage/Storage.h"
#include "jet/transaction/JournalRecord.h"

/// The file beside the file that makes a write whole: the old bytes of all pages that a transaction changes. It exists
/// from the transaction's commit until its pages are flushed.
///
/// It is written under a name of its own (kNewJournalSuffix), flushed, and only then given its final name. So one under
/// the first name is *unfinished*: the file has not been touched. One under the final name was whole once.
///
/// A writer holds the exclusive lock from before the journal is made until it is gone. So a journal that lies there
/// while the lock is free was left by a writer who died: a *left* journal. It is *whole* if its header, its index, all
/// images and its length agree with the checksums. A page is *torn* if each of its 512-byte sectors is the old or the
/// new one.
///
/// Promises, each with the test that tries to break it (tests/jet/CrashTest.cpp and JournalTest.cpp):
///
///  1. No byte of the file changes before the journal is whole and, with its final name, on the disk.
///     CrashSweep.EveryCutLeavesTheOldFileOrTheNewOne
///  2. The journal goes only after all pages are on the disk. What a failed flush has left in memory is not taken for
///     the disk's: whoever sees to a left journal writes every page once more before he flushes.
///     FailingMachine.PutsOnTheDiskWhatTheNextOneSees
///  3. A commit that has returned stays, even if the deletion of its journal is lost: a left journal whose pages are
///     all new ones is dropped, not applied.   CrashSweep.AnAcknowledgedCommitStays
///  4. A left journal is applied only if every old page it names is the old one, the new one or torn, if the file's
///     length lies between the old and the new one, and if the original engine has not committed since.
///     LeftJournal.IsNeverAppliedToAFileThatSomebodyElseHasWritten
///  5. One that is not whole is neither applied nor dropped.   CrashSweep.NoDamagedJournalIsAppliedOrDropped
///  6. One of another file, or one that is none, is never applied.   LeftJournal.OfAnotherFileIsNeverApplied
///  7. In the cases that 4, 5 and 6 refuse, nothing is changed: neither the file nor the journal.   The same three
///  8. A rollback that is cut off can be done again.   CrashSweep.ARollbackCanBeCutToo
///  9. A write that fails while its program lives on leaves the old file, or the journal to the next one.
///     FailingMachine.LeavesTheOldFileAndSaysWhy
///
/// What may be lost: the transaction that was being committed. What cannot be seen: a journal that was moved or deleted
/// while it was needed; one that was put back after this engine has written again, where all pages it names happen to
/// be old or new ones; and a second hard link to the file under another name.
namespace jet {

class Journal {
public:
    /// @param storage  must outlive the journal
    explicit Journal(Storage& storage) : storage_(storage) {}

    /// Makes the journal and returns when it is on the disk. If that fails, none is left where it can be helped.
    /// @param file     as it was before
    /// @param changes  the appended pages last, each part in ascending order
    Refusal write(PageIo& file, PageNumber oldPageCount, const std::vector<PageChange>& changes);

    /// Why a journal lies there.
    enum class Cause {
        Left,         ///< its writer died. If all pages are new, the write may have been acknowledged, and stays
        FailedWrite,  ///< a page could not be written; nothing was flushed
        FailedFlush,  ///< memory may hold other pages than the disk
    };

    /// Sees to the journal that lies there, if there is one: afterwards the file is whole and on the disk, and the
    /// journal gone.
    /// @param file  open for writing, and locked
    /// @throws RuntimeError naming both files if it must not be applied (promises 4 to 6)
    void recover(PageIo& file, Cause cause);

    /// The journal is not needed any more. One that cannot be removed is dropped by the next opener (promise 3).
    void remove() { storage_.removeJournal(); }

private:
    void settle(PageIo& file, PageIo& journal, Cause cause);
    [[noreturn]] void refuse(base::TextView why) const;

    Storage& storage_;
};

}  // namespace jet
