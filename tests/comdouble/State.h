#pragma once

#include <atomic>

#include "tests/comdouble/AdoDouble.h"

namespace comdouble {

/// What is counted and ordered, for all objects together.
struct State {
    Faults faults;
    Raised deferred;  ///< of the record handed out last that is to be filled in
    std::atomic<std::int32_t> liveObjects = 0;
    std::atomic<std::int32_t> recordsNotFilledIn = 0;
    std::atomic<std::int32_t> breaches = 0;
};

State& state();

}  // namespace comdouble
