#include "jet/value/SortKey.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <span>

namespace jet {
namespace {

/// These weights apply to all units from `first` up to the next range.
struct SortRange {
    std::uint16_t first;
    std::uint16_t code;  ///< primary code; with Expands: the index of the expansion
    std::uint8_t value;  ///< letters and kana: the accent byte; marks and accents: their value
    std::uint8_t kind;   ///< a UnitClass and the flags below
};

/// A unit that counts as two or three letters.
struct SortExpansion {
    std::uint8_t codeBytes;
    std::uint8_t weights;
    std::uint8_t codes[4];
    std::uint8_t accents[3];
};

enum UnitClass : std::uint8_t { Ignored = 0, Letter = 1, Kana = 2, Mark = 3, Accent = 4, Unknown = 5 };

constexpr std::uint8_t kClassMask = 0x07;
constexpr std::uint8_t kCountsUp = 0x08;
constexpr std::uint8_t kTwoBytes = 0x10;
constexpr std::uint8_t kExpands = 0x20;
constexpr std::uint8_t kSmallKana = 0x40;

#include "jet/value/sortkey/SortKeyTable.inc"

constexpr char16_t kBlank = u' ';
constexpr std::uint8_t kSeparator = 0x01;
constexpr std::uint8_t kEnd = 0x00;
constexpr std::uint8_t kNoAccent = 0x02;
constexpr std::uint8_t kMarkScript = 0x06;
constexpr std::uint8_t kAfterKana = 0xFF;
constexpr std::uint8_t kKanaTail[] = {0xFF, 0x02, 0x80, 0xFF, 0x80};
constexpr std::uint16_t kFrench = 0x040C;
constexpr std::uint16_t kGeneral = 0x0409;
constexpr char16_t kFirstSurrogate = 0xD800;
/// Greater than every first byte in the table, so that surrogates come after all other characters.
constexpr std::uint8_t kSurrogateCode = 0xFF;

/// The weights of one unit; in a range that counts up, its code is adjusted.
constexpr SortRange weightsOf(char16_t unit) {
    const std::size_t page = unit >> 8U;
    const std::size_t begin = kFirstRangeOfPage[page];
    const std::size_t end = page == 0xFF ? std::size(kRanges) : kFirstRangeOfPage[page + 1] + std::size_t{1};
    const SortRange* after = std::upper_bound(kRanges + begin, kRanges + end, unit,
                                              [](char16_t u, const SortRange& range) { return u < range.first; });
    SortRange range = *(after - 1);
    if ((range.kind & kCountsUp) == 0) return range;
    const unsigned steps = static_cast<unsigned>(unit) - range.first;
    if ((range.kind & kTwoBytes) == 0) {
        range.value = static_cast<std::uint8_t>(range.value + steps);
        return range;
    }
    // The second byte of a code runs from 02 to FF.
    const unsigned place = (range.code >> 8U) * 254U + (range.code & 0xFFU) - 2U + steps;
    range.code = static_cast<std::uint16_t>(((place / 254U) << 8U) | (place % 254U + 2U));
    return range;
}

constexpr std::array<SortRange, 256> makeLatinWeights() {
    std::array<SortRange, 256> weights{};
    for (unsigned unit = 0; unit < weights.size(); ++unit)
        weights[unit] = weightsOf(static_cast<char16_t>(unit));
    return weights;
}

constexpr std::array<SortRange, 256> kLatinWeights = makeLatinWeights();

/// The units that count: at most 255, without the blanks at their end.
base::TextView countingUnits(base::TextView text) {
    text = text.substr(0, kSortKeyUnits);
    while (!text.empty() && text.back() == kBlank)
        text.remove_suffix(1);
    return text;
}

/// Memory for one section of the key of a text of 255 units. It is not cleared before use.
template <std::size_t Room>
class Section {
public:
    void add(std::uint8_t byte) { bytes_[size_++] = byte; }
    void add(std::span<const std::uint8_t> bytes) {
        for (const std::uint8_t byte : bytes)
            add(byte);
    }
    bool empty() const { return size_ == 0; }
    std::size_t size() const { return size_; }
    std::uint8_t& back() { return bytes_[size_ - 1]; }
    void dropBack() { --size_; }
    std::uint8_t* begin() { return bytes_.data(); }
    std::uint8_t* end() { return bytes_.data() + size_; }
    std::span<const std::uint8_t> bytes() const { return {bytes_.data(), size_}; }

private:
    std::array<std::uint8_t, Room> bytes_;
    std::size_t size_ = 0;
};

/// Collects the sections of one key, unit by unit.
class KeyBuilder {
public:
    KeyBuilder() { accents_.add(0); }

