#pragma once

#include <cstdint>
#include <span>

#include "base/Text.h"
#include "base/Value.h"

/// Stored text. Plain: UTF-16LE units without end mark. Compressed: FF FE, then bytes that stand for U+0000 + byte;
/// a byte 00 switches to UTF-16LE units, the next 00 at a unit's place back. See docs/file-format.md, "Text".
namespace jet {

/// Whether the bytes are a text: compressed ones always, plain ones if their number is even, and in both no half
/// unit is left over.
bool isStoredText(std::span<const std::uint8_t> stored);

/// Replaces `text`; its room is used again, which saves a scan one allocation a value. A half unit at the end is
/// dropped.
void decodeText(std::span<const std::uint8_t> stored, base::Text& text);
base::Text decodeText(std::span<const std::uint8_t> stored);

/// Whether the original engine compresses this text where a column allows it.
bool isCompressible(base::TextView text);

/// @param compress  whether the column allows it; done only for texts that are compressible
base::Bytes encodeText(base::TextView text, bool compress);

}  // namespace jet
