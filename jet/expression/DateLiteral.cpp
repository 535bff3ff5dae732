#include "jet/expression/DateLiteral.h"

#include <chrono>
#include <cstddef>
#include <utility>

namespace jet {

namespace {

/// Reads the literal from left to right. Each function returns whether it found what it was looking for.
class Scanner {
public:
    explicit Scanner(base::TextView text) : text_(base::trimBlanks(text)) {}

    bool atEnd() const { return place_ == text_.size(); }

    void skipBlanks() {
        while (!atEnd() && text_[place_] == u' ')
            ++place_;
    }

    bool take(char16_t unit) {
        if (atEnd() || text_[place_] != unit) return false;
        ++place_;
        return true;
    }

    bool takeWord(base::TextView word) {
        if (!base::equalsIgnoringAsciiCase(text_.substr(place_, word.size()), word)) return false;
        place_ += word.size();
        return true;
    }

    /// A number of at most four digits.
    bool takeNumber(int& number) {
        const std::size_t begin = place_;
        number = 0;
        while (!atEnd() && text_[place_] >= u'0' && text_[place_] <= u'9' && place_ - begin < 4)
            number = number * 10 + (text_[place_++] - u'0');
        digits_ = place_ - begin;
        return digits_ > 0;
    }

    /// Number of digits of the last number.
    std::size_t digits() const { return digits_; }

    std::size_t place() const { return place_; }
    void goBack(std::size_t place) { place_ = place; }

private:
    base::TextView text_;
    std::size_t place_ = 0;
    std::size_t digits_ = 0;
};

std::optional<int> daysOf(int year, int month, int day) {
    using std::chrono::sys_days;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (year < 100 || !date.ok()) return std::nullopt;
    const sys_days dayZero = std::chrono::year(1899) / std::chrono::December / 30;
    return static_cast<int>((sys_days{date} - dayZero).count());
}

std::optional<int> scanDate(Scanner& scanner) {
    int first = 0;
    int second = 0;
    int third = 0;
    if (!scanner.takeNumber(first)) return std::nullopt;
    const bool yearFirst = scanner.digits() > 2;
    const char16_t joint = scanner.take(u'/') ? u'/' : u'-';
    if (joint == u'-' && !scanner.take(u'-')) return std::nullopt;
    if (!scanner.takeNumber(second) || !scanner.take(joint) || !scanner.takeNumber(third)) return std::nullopt;
    if (yearFirst) return daysOf(first, second, third);
    if (scanner.digits() <= 2) third += third < 30 ? 2000 : 1900;
    if (first > 12) std::swap(first, second);
    return daysOf(third, first, second);
}

/// @return the part of the day, 0 to below 1
std::optional<double> scanTime(Scanner& scanner) {
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!scanner.takeNumber(hour) || !scanner.take(u':') || !scanner.takeNumber(minute)) return std::nullopt;
    if (scanner.take(u':') && !scanner.takeNumber(second)) return std::nullopt;
    scanner.skipBlanks();
    const bool morning = scanner.takeWord(u"AM");
    const bool afternoon = !morning && scanner.takeWord(u"PM");
    if (morning || afternoon) {
        if (hour < 1 || hour > 12) return std::nullopt;
        hour = hour % 12 + (afternoon ? 12 : 0);
    }
    if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return (hour * 3600 + minute * 60 + second) / 86400.0;
}

}  // namespace

std::optional<base::Date> dateFromLiteral(base::TextView text) {
    Scanner scanner(text);
    const std::size_t begin = scanner.place();
    int day = 0;
    if (const auto date = scanDate(scanner)) {
        day = *date;
        scanner.skipBlanks();
        if (scanner.atEnd()) return base::Date{static_cast<double>(day)};
    } else {
        scanner.goBack(begin);
    }
    const auto time = scanTime(scanner);
    if (!time || !scanner.atEnd()) return std::nullopt;
    // In dates before day zero, too, the fraction is the time since midnight.
    return base::Date{day < 0 ? day - *time : day + *time};
}

}  // namespace jet
