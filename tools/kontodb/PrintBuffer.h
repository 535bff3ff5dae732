#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

#include "tools/kontodb/Console.h"

namespace kontodb {

/// Gathers lines and prints many at once. Unlike a string it lends its free room as it is, not cleared: a writer that
/// knows only the most it will need puts its bytes there and says where they end.
class PrintBuffer {
public:
    explicit PrintBuffer(Console& console) : console_(console) {}

    /// @return room for so many bytes at the end; valid until the next call
    char* room(std::size_t bytes) {
        if (capacity_ - size_ < bytes) grow(bytes);
        return bytes_.get() + size_;
    }
    /// Keeps what was put into the room.
    /// @param end  after the last byte that was put there
    void endAt(const char* end) { size_ = static_cast<std::size_t>(end - bytes_.get()); }

    void put(std::string_view utf8) { endAt(std::copy(utf8.begin(), utf8.end(), room(utf8.size()))); }
    void put(char byte) {
        *room(1) = byte;
        ++size_;
    }

    /// Ends a line; so only whole lines are printed.
    void endLine();
    /// Prints what is left.
    void flush();
    /// Drops what was put after the end of the last line.
    void dropLine() { size_ = lineEnd_; }

private:
    void grow(std::size_t bytes);

    Console& console_;
    std::unique_ptr<char[]> bytes_;
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;
    std::size_t lineEnd_ = 0;
};

}  // namespace kontodb
