#include <gtest/gtest.h>
#include <optional>

#include "ado/com/Factory.h"
#include "tests/comdouble/AdoDouble.h"
#include "tests/comdouble/MemoryWatch.h"
#include "tests/conformance/Way.h"

namespace conformance {

namespace {

class ComWay final : public Way {
public:
    ComWay() {
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        registration_.emplace();
        memory_.emplace();
    }
    ComWay(const ComWay&) = delete;
    ComWay& operator=(const ComWay&) = delete;
    ~ComWay() override {
        memory_.reset();
        registration_.reset();
        CoUninitialize();
    }

    ado::ConnectionFactory& connections() override { return factory_; }
    void expectNothingLeft() override {
        EXPECT_EQ(comdouble::liveObjects(), 0);
        EXPECT_EQ(comdouble::recordsNotFilledIn(), 0);
        EXPECT_EQ(comdouble::breaches(), 0);
        EXPECT_EQ(memory_->notFreed(), 0U);
        EXPECT_EQ(memory_->freedAgain(), 0U);
    }

private:
    std::optional<comdouble::Registration> registration_;
    std::optional<comdouble::MemoryWatch> memory_;
    ado::com::Factory factory_{{comdouble::Registration::connectionClass(), comdouble::Registration::recordsetClass()}};
};

}  // namespace

std::unique_ptr<Way> makeWay() {
    return std::make_unique<ComWay>();
}

}  // namespace conformance
