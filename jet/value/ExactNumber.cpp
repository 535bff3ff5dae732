#include "jet/value/ExactNumber.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace jet {
namespace {

/// No double has so large an exponent.
constexpr int kMaxExponent = 400;

bool isDigit(char unit) {
    return unit >= '0' && unit <= '9';
}

/// @param digits  at most 38, so that they fit into four words
std::array<std::uint32_t, 4> wordsOf(std::string_view digits) {
    std::array<std::uint32_t, 4> words{};
    for (const char digit : digits)
        appendDigit(words, static_cast<unsigned>(digit - '0'));
    return words;
}

}  // namespace

std::string digitsOf(const base::Decimal& decimal) {
    auto words = decimal.magnitude;
    std::string digits;
    while (std::any_of(words.begin(), words.end(), [](std::uint32_t word) { return word != 0; })) {
        std::uint64_t rest = 0;
        for (std::size_t i = words.size(); i > 0; --i) {
            const std::uint64_t part = (rest << 32U) | words[i - 1];
            words[i - 1] = static_cast<std::uint32_t>(part / 10);
            rest = part % 10;
        }
        digits.push_back(static_cast<char>('0' + rest));
    }
    std::reverse(digits.begin(), digits.end());
    return digits;
}

ExactNumber::ExactNumber(std::int64_t value, std::uint8_t scale) : negative_(value < 0), scale_(scale) {
    digits_ = std::to_string(value);
    if (negative_) digits_.erase(0, 1);
    normalise();
}

ExactNumber::ExactNumber(const base::Decimal& decimal)
    : negative_(decimal.negative), digits_(digitsOf(decimal)), scale_(decimal.scale) {
    normalise();
}

void ExactNumber::normalise() {
    digits_.erase(0, std::min(digits_.find_first_not_of('0'), digits_.size()));
    while (!digits_.empty() && digits_.back() == '0') {
        digits_.pop_back();
        --scale_;
    }
    if (!digits_.empty()) return;
    negative_ = false;
    scale_ = 0;
}

std::optional<ExactNumber> ExactNumber::fromText(std::string_view text) {
    ExactNumber number;
    if (text.starts_with('-') || text.starts_with('+')) {
        number.negative_ = text.front() == '-';
        text.remove_prefix(1);
    }
    bool behindPoint = false;
    std::size_t place = 0;
    for (; place < text.size() && (isDigit(text[place]) || (text[place] == '.' && !behindPoint)); ++place) {
        if (text[place] == '.') {
            behindPoint = true;
            continue;
        }
        number.digits_.push_back(text[place]);
        if (behindPoint) ++number.scale_;
    }
    if (number.digits_.empty()) return std::nullopt;
    if (place < text.size()) {
        if (text[place] != 'e' && text[place] != 'E') return std::nullopt;
        if (++place < text.size() && text[place] == '+' && text.substr(place + 1, 1) != "-") ++place;
        int exponent = 0;
        const char* end = text.data() + text.size();
        const auto read = std::from_chars(text.data() + place, end, exponent);
        const bool isInRange = exponent >= -kMaxExponent && exponent <= kMaxExponent;
        if (read.ec != std::errc{} || read.ptr != end || !isInRange) return std::nullopt;
        number.scale_ -= exponent;
    }
    number.normalise();
    return number;
}

std::optional<ExactNumber> ExactNumber::fromDouble(double value) {
    // The fewest digits that read as the same double. std::to_chars would add 180 KB of tables to the program.
    std::array<char, 40> text{};
    constexpr int kAlwaysKept = std::numeric_limits<double>::digits10;
    constexpr int kAlwaysEnough = std::numeric_limits<double>::max_digits10;
    for (int digits = kAlwaysKept; digits <= kAlwaysEnough; ++digits) {
        std::snprintf(text.data(), text.size(), "%.*e", digits - 1, value);
        if (std::strtod(text.data(), nullptr) == value) break;
    }
    return fromText(text.data());
}

double ExactNumber::toDouble() const {
    const std::string text = (negative_ ? "-" : "") + (digits_.empty() ? "0" : digits_) + "e" + std::to_string(-scale_);
    return std::strtod(text.c_str(), nullptr);
}

ExactNumber ExactNumber::rounded(int scale) const {
    ExactNumber result = *this;
    const int drop = scale_ - scale;
    if (drop <= 0) return result;
    const auto dropped = static_cast<std::size_t>(drop);
    if (dropped > digits_.size()) return ExactNumber(0);
    const std::string tail = digits_.substr(digits_.size() - dropped);
    result.digits_.resize(digits_.size() - dropped);
    result.scale_ = scale;
    const bool isHalf = tail[0] == '5' && tail.size() == 1;  // as digits_ does not end in zeros
    const bool isOdd = !result.digits_.empty() && (result.digits_.back() - '0') % 2 != 0;
    if (isHalf ? isOdd : tail[0] >= '5') {
        result.digits_.insert(result.digits_.begin(), '0');
        std::size_t place = result.digits_.size() - 1;
        for (; result.digits_[place] == '9'; --place)
            result.digits_[place] = '0';
        ++result.digits_[place];
    }
    result.normalise();
    return result;
}

std::optional<std::int64_t> ExactNumber::scaledTo(int scale) const {
    const ExactNumber number = rounded(scale);
    const int zeros = scale - number.scale_;
    constexpr std::size_t kMostDigits = 19;
    if (number.isZero()) return 0;
    if (number.digits_.size() + static_cast<std::size_t>(zeros) > kMostDigits) return std::nullopt;
    const std::string text =
        (number.negative_ ? "-" : "") + number.digits_ + std::string(static_cast<std::size_t>(zeros), '0');
    std::int64_t value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc{}) return std::nullopt;
    return value;
}

std::optional<base::Decimal> ExactNumber::decimal(std::uint8_t precision, std::uint8_t scale) const {
    const ExactNumber number = rounded(scale);
    const int zeros = number.isZero() ? 0 : scale - number.scale_;
    if (static_cast<int>(number.digits_.size()) + zeros > std::min<int>(precision, 38)) return std::nullopt;
    base::Decimal result;
    result.negative = number.negative_;
    result.scale = scale;
    result.magnitude = wordsOf(number.digits_ + std::string(static_cast<std::size_t>(zeros), '0'));
    return result;
}

std::optional<std::string> ExactNumber::wholeText() const {
    if (scale_ > 0) return std::nullopt;
    if (isZero()) return "0";
    return (negative_ ? "-" : "") + digits_ + std::string(static_cast<std::size_t>(-scale_), '0');
}

}  // namespace jet
