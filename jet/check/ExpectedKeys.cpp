#include "jet/check/ExpectedKeys.h"

#include <algorithm>

#include "jet/index/IndexKey.h"
#include "jet/value/SortKey.h"

namespace jet {
namespace {

/// Words with a special meaning; no key has one of these.
constexpr std::uint64_t kNoEntry = 0;
constexpr std::uint64_t kMet = 1;
constexpr std::uint64_t kAnyKey = 2;  ///< it is not certain which key the row has
constexpr std::uint64_t kFirstKey = 3;

constexpr std::size_t kMaxReported = 20;
constexpr std::size_t kShownBytes = 12;

/// FNV-1a. A damaged key has the same word, and so goes unnoticed, once in 2^64 cases.
std::uint64_t wordOf(std::span<const std::uint8_t> key) {
    std::uint64_t word = 0xCBF29CE484222325;
    for (const std::uint8_t byte : key)
        word = (word ^ byte) * 0x100000001B3;
    return std::max(word, kFirstKey);
}

/// Whether at least the beginning of an uncertain key is certain.
bool isOnlyTooLong(base::TextView text, const Column& column) {
    return !hasSurrogate(text) && sortKeyIsCertain({}, column.textOrder);
}

base::Text hexText(std::span<const std::uint8_t> bytes) {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    base::Text text;
    for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), kShownBytes))) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    if (bytes.size() > kShownBytes) text += u"...";
    return text.empty() ? base::Text(u"nichts") : text;
}

}  // namespace

ExpectedKeys::ExpectedKeys(const TableRows& rows, const IndexDefinition& index, Findings& findings, Place place)
    : rows_(rows), index_(index), findings_(findings), place_(std::move(place)), words_(rows.slotCount(), kNoEntry) {
    RowKey key;
    rows.each([&](std::size_t slotNumber, RowPointer pointer, const RowView* row) {
        if (row == nullptr || !computeKey(*row, key)) {
            words_[slotNumber] = kAnyKey;
            return;
        }
        if (key.isIn) words_[slotNumber] = key.certainBytes == kAllOfThem ? wordOf(key.bytes) : kAnyKey;
        if (key.hasNull && index.isRequired())
            findings_.fault(place_.atRow(pointer), u"Der Index verlangt Werte, die Zeile hat keinen.");
    });
}

/// @return false if a value of the row cannot be read
bool ExpectedKeys::computeKey(const RowView& row, RowKey& key) const {
    bool isRead = false;
    bool allNull = true;
    key.bytes.clear();
    key.certainBytes = kAllOfThem;
    key.hasNull = false;
    passingOverDamage([&] {
        for (const IndexColumn& part : index_.columns) {
            const Column& column = row.definition().columnOf(part);
            const base::Value value = valueOf(rows_.table().source(), row, column);
            appendPart(key, column, value, part.ascending);
            allNull = allNull && base::isNull(value);
            key.hasNull = key.hasNull || base::isNull(value);
        }
        isRead = true;
    });
    key.isIn = !(allNull && index_.ignoresNulls());
    return isRead;
}

void ExpectedKeys::appendPart(RowKey& key, const Column& column, const base::Value& value, bool ascending) const {
    const std::size_t start = key.bytes.size() + 1;
    appendKeyPart(key.bytes, column, value, ascending);
    const auto* text = std::get_if<base::Text>(&value);
    if (text == nullptr || sortKeyIsCertain(*text, column.textOrder)) return;
    key.certainBytes = std::min(key.certainBytes, start + (isOnlyTooLong(*text, column) ? kLongestCertainSortKey : 0));
}

std::optional<ExpectedKeys::RowKey> ExpectedKeys::keyAt(RowPointer pointer) const {
    std::optional<RowKey> found;
    passingOverDamage([&] {
        const Row row = rows_.table().rowAt(pointer);
        RowKey key;
        if (computeKey(row.view, key)) found = std::move(key);
    });
    return found;
}

bool ExpectedKeys::hasNull(RowPointer row) const {
    const auto key = keyAt(row);
    return key && key->hasNull;
}

void ExpectedKeys::meet(RowPointer row, std::span<const std::uint8_t> key, const Place& at) {
    const auto slotNumber = rows_.slotNumber(row);
    if (!slotNumber) {
        findings_.fault(at, u"Ein Eintrag verweist auf " + rowText(row) + u", die Zeile gibt es in der Tabelle nicht.");
        return;
    }
    std::uint64_t& word = words_[*slotNumber];
    if (word == kNoEntry || word == kMet) {
        reportStranger(row, *slotNumber, at);
        return;
    }
    if (word == kAnyKey || word != wordOf(key)) compareKey(row, key, at);
    word = kMet;
}

void ExpectedKeys::reportStranger(RowPointer row, std::size_t slotNumber, const Place& at) {
    const base::Text entry = u"Ein Eintrag verweist auf " + rowText(row) + u", ";
    if (words_[slotNumber] == kMet)
        findings_.fault(at, entry + u"es ist nicht der einzige.");
    else if (keyAt(row))
        findings_.fault(at, entry + u"die nur leere Werte hat und in diesem Index nicht stehen darf.");
    else
        findings_.fault(at, entry + u"die Zeile ist gelöscht oder keine eigene.");
}

void ExpectedKeys::compareKey(RowPointer row, std::span<const std::uint8_t> key, const Place& at) {
    const auto expected = keyAt(row);
    if (!expected) return;
    const std::span<const std::uint8_t> wanted{expected->bytes};
    if (std::ranges::equal(key.first(std::min(key.size(), expected->certainBytes)),
                           wanted.first(std::min(wanted.size(), expected->certainBytes)))) {
        return;
    }
    const auto [difference, unused] = std::mismatch(key.begin(), key.end(), wanted.begin(), wanted.end());
    const auto place = static_cast<std::size_t>(difference - key.begin());
    findings_.fault(at, u"Der Schlüssel von " + rowText(row) + u" hat ab Byte " + countText(place) + u" " +
                            hexText(key.subspan(place)) + u" statt " + hexText(wanted.subspan(place)) + u".");
}

void ExpectedKeys::reportUnmet(bool walkIsWhole) {
    std::size_t count = 0;
    RowPointer first;
    for (std::size_t i = 0; i < words_.size(); ++i) {
        if (words_[i] == kNoEntry || words_[i] == kMet) continue;
        const RowPointer row = rows_.rowAt(i);
        if (count++ == 0) first = row;
        if (walkIsWhole && count <= kMaxReported)
            findings_.fault(place_.atRow(row), u"Die Zeile hat keinen Eintrag im Index.");
    }
    if (count > 0 && !(walkIsWhole && count <= kMaxReported)) {
        findings_.fault(place_.atRow(first),
                        countText(count) + u" Zeilen, von dieser an, haben keinen Eintrag, der zu lesen wäre.");
    }
}

}  // namespace jet
