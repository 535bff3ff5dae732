#include "jet/transaction/JournalRecord.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "jet/transaction/Checksum.h"

namespace jet {
namespace {

constexpr std::string_view kMagic = "TOLVJRN2";
constexpr std::size_t kOldLengthOffset = 8;
constexpr std::size_t kNewLengthOffset = 16;
constexpr std::size_t kEntryCountOffset = 24;
constexpr std::size_t kAppendedCountOffset = 28;
constexpr std::size_t kFileDateOffset = 32;
constexpr std::size_t kIndexChecksumOffset = 40;
constexpr std::size_t kWitnessOffset = 48;
constexpr std::size_t kNameUnitsOffset = 56;
constexpr std::size_t kNameOffset = 58;
constexpr std::size_t kHeaderChecksumOffset = 504;
constexpr std::size_t kMaxNameUnits = (kHeaderChecksumOffset - kNameOffset) / 2;

constexpr std::size_t kEntryBytes = 80;
constexpr std::size_t kKindOffset = 4;
constexpr std::size_t kBeforeOffset = 8;
constexpr std::size_t kAfterOffset = 16;

std::size_t wholeSectors(std::size_t bytes) {
    return (bytes + kSectorBytes - 1) / kSectorBytes * kSectorBytes;
}

base::TextView storedName(base::TextView name) {
    return name.substr(0, kMaxNameUnits);
}

JournalEntry entryOf(const PageChange& change) {
    JournalEntry entry{change.number, change.before.empty(), 0, {}};
    if (!entry.isAppended) entry.before = checksum(change.before);
    for (std::size_t sector = 0; sector < kSectorsPerPage; ++sector)
        entry.after[sector] = checksum(change.after.subspan(sector * kSectorBytes, kSectorBytes));
    return entry;
}

std::size_t appendedCount(const std::vector<JournalEntry>& entries) {
    return static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(), [](const JournalEntry& entry) { return entry.isAppended; }));
}

bool isPageAligned(std::uint64_t length) {
    return length % kPageSize == 0 && length / kPageSize <= kMaxPages;
}

}  // namespace

bool FileIdentity::operator==(const FileIdentity& other) const {
    return creationDate == other.creationDate &&
           base::equalsIgnoringAsciiCase(storedName(name), storedName(other.name));
}

JournalRecord JournalRecord::of(FileIdentity file, std::uint64_t commitWords, PageNumber oldPageCount,
                                const std::vector<PageChange>& changes) {
    JournalRecord record;
    record.file = std::move(file);
    record.commitWords = commitWords;
    record.oldLength = std::uint64_t{oldPageCount} * kPageSize;
    std::transform(changes.begin(), changes.end(), std::back_inserter(record.entries), entryOf);
    record.newLength = record.oldLength + appendedCount(record.entries) * kPageSize;
    return record;
}

base::Bytes JournalRecord::encodeHeader() const {
    base::Bytes sector(kSectorBytes, 0);
    std::copy(kMagic.begin(), kMagic.end(), sector.begin());
    base::putU64(sector, kOldLengthOffset, oldLength);
    base::putU64(sector, kNewLengthOffset, newLength);
    base::putU32(sector, kEntryCountOffset, static_cast<std::uint32_t>(entries.size()));
    base::putU32(sector, kAppendedCountOffset, static_cast<std::uint32_t>(appendedCount(entries)));
    base::putU64(sector, kFileDateOffset, file.creationDate);
    base::putU64(sector, kIndexChecksumOffset, checksum(encodeIndex()));
    base::putU64(sector, kWitnessOffset, commitWords);
    const base::TextView name = storedName(file.name);
    base::putU16(sector, kNameUnitsOffset, static_cast<std::uint16_t>(name.size()));
    for (std::size_t i = 0; i < name.size(); ++i)
        base::putU16(sector, kNameOffset + 2 * i, name[i]);
    base::putU64(sector, kHeaderChecksumOffset, checksum(std::span(sector).first(kHeaderChecksumOffset)));
    return sector;
}