    void addText(base::TextView text) {
        for (const char16_t unit : text)
            addUnit(unit, unit < kLatinWeights.size() ? kLatinWeights[unit] : weightsOf(unit));
    }

    void finish(base::Bytes& key, bool accentsFromTheEnd) {
        trimAccents(accentsFromTheEnd);
        trimKana();
        const std::size_t start = key.size();
        key.resize(start + codes_.size() + accents_.size() + marks_.size() + kana_.size() + kRoomForSeparators);
        std::uint8_t* place = key.data() + start;
        put(place, codes_.bytes());
        *place++ = kSeparator;
        put(place, accents_.bytes());
        if (hasKana_ || !marks_.empty()) putRest(place);
        *place++ = kEnd;
        key.resize(static_cast<std::size_t>(place - key.data()));
    }

private:
    static constexpr std::size_t kRoomForSeparators = 16;

    static void put(std::uint8_t*& place, std::span<const std::uint8_t> bytes) {
        if (!bytes.empty()) std::memcpy(place, bytes.data(), bytes.size());
        place += bytes.size();
    }

    void addUnit(char16_t unit, const SortRange& weights) {
        switch (weights.kind & kClassMask) {
            case Letter:
                addLetter(weights);
                break;
            case Kana:
                addLetter(weights);
                hasKana_ = true;
                kana_.add((weights.kind & kSmallKana) != 0 ? 2 : kPlainKana);
                break;
            case Mark:
                addMark(weights.value);
                break;
            case Accent:
                if (accents_.size() > 1)
                    accents_.back() = static_cast<std::uint8_t>(accents_.back() + weights.value);
                else
                    leadingAccent_ = static_cast<std::uint8_t>(leadingAccent_ + weights.value);
                break;
            case Unknown:
                addSurrogate(unit);
                break;
            default:
                break;
        }
    }

    void addLetter(const SortRange& weights) {
        if ((weights.kind & kExpands) != 0) {
            const SortExpansion& expansion = kExpansions[weights.code];
            codes_.add(std::span(expansion.codes, expansion.codeBytes));
            accents_.add(std::span(expansion.accents, expansion.weights));
            return;
        }
        if ((weights.kind & kTwoBytes) != 0) codes_.add(static_cast<std::uint8_t>(weights.code >> 8U));
        codes_.add(static_cast<std::uint8_t>(weights.code));
        accents_.add(weights.value);
    }

    void addMark(std::uint8_t value) {
        const std::size_t place = 0x8000U | (7U + 4U * (accents_.size() - 1));
        marks_.add(static_cast<std::uint8_t>(place >> 8U));
        marks_.add(static_cast<std::uint8_t>(place));
        marks_.add(kMarkScript);
        marks_.add(value);
    }

    void addSurrogate(char16_t unit) {
        const auto number = static_cast<unsigned>(unit - kFirstSurrogate);
        codes_.add(kSurrogateCode);
        codes_.add(static_cast<std::uint8_t>(2U + number / 128U));
        codes_.add(static_cast<std::uint8_t>(2U + number % 128U));
        accents_.add(kNoAccent);
    }

