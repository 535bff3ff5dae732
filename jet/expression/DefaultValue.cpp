#include "jet/expression/DefaultValue.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include "jet/expression/ExpressionErrors.h"
#include "jet/expression/ExpressionParser.h"

namespace jet {

namespace {

constexpr double kSecondsOfDay = 86400.0;
constexpr double kDayOfUnixEpoch = 25569.0;

std::tm localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    return local;
}

base::Date today(const std::tm& local) {
    const std::chrono::year_month_day date{std::chrono::year(local.tm_year + 1900),
                                           std::chrono::month(static_cast<unsigned>(local.tm_mon) + 1),
                                           std::chrono::day(static_cast<unsigned>(local.tm_mday))};
    return {kDayOfUnixEpoch + static_cast<double>(std::chrono::sys_days{date}.time_since_epoch().count())};
}

base::Date now(const std::tm& local) {
    const int seconds = (local.tm_hour * 60 + local.tm_min) * 60 + std::min(local.tm_sec, 59);
    return {today(local).days + seconds / kSecondsOfDay};
}

/// Whether the rest of the text is a call of the function without arguments.
bool isCallOf(TokenReader reader, base::TextView function) {
    return reader.take(function) && reader.take(u"(") && reader.take(u")") && reader.atEnd();
}

bool isWord(TokenReader reader, base::TextView word) {
    return reader.take(word) && reader.atEnd();
}

}  // namespace

base::Value defaultValue(base::TextView expression) {
    TokenReader reader(expression);
    reader.take(u"=");
    if (isCallOf(reader, u"NOW")) return now(localTime());
    if (isCallOf(reader, u"DATE")) return today(localTime());
    if (isWord(reader, u"YES") || isWord(reader, u"ON")) return true;
    if (isWord(reader, u"NO") || isWord(reader, u"OFF")) return false;
    const Expression constant = parseWhole(reader);
    if (constant.kind != Expression::Kind::Literal) throw unsupported(expression);
    return constant.value;
}

}  // namespace jet
