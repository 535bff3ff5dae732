#include "jet/salvage/DamagedDefinition.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "jet/Errors.h"

namespace jet {
namespace {

constexpr std::size_t kMaxIndexes = 64;
constexpr std::size_t kMaxNameUnits = 64;

/// Reads never leave the bytes: what is not there is 0.
class Joined {
public:
    explicit Joined(base::Bytes bytes) : bytes_(std::move(bytes)) {}

    std::size_t size() const { return bytes_.size(); }
    std::uint16_t u16(std::size_t at) const { return base::ByteView{take(at, 2)}.u16(0); }
    std::uint32_t u32(std::size_t at) const { return base::ByteView{take(at, 4)}.u32(0); }
    base::Bytes take(std::size_t at, std::size_t count) const {
        base::Bytes taken(count, 0);
        for (std::size_t i = 0; i < count && at + i < size(); ++i)
            taken[i] = bytes_[at + i];
        return taken;
    }

private:
    base::Bytes bytes_;
};

/// As many pages of the chain as there are; a wrong page at its end only adds bytes that nothing refers to.
Joined joinChain(DamagedFile& file, PageNumber first) {
    base::Bytes bytes;
    PageNumber next = first;
    for (std::size_t i = 0; i < kMaxDefinitionPages && (i == 0 || next != 0) && next < file.pageCount(); ++i) {
        const PageView page = file.page(next);
        const auto part = page.bytes.from(i == 0 ? 0 : DefinitionPageAt::kContent).bytes();
        bytes.insert(bytes.end(), part.begin(), part.end());
        next = page.bytes.u32(DefinitionPageAt::kNextPage);
        if (base::ByteView{bytes}.u32(DefinitionAt::kLength) <= bytes.size()) break;
    }
    return Joined(std::move(bytes));
}

struct NamedPart {
    base::Bytes bytes;
    base::Text name;
};

void append(base::Bytes& bytes, const base::Bytes& part) {
    bytes.insert(bytes.end(), part.begin(), part.end());
}

void appendNames(base::Bytes& bytes, const std::vector<NamedPart>& parts) {
    for (const NamedPart& part : parts) {
        const std::size_t at = bytes.size();
        bytes.resize(at + 2 + 2 * part.name.size());
        base::putU16(bytes, at, static_cast<std::uint16_t>(2 * part.name.size()));
        for (std::size_t i = 0; i < part.name.size(); ++i)
            base::putU16(bytes, at + 2 + 2 * i, part.name[i]);
    }
}

/// The parts of a definition that were found. Whether they are sound is decided by the reader of sound definitions.
struct Parts {
    base::Bytes block;
    std::vector<NamedPart> columns;
    std::vector<base::Bytes> indexes;
    std::vector<NamedPart> logicalIndexes;

    base::Bytes joined() const {
        base::Bytes bytes = block;
        base::putU16(bytes, DefinitionAt::kColumns, static_cast<std::uint16_t>(columns.size()));
        base::putU32(bytes, DefinitionAt::kLogicalIndexes, static_cast<std::uint32_t>(logicalIndexes.size()));
        base::putU32(bytes, DefinitionAt::kIndexes, static_cast<std::uint32_t>(indexes.size()));
        bytes.resize(bytes.size() + kStatisticsBytes * indexes.size(), 0);
        for (const NamedPart& column : columns)
            append(bytes, column.bytes);
        appendNames(bytes, columns);
        for (const base::Bytes& index : indexes)
            append(bytes, index);
        for (const NamedPart& index : logicalIndexes)
            append(bytes, index.bytes);
        appendNames(bytes, logicalIndexes);
        bytes.resize(bytes.size() + 2, 0xFF);
        base::putU32(bytes, DefinitionAt::kLength, static_cast<std::uint32_t>(bytes.size()));
        return bytes;
    }

    std::optional<TableDefinition> decode(PageNumber page) const {
        try {
            return TableDefinition::decode(base::ByteView{joined()}, page);
        } catch (const base::RuntimeError&) {
            return std::nullopt;
        }
    }
};

using EndTest = std::function<bool(std::size_t)>;

bool isPlausible(const base::Text& name) {
    return !name.empty() && name.size() <= kMaxNameUnits &&
           std::ranges::none_of(name, [](char16_t unit) { return unit < u' '; });
}

/// Reads names one after the other. One of them may get another length than the stored one.
std::optional<std::vector<base::Text>> readNames(const Joined& joined, std::size_t& at, std::size_t count,
                                                 const EndTest& isEnd, std::size_t corrected = SIZE_MAX,
                                                 std::size_t correctUnits = 0) {
    std::vector<base::Text> names;
    std::size_t place = at;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t stored = joined.u16(place);
        if (i != corrected && stored % 2 != 0) return std::nullopt;
        const std::size_t units = i == corrected ? correctUnits : stored / 2;
        base::Text name;
        for (std::size_t k = 0; k < std::min(units, kMaxNameUnits + 1); ++k)
            name.push_back(static_cast<char16_t>(joined.u16(place + 2 + 2 * k)));
        if (!isPlausible(name)) return std::nullopt;
        names.push_back(std::move(name));
        place += 2 + 2 * units;
    }
    if (!isEnd(place)) return std::nullopt;
    at = place;
    return names;
}

/// The same if one of the lengths was damaged.
std::optional<std::vector<base::Text>> findNames(const Joined& joined, std::size_t& at, std::size_t count,
                                                 const EndTest& isEnd) {
    auto names = readNames(joined, at, count, isEnd);
    for (std::size_t i = 0; !names && i < count; ++i) {
        for (std::size_t units = 1; !names && units <= kMaxNameUnits; ++units)
            names = readNames(joined, at, count, isEnd, i, units);
    }
    return names;
}

class DefinitionReader {
public:
    DefinitionReader(DamagedFile& file, PageNumber page) : page_(page), joined_(joinChain(file, page)) {}

