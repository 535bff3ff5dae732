#pragma once

#include <chrono>
#include <thread>

namespace jet {

/// Waits for a lock by trying again and again, because not every system can wait with a time limit.
/// @param tryLock  takes the lock if it is free
/// @return false if the lock was not free before the deadline
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
