#pragma once

#include <cstddef>

/// Watches the memory that COM's callers and objects hand to each other (texts, arrays, anything from the task
/// allocator) and whether it is freed. One watch at a time; the thread must have entered COM.
namespace comdouble {

class MemoryWatch {
public:
    MemoryWatch();
    ~MemoryWatch();
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;

    /// Blocks allocated since the watch began and not freed.
    std::size_t notFreed() const;

    /// How many times such a block was freed again. Freed memory stays reserved until the watch ends, so that no new
    /// block takes its place and hides the fault.
    std::size_t freedAgain() const;
};

}  // namespace comdouble
