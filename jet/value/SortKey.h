#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>

#include "base/Text.h"
#include "base/Value.h"

/// The order of text. Each text has a key of bytes. Comparing the keys byte by byte gives the database's own order (of
/// an index, of ORDER BY); texts with equal keys are equal for `=`. Upper and lower case are the same, "ß" is "ss", and
/// blanks at the end are ignored. Accents count only between texts that are otherwise equal, and hyphens and
/// apostrophes only after accents.
///
/// The result does not depend on the system's locale or on Unicode normalisation. For the layout of the key and the
/// source of the weights see docs/file-format.md, "Order of text".
namespace jet {

/// The sort order of a text column, as stored in its descriptor. Access 2000 to 2003 gives every German or English file
/// the order General (0x0409 version 0).
struct TextOrder {
    std::uint16_t lcid = 0x0409;
    std::uint8_t version = 0;

    friend bool operator==(const TextOrder&, const TextOrder&) = default;
};

/// The maximum number of UTF-16 units of a text that count for its key.
constexpr std::size_t kSortKeyUnits = 255;

/// The longest key, with its end byte, that the original engine is known to store unshortened.
constexpr std::size_t kLongestCertainSortKey = 507;

/// Appends the ascending key of the text, with its end byte 00 but without a flag byte.
void appendSortKey(base::Bytes& key, base::TextView text, TextOrder order = {});

base::Bytes sortKey(base::TextView text, TextOrder order = {});

/// Whether the text has surrogates. Their keys are never certain.
bool hasSurrogate(base::TextView text);

/// Whether our key is known to be the one that the original engine stores. False for texts with surrogates, for keys
/// that are too long and for sort orders other than General and French. Such keys still give one total, stable order,
/// but an index must neither be searched with them nor store them.
bool sortKeyIsCertain(base::TextView text, TextOrder order = {});

/// The same for a text whose units are all below U+0100, from its length alone.
/// @return also false if the length does not decide it
bool latinSortKeyIsCertain(std::size_t unitCount, TextOrder order);

std::strong_ordering compareTexts(base::TextView a, base::TextView b, TextOrder order = {});

bool textsAreEqual(base::TextView a, base::TextView b, TextOrder order = {});

}  // namespace jet