    /// An accent without a letter before it becomes a byte of its own before all other accent bytes.
    void trimAccents(bool fromTheEnd) {
        if (fromTheEnd) std::reverse(accents_.begin() + 1, accents_.end());
        while (accents_.size() > 1 && accents_.back() <= kNoAccent)
            accents_.dropBack();
        *accents_.begin() = leadingAccent_;
        if (leadingAccent_ != 0) {
            if (accents_.size() == 1 && leadingAccent_ <= kNoAccent) accents_.dropBack();
            return;
        }
        std::copy(accents_.begin() + 1, accents_.end(), accents_.begin());
        accents_.dropBack();
    }

    void trimKana() {
        while (!kana_.empty() && kana_.back() == kPlainKana)
            kana_.dropBack();
    }

    void putRest(std::uint8_t*& place) {
        *place++ = kSeparator;
        *place++ = kSeparator;
        if (hasKana_) {
            putKana(place);
            if (!marks_.empty()) *place++ = kAfterKana;
        }
        if (!marks_.empty()) {
            *place++ = kSeparator;
            put(place, marks_.bytes());
        }
    }

    /// Puts three flags of two bits into each byte, the first flag in the highest place.
    void putKana(std::uint8_t*& place) {
        const auto flags = kana_.bytes();
        for (std::size_t i = 0; i < flags.size(); i += 3) {
            unsigned byte = 0x80;
            for (std::size_t j = i; j < std::min(i + 3, flags.size()); ++j)
                byte |= static_cast<unsigned>(flags[j]) << (4U - 2U * static_cast<unsigned>(j - i));
            *place++ = static_cast<std::uint8_t>(byte);
        }
        put(place, kKanaTail);
    }

    static constexpr std::uint8_t kPlainKana = 3;

    Section<kSortKeyUnits * 4> codes_;
    // One byte for each letter. The first byte is reserved for an accent before the first letter.
    Section<kSortKeyUnits * 3 + 1> accents_;
    Section<kSortKeyUnits * 4> marks_;
    Section<kSortKeyUnits> kana_;
    std::uint8_t leadingAccent_ = 0;
    bool hasKana_ = false;
};

/// No unit gives more than six bytes, so the key of so short a text is always short enough.
constexpr std::size_t kUnitsOfShortText = 80;

bool isKnown(TextOrder order) {
    return order.version == 0 && (order.lcid == kGeneral || order.lcid == kFrench);
}

}  // namespace

void appendSortKey(base::Bytes& key, base::TextView text, TextOrder order) {
    KeyBuilder builder;
    builder.addText(countingUnits(text));
    builder.finish(key, order.lcid == kFrench);
}

base::Bytes sortKey(base::TextView text, TextOrder order) {
    base::Bytes key;
    appendSortKey(key, text, order);
    return key;
}

bool hasSurrogate(base::TextView text) {
    return std::any_of(text.begin(), text.end(), [](char16_t unit) { return (unit & 0xF800U) == kFirstSurrogate; });
}

bool sortKeyIsCertain(base::TextView text, TextOrder order) {
    if (!isKnown(order)) return false;
    const base::TextView units = countingUnits(text);
    if (hasSurrogate(units)) return false;
    return units.size() <= kUnitsOfShortText || sortKey(units, order).size() <= kLongestCertainSortKey;
}

bool latinSortKeyIsCertain(std::size_t unitCount, TextOrder order) {
    return isKnown(order) && unitCount <= kUnitsOfShortText;
}

std::strong_ordering compareTexts(base::TextView a, base::TextView b, TextOrder order) {
    const base::Bytes keyA = sortKey(a, order);
    const base::Bytes keyB = sortKey(b, order);
    return std::lexicographical_compare_three_way(keyA.begin(), keyA.end(), keyB.begin(), keyB.end());
}

bool textsAreEqual(base::TextView a, base::TextView b, TextOrder order) {
    return compareTexts(a, b, order) == std::strong_ordering::equal;
}

}  // namespace jet
