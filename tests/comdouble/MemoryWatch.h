#pragma once

#include <cstddef>

/// Watches the memory that COM's callers and objects hand to each other (texts, arrays, anything from the task
/// allocator) and whether it is freed. One watch at a time; the thread must have entered COM.
namespace comdouble {

class MemoryWatch {
public:
    virtual void begin() = 0;
    virtual void end() = 0;

    /// Blocks allocated since the watch began and not freed.
    virtual std::size_t notFreed() const = 0;

    /// How many times such a block was freed again. Freed memory stays reserved until the watch ends, so that no new
    /// block takes its place and hides the fault.
    virtual std::size_t freedAgain() const = 0;

protected:
    ~MemoryWatch() = default;
};

MemoryWatch& memoryWatch();

}  // namespace comdouble
