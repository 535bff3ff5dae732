#pragma once

#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "win32/SystemHeaders.h"

/// Builds JSON on one line, from the innermost values outwards.
namespace probe {

using Json = std::string;

inline Json text(std::wstring_view wide) {
    Json out = "\"";
    for (const char c : base::toUtf8(base::Text(wide.begin(), wide.end()))) {
        if (c == '"' || c == '\\') out += '\\';
        char control[8] = "";
        std::snprintf(control, sizeof control, "\\u%04x", static_cast<unsigned>(c));
        out += static_cast<unsigned char>(c) < 0x20U ? std::string(control) : std::string(1, c);
    }
    return out + '"';
}

inline Json flag(bool isOn) {
    return isOn ? "true" : "false";
}

inline Json handle(const void* value) {
    return std::to_string(reinterpret_cast<std::uintptr_t>(value));
}

inline Json array(const std::vector<Json>& items) {
    Json out;
    for (const Json& item : items)
        out += (out.empty() ? "" : ",") + item;
    return '[' + out + ']';
}

inline Json rectangle(const RECT& rect) {
    return array(
        {std::to_string(rect.left), std::to_string(rect.top), std::to_string(rect.right), std::to_string(rect.bottom)});
}

inline Json object(std::initializer_list<std::pair<const char*, Json>> fields) {
    Json out;
    for (const auto& [name, value] : fields)
        out += (out.empty() ? "\"" : ",\"") + std::string(name) + "\":" + value;
    return '{' + out + '}';
}

/// Describes a list view in report view: columns, counts, selected and focused row (-1 if there is none), top row, rows
/// on a page, and the texts of the rows [first, first + count).
Json listOf(HWND list, int first, int count);

/// The different colours in a rectangle of the screen, as 0x00RRGGBB.
Json coloursIn(const RECT& place);

/// Name of the system icon that is drawn at this place of the screen; an icon's handle is useless in another process.
Json iconShownAt(const RECT& place);

}  // namespace probe
