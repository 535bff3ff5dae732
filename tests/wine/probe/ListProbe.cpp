#include "tests/wine/probe/ListProbe.h"

#include <array>
#include <bit>
#include <commctrl.h>

#include "tests/wine/probe/RemoteMemory.h"

namespace probe {
namespace {

constexpr int kTextUnits = 600;
using TextBuffer = std::array<wchar_t, kTextUnits>;

/// Layout of the memory in the other process: the message's structure, then the text to which it points.
constexpr std::size_t kTextOffset = 256;
constexpr std::size_t kBlockBytes = kTextOffset + sizeof(TextBuffer);

std::wstring textIn(const RemoteMemory& memory) {
    TextBuffer text{};
    memory.get(kTextOffset, text);
    text.back() = L'\0';
    return text.data();
}

/// Marks the buffer, so that a message that wrote nothing is not taken for an empty text.
void mark(RemoteMemory& memory) {
    TextBuffer text{};
    const std::wstring_view unread = L"<not read>";
    unread.copy(text.data(), unread.size());
    memory.put(kTextOffset, text);
}

void describeColumns(Json& json, HWND list, HWND header, RemoteMemory& memory) {
    const auto count = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    json.field("headerImages", SendMessageW(header, HDM_GETIMAGELIST, 0, 0) != 0);
    json.key("columns").begin('[');
    for (int column = 0; column < count; ++column) {
        HDITEMW item{};
        item.mask = HDI_TEXT | HDI_FORMAT | HDI_IMAGE | HDI_WIDTH;
        item.pszText = memory.at<wchar_t>(kTextOffset);
        item.cchTextMax = kTextUnits;
        mark(memory);
        memory.put(0, item);
        SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(memory.at<void>(0)));
        memory.get(0, item);
        json.begin('{')
            .field("text", textIn(memory))
            .field("width", static_cast<int>(SendMessageW(list, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0)))
            .field("format", item.fmt)
            .field("image", (item.fmt & HDF_IMAGE) != 0 ? item.iImage : -1)
            .end('}');
    }
    json.end(']');
}

void describeRows(Json& json, HWND list, int first, int count, int columns, RemoteMemory& memory) {
    json.key("rows").begin('[');
    for (int row = first; row < first + count; ++row) {
        json.begin('[');
        for (int column = 0; column < columns; ++column) {
            LVITEMW item{};
            item.iSubItem = column;
            item.pszText = memory.at<wchar_t>(kTextOffset);
            item.cchTextMax = kTextUnits;
            mark(memory);
            memory.put(0, item);
            SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                         reinterpret_cast<LPARAM>(memory.at<void>(0)));
            json.value(textIn(memory));
        }
        json.end(']');
    }
    json.end(']');
}

/// The row's rectangle in screen coordinates; it may be outside the list.
void describePlace(Json& json, HWND list, int row, RemoteMemory& memory) {
    RECT place{};
    place.left = LVIR_BOUNDS;
    memory.put(0, place);
    SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(memory.at<void>(0)));
    memory.get(0, place);
    MapWindowPoints(list, nullptr, reinterpret_cast<POINT*>(&place), 2);
    json.key("firstRect").begin('[').value(place.left).value(place.top).value(place.right).value(place.bottom).end(']');
}

}  // namespace

void describeList(Json& json, HWND list, int first, int count) {
    RemoteMemory memory(list, kBlockBytes);
    if (!memory) {
        json.null();
        return;
    }
    const auto ask = [list](UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return static_cast<int>(SendMessageW(list, message, wParam, lParam));
    };
    constexpr auto kFromStart = static_cast<WPARAM>(-1);
    const int rowCount = ask(LVM_GETITEMCOUNT);
    if (first + count > rowCount) count = rowCount > first ? rowCount - first : 0;
    auto* header = std::bit_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    const auto columns = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    json.begin('{')
        .field("count", rowCount)
        .field("selected", ask(LVM_GETNEXTITEM, kFromStart, LVNI_SELECTED))
        .field("focused", ask(LVM_GETNEXTITEM, kFromStart, LVNI_FOCUSED))
        .field("selectedCount", ask(LVM_GETSELECTEDCOUNT))
        .field("top", ask(LVM_GETTOPINDEX))
        .field("perPage", ask(LVM_GETCOUNTPERPAGE))
        .field("header", reinterpret_cast<std::uintptr_t>(header));
    RECT headerRect{};
    GetWindowRect(header, &headerRect);
    json.field("rowsTop", headerRect.bottom);
    describePlace(json, list, first, memory);
    describeColumns(json, list, header, memory);
    describeRows(json, list, first, count, columns, memory);
    json.end('}');
}

}  // namespace probe