    std::optional<DamagedDefinition> read() {
        if (!findDescriptors()) return std::nullopt;
        parts_.block = joined_.take(0, DefinitionAt::kStatistics);
        dropImpossibleCounts();
        readColumns();
        if (parts_.columns.empty()) return std::nullopt;
        readIndexes();
        auto definition = parts_.decode(page_);
        if (!definition) return std::nullopt;
        definition->chain = {page_};
        return DamagedDefinition{*std::move(definition), std::move(losses_)};
    }

private:
    bool isDescriptor(std::size_t at) const { return joined_.u32(at + ColumnAt::kMark) == kDefinitionMark; }

    /// The descriptors begin after 12 bytes for each index. Each has a mark, which shows their beginning and number
    /// even if the counts were damaged.
    bool findDescriptors() {
        std::size_t best = 0;
        const std::size_t stored = joined_.u32(DefinitionAt::kIndexes);
        for (std::size_t indexes = 0; indexes <= kMaxIndexes; ++indexes) {
            const std::size_t at = DefinitionAt::kStatistics + kStatisticsBytes * indexes;
            const std::size_t marks = descriptorsAt(at);
            if (marks == 0 || marks < best || (marks == best && indexes != stored)) continue;
            best = marks;
            descriptors_ = at;
            indexCount_ = indexes;
        }
        columnCount_ = best;
        const std::size_t told = joined_.u16(DefinitionAt::kColumns);
        // The mark of the last descriptor may be damaged, too.
        if (told == columnCount_ + 1 && told <= kMaxColumns) columnCount_ = told;
        // The further pages of a definition have descriptors, too.
        const bool countsAgree = told == columnCount_ && stored == indexCount_;
        return best > 0 && (joined_.u32(DefinitionAt::kMark) == kDefinitionMark || countsAgree);
    }

    std::size_t descriptorsAt(std::size_t at) const {
        std::size_t count = 0;
        for (std::size_t i = 0; i < kMaxColumns; ++i) {
            const std::size_t place = at + Column::kDescriptorBytes * i;
            if (isDescriptor(place))
                count = i + 1;
            else if (!isDescriptor(place + Column::kDescriptorBytes))
                break;
        }
        return count;
    }

    /// If the counts contradict each other, no column can be read. So they are lowered, and raiseCounts() raises them.
    void dropImpossibleCounts() {
        const auto count = [&](std::size_t offset) { return base::ByteView{parts_.block}.u16(offset); };
        if (count(DefinitionAt::kColumnsEver) > kMaxColumns || count(DefinitionAt::kColumnsEver) < columnCount_)
            base::putU16(parts_.block, DefinitionAt::kColumnsEver, static_cast<std::uint16_t>(columnCount_));
        if (count(DefinitionAt::kVariableEver) > count(DefinitionAt::kColumnsEver))
            base::putU16(parts_.block, DefinitionAt::kVariableEver, 0);
    }

    /// The numbers of a column raise the counts of the block if those were damaged.
    void raiseCounts(const base::Bytes& descriptor) {
        const base::ByteView bytes{descriptor};
        const auto raise = [&](std::size_t offset, std::uint16_t number) {
            const std::uint16_t count = base::ByteView{parts_.block}.u16(offset);
            if (number >= count && number < kMaxColumns)
                base::putU16(parts_.block, offset, static_cast<std::uint16_t>(number + 1));
        };
        raise(DefinitionAt::kColumnsEver, bytes.u16(ColumnAt::kNumber));
        if ((bytes.u8(ColumnAt::kFlags) & Column::kFixed) == 0)
            raise(DefinitionAt::kVariableEver, bytes.u16(ColumnAt::kVariableIndex));
    }