base::Bytes JournalRecord::encodeIndex() const {
    base::Bytes index(wholeSectors(entries.size() * kEntryBytes), 0);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto place = std::span(index).subspan(i * kEntryBytes, kEntryBytes);
        base::putU32(place, 0, entries[i].number);
        base::putU32(place, kKindOffset, entries[i].isAppended ? 1 : 0);
        base::putU64(place, kBeforeOffset, entries[i].before);
        for (std::size_t sector = 0; sector < kSectorsPerPage; ++sector)
            base::putU64(place, kAfterOffset + 8 * sector, entries[i].after[sector]);
    }
    return index;
}

std::optional<JournalHeader> JournalHeader::decode(base::ByteView sector) {
    if (sector.size() < kSectorBytes) return std::nullopt;
    const auto bytes = sector.bytes().first(kHeaderChecksumOffset);
    const bool isOurs = std::equal(kMagic.begin(), kMagic.end(), bytes.begin(),
                                   [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; });
    if (!isOurs || sector.u64(kHeaderChecksumOffset) != checksum(bytes)) return std::nullopt;
    JournalHeader header;
    header.oldLength = sector.u64(kOldLengthOffset);
    header.newLength = sector.u64(kNewLengthOffset);
    header.file.creationDate = sector.u64(kFileDateOffset);
    header.entryCount = sector.u32(kEntryCountOffset);
    header.appendedCount = sector.u32(kAppendedCountOffset);
    header.indexChecksum = sector.u64(kIndexChecksumOffset);
    header.commitWords = sector.u64(kWitnessOffset);
    const std::size_t units = sector.u16(kNameUnitsOffset);
    const bool isPossible = isPageAligned(header.oldLength) && isPageAligned(header.newLength) &&
                            header.newLength == header.oldLength + std::uint64_t{header.appendedCount} * kPageSize &&
                            header.entryCount <= header.newLength / kPageSize &&
                            header.appendedCount <= header.entryCount && units <= kMaxNameUnits;
    if (!isPossible) return std::nullopt;
    for (std::size_t i = 0; i < units; ++i)
        header.file.name.push_back(static_cast<char16_t>(sector.u16(kNameOffset + 2 * i)));
    return header;
}

std::size_t JournalHeader::indexBytes() const {
    return wholeSectors(std::size_t{entryCount} * kEntryBytes);
}

std::uint64_t JournalHeader::imageOffset(std::size_t image) const {
    return kSectorBytes + indexBytes() + std::uint64_t{image} * kPageSize;
}

std::optional<std::vector<JournalEntry>> JournalHeader::decodeIndex(base::ByteView bytes) const {
    if (bytes.size() != indexBytes() || checksum(bytes.bytes()) != indexChecksum) return std::nullopt;
    std::vector<JournalEntry> entries(entryCount);
    const std::uint32_t changedCount = entryCount - appendedCount;
    const auto oldPageCount = static_cast<PageNumber>(oldLength / kPageSize);
    for (std::uint32_t i = 0; i < entryCount; ++i) {
        const base::ByteView place = bytes.slice(std::size_t{i} * kEntryBytes, kEntryBytes);
        JournalEntry& entry = entries[i];
        entry.number = place.u32(0);
        entry.isAppended = place.u32(kKindOffset) != 0;
        entry.before = place.u64(kBeforeOffset);
        for (std::size_t sector = 0; sector < kSectorsPerPage; ++sector)
            entry.after[sector] = place.u64(kAfterOffset + 8 * sector);
        const bool isInOrder = entry.isAppended
                                   ? entry.number == oldPageCount + (i - changedCount)
                                   : entry.number < oldPageCount && (i == 0 || entries[i - 1].number < entry.number);
        if (entry.isAppended != (i >= changedCount) || !isInOrder) return std::nullopt;
    }
    return entries;
}

}  // namespace jet
