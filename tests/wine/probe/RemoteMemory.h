#pragma once

#include <cstddef>
#include <utility>
#include <windows.h>

namespace probe {

/// A block of memory in the process that owns a window. The system does not translate pointers in messages of the
/// common controls between processes: what they point to must be in the control's own process.
class RemoteMemory {
public:
    RemoteMemory(HWND window, std::size_t sizeBytes) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        process_ = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, process);
        if (process_ != nullptr) {
            address_ = VirtualAllocEx(process_, nullptr, sizeBytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
        }
    }
    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;
    ~RemoteMemory() {
        if (address_ != nullptr) VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
        if (process_ != nullptr) CloseHandle(process_);
    }

    /// False if the process has ended or refuses access.
    explicit operator bool() const { return address_ != nullptr; }

    /// The block's address in the other process.
    template <class T>
    T* at(std::size_t offsetBytes) const {
        return reinterpret_cast<T*>(static_cast<std::byte*>(address_) + offsetBytes);
    }

    template <class T>
    bool put(std::size_t offsetBytes, const T& value) {
        return WriteProcessMemory(process_, at<T>(offsetBytes), &value, sizeof value, nullptr) != 0;
    }
    template <class T>
    bool get(std::size_t offsetBytes, T& value) const {
        return ReadProcessMemory(process_, at<T>(offsetBytes), &value, sizeof value, nullptr) != 0;
    }

private:
    HANDLE process_ = nullptr;
    void* address_ = nullptr;
};

}  // namespace probe
