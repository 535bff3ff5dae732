#include "jet/Journal.h"

#include <algorithm>

#include "jet/Checksum.h"
#include "jet/Errors.h"

namespace jet {
namespace {

constexpr std::uint64_t kCreationDateOffset = 0x72;
constexpr base::TextView kForeignChange = u"passt nicht mehr zu ihr, sie wurde seither von anderer Seite geändert";
constexpr std::size_t kChunkBytes = std::size_t{1} << 20U;

/// Gathers small pieces, so that the journal is written in few calls and large ones never lie in memory twice.
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

/// Takes an unfinished journal away again: the file has not been touched yet.
class Unfinished {
public:
    Unfinished(Storage& storage, std::unique_ptr<PageIo>& journal) : storage_(storage), journal_(journal) {}
    ~Unfinished() {
        if (isFinished_) return;
        journal_.reset();
        storage_.removeJournal();
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    void finish() { isFinished_ = true; }

private:
    Storage& storage_;
    std::unique_ptr<PageIo>& journal_;
    bool isFinished_ = false;
};

bool isZero(std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

/// The bytes at `offset`; fewer if the file ends before.
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

/// How a page in the file stands to a journal's entry.
struct PageState {
    bool isOld = true;
    bool isNew = true;
    bool isForeign = false;
};

/// @param page    shorter than a page where the file ends
/// @param before  the image; zeros for an appended page
PageState stateOf(const JournalEntry& entry, const base::Bytes& page, const base::Bytes& before) {
    PageState state;
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

/// A journal that lies there, as far as it can be read.
struct LeftJournal {
    std::optional<JournalHeader> header;
    std::optional<std::vector<JournalEntry>> entries;
    bool isComplete = false;
};

bool imagesAreSound(PageIo& journal, const JournalHeader& header, const std::vector<JournalEntry>& entries) {
    for (std::size_t image = 0; image < entries.size() && !entries[image].isAppended; ++image) {
        if (checksum(readAtMost(journal, header.imageOffset(image), kPageSize)) != entries[image].before) return false;
    }
    return true;
}

std::optional<JournalHeader> secondHeader(PageIo& journal) {
    const std::uint64_t size = journal.sizeBytes();
    if (size < 2 * kSectorBytes) return std::nullopt;
    return JournalHeader::decode(base::ByteView(readAtMost(journal, size - kSectorBytes, kSectorBytes)));
}

LeftJournal readJournal(PageIo& journal, const base::Bytes& firstSector) {
    LeftJournal left;
    left.header = JournalHeader::decode(base::ByteView(firstSector));
    if (!left.header) left.header = secondHeader(journal);
    if (!left.header) return left;
    const JournalHeader& header = *left.header;
    const auto indexAt = [&](std::uint64_t offset) {
        return header.decodeIndex(base::ByteView(readAtMost(journal, offset, header.indexBytes())));
    };
    left.entries = indexAt(kSectorBytes);
    const auto second = indexAt(header.secondIndexOffset());
    left.isComplete = left.entries && second && journal.sizeBytes() == header.sizeBytes() &&
                      readAtMost(journal, header.secondHeaderOffset(), kSectorBytes) == firstSector &&
                      imagesAreSound(journal, header, *left.entries);
    if (!left.entries) left.entries = second;
    return left;
}

/// Whether all that the journal tells says that the file is the one from before.
bool isUntouched(PageIo& file, const LeftJournal& left) {
    if (file.sizeBytes() != left.header->oldLength) return false;
    if (!left.entries) return true;
    return std::all_of(left.entries->begin(), left.entries->end(), [&](const JournalEntry& entry) {
        return entry.isAppended || checksum(readPage(file, entry.number)) == entry.before;
    });
}

}  // namespace

Refusal Journal::write(const JournalRecord& record, const std::vector<PageChange>& changes) {
    auto [journal, refusal] = storage_.createJournal();
    if (!journal) return refusal;
    Unfinished unfinished(storage_, journal);
    const base::Bytes header = record.encodeHeader();
    const base::Bytes index = record.encodeIndex();
    Appender appender(*journal);
    appender.add(header);
    appender.add(index);
    for (const PageChange& change : changes)
        appender.add(change.before);
    appender.add(index);
    appender.add(header);
    appender.flush();
    journal->sync();
    storage_.syncFolder();
    unfinished.finish();
    return Refusal::None;
}

void Journal::recover(PageIo& file, WholeWrite wholeWrite) {
    if (!storage_.journalSizeBytes()) return;
    auto journal = storage_.openJournal();
    const base::Bytes firstSector = readAtMost(*journal, 0, kSectorBytes);
    const LeftJournal left = readJournal(*journal, firstSector);
    if (!left.header) {
        // Nothing at all: it never reached the disk, or it has been emptied because it could not be deleted.
        if (!isZero(firstSector)) refuse(u"ist beschädigt oder keines dieses Programms");
    } else {
        if (left.header->file != identityOf(storage_, file)) refuse(u"gehört zu einer anderen Datei");
        if (left.isComplete) {
            settle(file, *journal, *left.header, *left.entries, wholeWrite);
        } else if (!isUntouched(file, left)) {
            refuse(u"ist beschädigt");
        }
    }
    journal.reset();
    if (!storage_.removeJournal()) throw journalStays(storage_.path(), storage_.journalPath());
}

void Journal::settle(PageIo& file, PageIo& journal, const JournalHeader& header,
                     const std::vector<JournalEntry>& entries, WholeWrite wholeWrite) {
    const std::uint64_t length = file.sizeBytes();
    if (length < header.oldLength || length > header.newLength) refuse(kForeignChange);
    const auto before = [&](std::size_t i) {
        return entries[i].isAppended ? base::Bytes(kPageSize, 0)
                                     : readAtMost(journal, header.imageOffset(i), kPageSize);
    };
    std::vector<std::size_t> notOld;
    bool isWhole = length == header.newLength;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const PageState state = stateOf(entries[i], readPage(file, entries[i].number), before(i));
        if (state.isForeign) refuse(kForeignChange);
        isWhole = isWhole && state.isNew;
        if (!state.isOld && !entries[i].isAppended) notOld.push_back(i);
    }
    if (!isWhole || wholeWrite == WholeWrite::Undo) {
        for (const std::size_t i : notOld)
            file.write(std::uint64_t{entries[i].number} * kPageSize, before(i));
        if (length != header.oldLength) file.resize(header.oldLength);
    }
    file.sync();
}

void Journal::refuse(base::TextView why) const {
    throw journalRefused(storage_.path(), storage_.journalPath(), why);
}

FileIdentity identityOf(Storage& storage, PageIo& file) {
    const base::Bytes date = readAtMost(file, kCreationDateOffset, 8);
    return {storage.fileName(), date.size() == 8 ? base::ByteView(date).u64(0) : 0};
}

}  // namespace jet
