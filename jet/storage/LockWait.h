#pragma once

#include <chrono>
#include <thread>

namespace jet {

/// How the machine's doors wait for a lock: they try, since not every system can wait for only so long.
/// @param tryLock  takes the lock if it is free
/// @return false if it was not free until then
template <typename TryLock>
bool lockUntil(std::chrono::steady_clock::time_point deadline, TryLock&& tryLock) {
    constexpr std::chrono::milliseconds kPause{10};
    while (!tryLock()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

}  // namespace jet
