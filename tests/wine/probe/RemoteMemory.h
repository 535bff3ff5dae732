#pragma once

#include <cstddef>
#include <utility>
#include <windows.h>

namespace probe {

/// A block of memory in the process that owns a window. Messages of the common controls that carry a pointer
/// are not translated between processes: what they point to must lie where the control lives.
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

    /// False when the process is gone or refuses.
    explicit operator bool() const { return address_ != nullptr; }

    /// The address in the other process, as seen there.
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
