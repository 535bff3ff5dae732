#pragma once

#include <gtest/gtest.h>
#include <optional>

#include "tests/comdouble/AdoDouble.h"
#include "tests/comdouble/MemoryWatch.h"

namespace comdouble {

/// An apartment of the test's own, in which the double's classes are registered and memory is watched.
class Apartment {
public:
    Apartment() {
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        registration_.emplace();
        memory_.emplace();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        memory_.reset();
        leave();
    }

    /// Leaves COM before the end of this object; memory is still watched.
    void leave() {
        if (!registration_) return;
        registration_.reset();
        CoUninitialize();
    }

    /// Breaches that a test has made on purpose since the last call.
    std::int32_t takeBreaches() {
        const std::int32_t taken = state().breaches - breachesTaken_;
        breachesTaken_ += taken;
        return taken;
    }

    /// Fails the test if an object is still held, a record was not filled in, a forbidden call was made, or memory was
    /// not freed exactly once.
    void expectNothingLeft() {
        EXPECT_EQ(state().held.size(), 0U);
        EXPECT_EQ(state().recordsNotFilledIn, 0);
        EXPECT_EQ(takeBreaches(), 0);
        EXPECT_EQ(memory_->notFreed(), 0U);
        EXPECT_EQ(memory_->freedAgain(), 0U);
    }

private:
    std::optional<Registration> registration_;
    std::optional<MemoryWatch> memory_;
    std::int32_t breachesTaken_ = 0;
};

}  // namespace comdouble
