#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/Text.h"
#include "base/Value.h"

/// Stored text. Plain: UTF-16LE units without end mark. Compressed: FF FE, then bytes that stand for U+0000 + byte;
/// a byte 00 switches to UTF-16LE units, the next 00 at a unit's place back. See docs/file-format.md, "Text".
namespace jet {

/// Replaces `text`; its room is used again, which saves a scan one allocation a value.
/// @return false if half a unit was left over at the end; then `text` holds the units before it
[[nodiscard]] bool decodeText(std::span<const std::uint8_t> stored, base::Text& text);

/// The bytes of a compressed text that never leaves the form of one byte a unit: each stands for U+0000 + byte, none is
/// zero. Nothing for any other text.
std::optional<std::span<const std::uint8_t>> oneByteUnits(std::span<const std::uint8_t> stored);

/// The bytes of text of a fixed length: never compressed.
/// @throws RuntimeError for a text that begins with U+FEFF: it would be read as a compressed one
base::Bytes encodePlainText(base::TextView text);

/// @param compress  whether the column allows it; done only for texts that are compressible, and for those that
///                  cannot be told from compressed ones when they are stored plain
/// @throws RuntimeError for the texts that the format has no form for: U+FEFF first and a U+xx00 somewhere
base::Bytes encodeText(base::TextView text, bool compress);

}  // namespace jet
