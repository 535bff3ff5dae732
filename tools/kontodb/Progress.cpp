#include "tools/kontodb/Progress.h"

#include <algorithm>

#include "base/Text.h"

namespace kontodb {
namespace {

constexpr std::chrono::milliseconds kBetween{250};

}  // namespace

Progress::Progress(Console& console, std::string_view what, std::chrono::milliseconds quiet)
    : console_(console), what_(what), isWatched_(console.isErrorTerminal()), next_(Clock::now() + quiet) {}

Progress::~Progress() {
    if (shown_.empty()) return;
    console_.printError("\r" + std::string(base::fromUtf8(shown_).size(), ' ') + "\r");
}

void Progress::at(std::uint64_t done, std::uint64_t all) {
    if (!isWatched_ || Clock::now() < next_) return;
    next_ = Clock::now() + kBetween;
    constexpr std::uint64_t kWhole = 100;
    const std::uint64_t percent = all == 0 ? 0 : std::min(kWhole, done * kWhole / all);
    // Never shorter than before: the percentage only grows.
    shown_ = what_ + ": " + std::to_string(percent) + " %";
    console_.printError("\r" + shown_);
}

}  // namespace kontodb