    void readColumns() {
        at_ = descriptors_ + Column::kDescriptorBytes * columnCount_;
        const auto names = findNames(joined_, at_, columnCount_, [this](std::size_t at) { return endsColumns(at); });
        if (!names) {
            losses_.emplace_back(u"Die Namen der Spalten sind nicht lesbar");
            at_ = firstIndexAfter(at_);
        }
        for (std::size_t i = 0; i < columnCount_; ++i) {
            base::Bytes bytes = joined_.take(descriptors_ + Column::kDescriptorBytes * i, Column::kDescriptorBytes);
            const base::Text made = u"Spalte" + base::decimal(i + 1);
            const base::Bytes block = parts_.block;
            raiseCounts(bytes);
            parts_.columns.push_back({std::move(bytes), names ? (*names)[i] : made});
            if (parts_.decode(page_)) continue;
            losses_.push_back(u"Die Spalte '" + parts_.columns.back().name + u"' ist nicht lesbar beschrieben");
            parts_.columns.pop_back();
            parts_.block = block;
        }
    }

    bool endsColumns(std::size_t at) const {
        if (indexCount_ > 0)
            return joined_.u32(at) == kIndexBlockMark || joined_.u32(at + IndexDefinition::kBytes) == kIndexBlockMark;
        return joined_.u16(at) == kNoColumn || joined_.u32(at) == kDefinitionMark || joined_.u16(at) < kMaxColumns;
    }

    std::size_t firstIndexAfter(std::size_t at) const {
        while (at < joined_.size() && joined_.u32(at) != kIndexBlockMark)
            ++at;
        return at;
    }

    void readIndexes() {
        std::vector<std::size_t> newPlaces(indexCount_, SIZE_MAX);
        for (std::size_t i = 0; i < indexCount_; ++i, at_ += IndexDefinition::kBytes) {
            parts_.indexes.push_back(joined_.take(at_, IndexDefinition::kBytes));
            if (joined_.u32(at_) == kIndexBlockMark && parts_.decode(page_))
                newPlaces[i] = parts_.indexes.size() - 1;
            else
                parts_.indexes.pop_back();
        }
        const std::size_t lost = indexCount_ - parts_.indexes.size();
        if (lost > 0) losses_.push_back(base::decimal(lost) + u" Indizes sind nicht lesbar beschrieben");
        readLogicalIndexes(newPlaces);
    }

    void readLogicalIndexes(const std::vector<std::size_t>& newPlaces) {
        const std::size_t records = at_;
        std::size_t count = joined_.u32(DefinitionAt::kLogicalIndexes);
        if (count > 2 * kMaxIndexes || joined_.u32(records) != kDefinitionMark ||
            count * LogicalIndex::kBytes > joined_.size())
            count = marksFrom(records);
        at_ += LogicalIndex::kBytes * count;
        const auto names = findNames(joined_, at_, count, [this](std::size_t at) {
            return joined_.u16(at) == kNoColumn || joined_.u16(at) < kMaxColumns;
        });
        if (!names && count > 0) losses_.emplace_back(u"Die Namen der Indizes sind nicht lesbar");
        for (std::size_t i = 0; i < count; ++i) {
            const base::Text made = u"Index" + base::decimal(i + 1);
            addLogicalIndex(joined_.take(records + LogicalIndex::kBytes * i, LogicalIndex::kBytes),
                            names ? (*names)[i] : made, newPlaces);
        }
    }

    std::size_t marksFrom(std::size_t at) const {
        std::size_t count = 0;
        while (joined_.u32(at + LogicalIndex::kBytes * count) == kDefinitionMark)
            ++count;
        return count;
    }

    void addLogicalIndex(base::Bytes record, base::Text name, const std::vector<std::size_t>& newPlaces) {
        const std::uint32_t place = base::ByteView{record}.u32(LogicalIndexAt::kDataBlock);
        const bool isThere = place < newPlaces.size() && newPlaces[place] != SIZE_MAX;
        if (isThere) base::putU32(record, LogicalIndexAt::kDataBlock, static_cast<std::uint32_t>(newPlaces[place]));
        parts_.logicalIndexes.push_back({std::move(record), std::move(name)});
        if (isThere && parts_.decode(page_)) return;
        losses_.push_back(u"Der Index '" + parts_.logicalIndexes.back().name + u"' ist nicht lesbar beschrieben");
        parts_.logicalIndexes.pop_back();
    }

    PageNumber page_;
    Joined joined_;
    Parts parts_;
    std::vector<base::Text> losses_;
    std::size_t descriptors_ = 0;
    std::size_t columnCount_ = 0;
    std::size_t indexCount_ = 0;
    std::size_t at_ = 0;  ///< after what was read last
};

}  // namespace

std::optional<DamagedDefinition> readDamagedDefinition(DamagedFile& file, PageNumber page) {
    try {
        return DamagedDefinition{TableDefinition::read(file, page), {}};
    } catch (const base::RuntimeError&) {
        return DefinitionReader(file, page).read();
    }
}

}  // namespace jet
