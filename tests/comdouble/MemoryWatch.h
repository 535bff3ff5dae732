#pragma once

#include <cstddef>

/// What is in the memory that COM's callers and objects hand to each other (texts, arrays, whatever the task allocator
/// gives) and who frees it. One watch at a time; the thread must have entered COM.
namespace comdouble {

class MemoryWatch {
public:
    MemoryWatch();
    ~MemoryWatch();
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;

    /// Blocks made since the watch began that nobody has freed.
    std::size_t notFreed() const;

    /// How often one of them was freed once more. What is freed stays reserved until the watch ends, so that no new
    /// block takes the place and hides it.
    std::size_t freedAgain() const;
};

}  // namespace comdouble
