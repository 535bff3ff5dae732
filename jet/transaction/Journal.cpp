#include "jet/transaction/Journal.h"

#include <algorithm>

#include "jet/Errors.h"
#include "jet/page/Header.h"
#include "jet/transaction/Checksum.h"

namespace jet {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{1} << 20U;

/// Collects small pieces, so that the journal is written in few calls. Large pieces are not copied.
class Appender {
public:
    explicit Appender(PageIo& io) : io_(io) {}

    void add(std::span<const std::uint8_t> bytes) {
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
        if (buffer_.size() >= kChunkBytes) flush();
    }

    void flush() {
        if (buffer_.empty()) return;
        io_.write(offset_, buffer_);
        offset_ += buffer_.size();
        buffer_.clear();
    }

private:
    PageIo& io_;
    base::Bytes buffer_;
    std::uint64_t offset_ = 0;
};

/// Deletes a journal that did not get its final name. The file has not been touched yet.
class Unfinished {
public:
    explicit Unfinished(Storage& storage) : storage_(storage) {}
    ~Unfinished() { storage_.removeNewJournal(); }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

private:
    Storage& storage_;
};

/// The bytes at `offset`; fewer if the file ends earlier.
base::Bytes readAtMost(PageIo& io, std::uint64_t offset, std::size_t count) {
    const std::uint64_t size = io.sizeBytes();
    const std::uint64_t there = size > offset ? std::min<std::uint64_t>(size - offset, count) : 0;
    base::Bytes bytes(static_cast<std::size_t>(there));
    if (!bytes.empty()) io.read(offset, bytes);
    return bytes;
}

base::Bytes readPage(PageIo& file, PageNumber number) {
    return readAtMost(file, std::uint64_t{number} * kPageSize, kPageSize);
}

FileIdentity identityOf(Storage& storage, PageIo& file) {
    const base::Bytes date = readAtMost(file, kCreatedOffset, 8);
    return {storage.fileName(), date.size() == 8 ? base::ByteView(date).u64(0) : 0};
}

/// The original engine changes these words with each of its commits; this engine never does.
std::uint64_t commitWordsOf(PageIo& file) {
    return checksum(readAtMost(file, kCommitWordsOffset, kCommitWordsBytes));
}

/// The state of a page or of the whole file, compared with a journal: old (before the write), new (after it), or
/// foreign, if a part is neither.
struct State {
    bool isOld = true;
    bool isNew = true;
    bool isForeign = false;
};

/// @param page    shorter than a page at the end of the file
/// @param before  the old bytes from the journal
State stateOf(const JournalEntry& entry, const base::Bytes& page, const base::Bytes& before) {
    State state;
    for (std::size_t offset = 0; offset < kPageSize; offset += kSectorBytes) {
        const auto rest = std::span(page).subspan(std::min(offset, page.size()));
        const auto sector = rest.first(std::min(rest.size(), kSectorBytes));
        const auto old = std::span(before).subspan(offset, sector.size());
        const bool isOld = std::equal(sector.begin(), sector.end(), old.begin());
        const bool isNew = sector.size() == kSectorBytes && checksum(sector) == entry.after[offset / kSectorBytes];
        state.isOld = state.isOld && isOld;
        state.isNew = state.isNew && isNew;
        state.isForeign = state.isForeign || (!isOld && !isNew);
    }
    return state;
}

/// A complete journal, read in place.
struct WholeJournal {
    PageIo& io;
    JournalHeader header;
    std::vector<JournalEntry> entries;

