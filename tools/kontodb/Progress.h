#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/kontodb/Console.h"

namespace kontodb {

/// Tells a person at a terminal how far a long work has come: one line on the error output, once it takes longer than a
/// second. The line is erased when the work is over. Without a terminal nothing is written.
class Progress {
public:
    /// @param console  must outlive this
    /// @param what     UTF-8, what is being done, for example "Die Datei wird geprüft"
    /// @param quiet    for so long nothing is shown
    Progress(Console& console, std::string_view what, std::chrono::milliseconds quiet = std::chrono::seconds(1));
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Cheap enough to be called for each row or page.
    /// @param done  part of `all`, in any unit
    void at(std::uint64_t done, std::uint64_t all);

private:
    using Clock = std::chrono::steady_clock;

    Console& console_;
    std::string what_;
    bool isWatched_;
    Clock::time_point next_;  ///< when the line is written again
    std::string shown_;
};

}  // namespace kontodb
