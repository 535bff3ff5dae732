#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/Text.h"
#include "base/Value.h"

/// Stored text. Plain: UTF-16LE units without an end mark. Compressed: FF FE, then each byte stands for U+0000 + byte.
/// A byte 00 switches to UTF-16LE units. A 00 where the next unit would begin switches back. See docs/file-format.md,
/// "Text".
namespace jet {

/// Replaces `text` but reuses its memory, which saves a scan one allocation per value.
/// @return false if half a unit is left over at the end; then `text` holds the units before it
[[nodiscard]] bool decodeText(std::span<const std::uint8_t> stored, base::Text& text);

/// The bytes of a compressed text that never switches to UTF-16LE: each stands for U+0000 + byte, none is zero. Nothing
/// for any other text.
std::optional<std::span<const std::uint8_t>> oneByteUnits(std::span<const std::uint8_t> stored);

/// Encodes text of a fixed length, which is never compressed.
/// @throws RuntimeError if the text begins with U+FEFF: it would be read as compressed
base::Bytes encodePlainText(base::TextView text);

/// @param compress  whether the column allows compression. It is used for texts that can be compressed. A text whose
/// plain form would look compressed is always stored compressed.
/// @throws RuntimeError if no form can store the text: it begins with U+FEFF and contains a unit U+xx00
base::Bytes encodeText(base::TextView text, bool compress);

}  // namespace jet
