#include "tools/kontodb/AlignedColumns.h"

#include <algorithm>

namespace kontodb {
namespace {

/// A longer value stands out beyond its column and does not widen all others.
constexpr std::size_t kWidest = 80;
constexpr std::string_view kGap = "  ";

std::size_t widthOf(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; }));
}

}  // namespace

void AlignedColumns::measure(std::size_t column, std::string_view utf8) {
    widths_[column] = std::min(std::max(widths_[column], widthOf(utf8)), kWidest);
}

void AlignedColumns::put(PrintBuffer& lines, std::size_t column, std::string_view utf8, bool toTheRight) const {
    const std::size_t width = widthOf(utf8);
    const std::string blanks(width < widths_[column] ? widths_[column] - width : 0, ' ');
    if (column > 0) lines.put(kGap);
    if (toTheRight) lines.put(blanks);
    lines.put(utf8);
    if (!toTheRight && column + 1 < widths_.size()) lines.put(blanks);
}

void AlignedColumns::putRule(PrintBuffer& lines) const {
    for (std::size_t column = 0; column < widths_.size(); ++column) {
        if (column > 0) lines.put(kGap);
        lines.put(std::string(std::max<std::size_t>(widths_[column], 1), '-'));
    }
    lines.endLine();
}

std::string withoutControls(std::string_view utf8) {
    std::string shown;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        const bool isC1 = byte == 0xC2 && i + 1 < utf8.size() && static_cast<unsigned char>(utf8[i + 1]) < 0xA0;
        if (isC1) ++i;
        if (byte == '\t' || byte == '\n' || byte == '\r')
            shown += ' ';
        else if (isC1 || byte < 0x20 || byte == 0x7F)
            shown += "\xEF\xBF\xBD";
        else
            shown += utf8[i];
    }
    return shown;
}

}  // namespace kontodb
