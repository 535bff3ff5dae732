#include "jet/page/Rc4.h"

#include <numeric>
#include <utility>

namespace jet {

Rc4::Rc4(std::span<const std::uint8_t> key) {
    std::iota(state_.begin(), state_.end(), std::uint8_t{0});
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < state_.size(); ++i) {
        j = static_cast<std::uint8_t>(j + state_[i] + key[i % key.size()]);
        std::swap(state_[i], state_[j]);
    }
}

void Rc4::apply(std::span<std::uint8_t> bytes) {
    for (std::uint8_t& byte : bytes) {
        i_ = static_cast<std::uint8_t>(i_ + 1U);
        j_ = static_cast<std::uint8_t>(j_ + state_[i_]);
        std::swap(state_[i_], state_[j_]);
        byte ^= state_[static_cast<std::uint8_t>(state_[i_] + state_[j_])];
    }
}

}  // namespace jet
