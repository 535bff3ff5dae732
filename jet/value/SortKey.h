#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>

#include "base/Text.h"
#include "base/Value.h"

/// The order of text: a key of bytes for each text, so that comparing keys byte by byte is the database's
/// own order (of an index, of ORDER BY) and equal keys are its `=`. Case does not count, "ß" is "ss", blanks
/// at the end are nothing, accents count only between texts that are otherwise equal, and hyphens and
/// apostrophes only after those.
///
/// Neither the system's locale nor Unicode normalisation plays a part. Layout of the key and source of the
/// weights: docs/file-format.md, "Order of text".
namespace jet {

/// Sort order of a text column, as its descriptor holds it. General (0x0409 version 0) is what Access
/// 2000 to 2003 gives every German or English file.
struct TextOrder {
    std::uint16_t lcid = 0x0409;
    std::uint8_t version = 0;

    friend bool operator==(const TextOrder&, const TextOrder&) = default;
};

/// UTF-16 units of a text that count for its key.
constexpr std::size_t kSortKeyUnits = 255;

/// Longest key, its end byte included, of which it is known that the original engine stores it whole.
constexpr std::size_t kLongestCertainSortKey = 507;

/// Appends the ascending key of the text: without flag byte, with its end byte 00.
void appendSortKey(base::Bytes& key, base::TextView text, TextOrder order = {});

base::Bytes sortKey(base::TextView text, TextOrder order = {});

/// Whether the text has surrogates, whose keys are never certain.
bool hasSurrogate(base::TextView text);

/// Whether the key is known to be the one that the original engine stores. False for texts with surrogates,
/// for keys that grow too long and for sort orders other than General and French: those keys still give
/// one total, stable order, but an index must be neither searched nor written by them.
bool sortKeyIsCertain(base::TextView text, TextOrder order = {});

/// The same without the text, for one of units below U+0100 alone.
/// @return false also if that cannot be told without the text
bool latinSortKeyIsCertain(std::size_t unitCount, TextOrder order);

std::strong_ordering compareTexts(base::TextView a, base::TextView b, TextOrder order = {});

bool textsAreEqual(base::TextView a, base::TextView b, TextOrder order = {});

}  // namespace jet