    base::Bytes image(std::size_t i) const { return readAtMost(io, header.imageOffset(i), kPageSize); }
};

/// @return nothing if the journal cannot be read to its end
std::optional<WholeJournal> readToItsEnd(PageIo& io, const JournalHeader& header) {
    if (io.sizeBytes() != header.sizeBytes()) return std::nullopt;
    auto entries = header.decodeIndex(base::ByteView(readAtMost(io, kSectorBytes, header.indexBytes())));
    if (!entries) return std::nullopt;
    WholeJournal journal{io, header, *std::move(entries)};
    for (std::size_t i = 0; i < journal.entries.size() && !journal.entries[i].isAppended; ++i) {
        if (checksum(journal.image(i)) != journal.entries[i].before) return std::nullopt;
    }
    return journal;
}

/// The state of the file, compared with the journal beside it.
State stateOf(PageIo& file, const WholeJournal& journal) {
    const JournalHeader& header = journal.header;
    const std::uint64_t length = file.sizeBytes();
    State state{length == header.oldLength, length == header.newLength,
                length < header.oldLength || length > header.newLength};
    for (std::size_t i = 0; i < journal.entries.size(); ++i) {
        const JournalEntry& entry = journal.entries[i];
        const base::Bytes before = entry.isAppended ? base::Bytes(kPageSize) : journal.image(i);
        const State page = stateOf(entry, readPage(file, entry.number), before);
        state.isNew = state.isNew && page.isNew;
        // A rollback removes appended pages, whatever they contain.
        if (entry.isAppended) continue;
        state.isOld = state.isOld && page.isOld;
        state.isForeign = state.isForeign || page.isForeign;
    }
    const bool isMixed = !state.isOld && !state.isNew;
    const bool namesHeader = !journal.entries.empty() && journal.entries.front().number == 0;
    if (isMixed && !namesHeader && commitWordsOf(file) != header.commitWords) state.isForeign = true;
    return state;
}

void rewrite(PageIo& file, const JournalEntry& entry, const base::Bytes& page) {
    file.write(std::uint64_t{entry.number} * kPageSize, page);
}

}  // namespace

void Journal::write(PageIo& file, PageNumber oldPageCount, const std::vector<PageChange>& changes) {
    const auto record = JournalRecord::of(identityOf(storage_, file), commitWordsOf(file), oldPageCount, changes);
    const Unfinished unfinished(storage_);
    {
        const auto journal = storage_.createJournal();
        Appender appender(*journal);
        appender.add(record.encodeHeader());
        appender.add(record.encodeIndex());
        for (const PageChange& change : changes)
            appender.add(change.before);
        appender.flush();
        journal->sync();
    }
    storage_.finishJournal();
}

void Journal::recover(PageIo& file, Cause cause) {
    storage_.removeNewJournal();
    if (!storage_.hasJournal()) return;
    settle(file, *storage_.openJournal(), cause);
    if (!storage_.removeJournal()) throw journalStays(storage_.path(), storage_.journalPath());
}

void Journal::settle(PageIo& file, PageIo& journal, Cause cause) {
    const auto header = JournalHeader::decode(base::ByteView(readAtMost(journal, 0, kSectorBytes)));
    if (!header) refuse(u"ist beschädigt oder keines dieses Programms");
    if (header->file != identityOf(storage_, file)) refuse(u"gehört zu einer anderen Datei");
    const auto whole = readToItsEnd(journal, *header);
    if (!whole) refuse(u"ist beschädigt");
    const State state = stateOf(file, *whole);
    if (state.isForeign) refuse(u"passt nicht mehr zu ihr, sie wurde seither von anderer Seite geändert");
    // Every page is written, even if it looks right: after a failed flush the disk may have other bytes than memory. If
    // only a write has failed, nothing was flushed, so old pages are left alone: without free space even they could not
    // be written.
    if (state.isNew && cause == Cause::Left) {
        for (const JournalEntry& entry : whole->entries)
            rewrite(file, entry, readPage(file, entry.number));
    } else {
        for (std::size_t i = 0; i < whole->entries.size() && !whole->entries[i].isAppended; ++i) {
            const base::Bytes old = whole->image(i);
            if (cause == Cause::FailedWrite && readPage(file, whole->entries[i].number) == old) continue;
            rewrite(file, whole->entries[i], old);
        }
        file.resize(header->oldLength);
    }
    file.sync();
}

void Journal::refuse(base::TextView why) const {
    throw journalRefused(storage_.path(), storage_.journalPath(), why);
}

}  // namespace jet
