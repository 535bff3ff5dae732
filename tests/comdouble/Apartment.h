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
        memoryWatch().begin();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        memoryWatch().end();
        registration_.reset();
        CoUninitialize();
    }

    /// Fails the test if an object is still held, a record was not filled in, a forbidden call was made, or memory was
    /// not freed exactly once.
    void expectNothingLeft() const {
        EXPECT_EQ(state().held.size(), 0U);
        EXPECT_EQ(state().recordsNotFilledIn, 0);
        EXPECT_EQ(state().breaches, 0);
        EXPECT_EQ(memoryWatch().notFreed(), 0U);
        EXPECT_EQ(memoryWatch().freedAgain(), 0U);
    }

private:
    std::optional<Registration> registration_;
};

}  // namespace comdouble
