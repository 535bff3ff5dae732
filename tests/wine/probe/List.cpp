#include <algorithm>
#include <bit>

#include "tests/wine/probe/Probe.h"

namespace probe {
namespace {

constexpr int kTextUnits = 600;

/// What a message of a list or a header points to. It must be in the control's own process: the system does not
/// translate pointers in these messages between processes.
template <class Structure>
struct Block {
    Structure structure;
    wchar_t text[kTextUnits];
};

/// Sends the message with a copy of the structure in the other process. @return the copy as the control leaves it; its
/// text is "<not read>" if the control wrote none
template <class Structure>
Block<Structure> answerOf(HWND control, UINT message, int index, Structure structure, wchar_t* Structure::*text) {
    DWORD id = 0;
    GetWindowThreadProcessId(control, &id);
    HANDLE process = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, id);
    auto* there = static_cast<Block<Structure>*>(
        VirtualAllocEx(process, nullptr, sizeof(Block<Structure>), MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    Block<Structure> block{structure, L"<not read>"};
    if (text != nullptr) block.structure.*text = there->text;
    WriteProcessMemory(process, there, &block, sizeof block, nullptr);
    SendMessageW(control, message, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(there));
    ReadProcessMemory(process, there, &block, sizeof block, nullptr);
    VirtualFreeEx(process, there, 0, MEM_RELEASE);
    CloseHandle(process);
    return block;
}

Json column(HWND list, HWND header, int index) {
    HDITEMW item{};
    item.mask = HDI_TEXT | HDI_FORMAT | HDI_IMAGE;
    item.cchTextMax = kTextUnits;
    const auto told = answerOf(header, HDM_GETITEMW, index, item, &HDITEMW::pszText);
    const bool hasImage = (told.structure.fmt & HDF_IMAGE) != 0;
    return object({{"text", text(told.text)},
                   {"width", std::to_string(SendMessageW(list, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(index), 0))},
                   {"image", std::to_string(hasImage ? told.structure.iImage : -1)}});
}

Json cell(HWND list, int row, int column) {
    LVITEMW item{};
    item.iSubItem = column;
    item.cchTextMax = kTextUnits;
    return text(answerOf(list, LVM_GETITEMTEXTW, row, item, &LVITEMW::pszText).text);
}

/// The array of make(index) for each index in [first, end).
template <class Make>
Json arrayOf(int first, int end, Make&& make) {
    std::vector<Json> items;
    items.reserve(static_cast<std::size_t>(std::max(end - first, 0)));
    for (int index = first; index < end; ++index)
        items.push_back(make(index));
    return array(items);
}

}  // namespace

Json listOf(HWND list, int first, int count) {
    const auto ask = [list](UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return static_cast<int>(SendMessageW(list, message, wParam, lParam));
    };
    const int rowCount = ask(LVM_GETITEMCOUNT);
    auto* header = std::bit_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    const auto columnCount = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    RECT place{};
    place.left = LVIR_BOUNDS;
    place = answerOf<RECT>(list, LVM_GETITEMRECT, first, place, nullptr).structure;
    MapWindowPoints(list, nullptr, reinterpret_cast<POINT*>(&place), 2);
    constexpr auto kFromStart = static_cast<WPARAM>(-1);
    return object({{"count", std::to_string(rowCount)},
                   {"selected", std::to_string(ask(LVM_GETNEXTITEM, kFromStart, LVNI_SELECTED))},
                   {"focused", std::to_string(ask(LVM_GETNEXTITEM, kFromStart, LVNI_FOCUSED))},
                   {"selectedCount", std::to_string(ask(LVM_GETSELECTEDCOUNT))},
                   {"top", std::to_string(ask(LVM_GETTOPINDEX))},
                   {"perPage", std::to_string(ask(LVM_GETCOUNTPERPAGE))},
                   {"firstRect", rectangle(place)},
                   {"columns", arrayOf(0, columnCount, [&](int index) { return column(list, header, index); })},
                   {"rows", arrayOf(first, std::min(first + count, rowCount), [&](int row) {
                        return arrayOf(0, columnCount, [&](int index) { return cell(list, row, index); });
                    })}});
}

}  // namespace probe
