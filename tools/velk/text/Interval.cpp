#include "tools/velk/text/Interval.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace velk {
namespace {

double microsecondsOf(std::string_view unit) {
    constexpr double kMillisecond = 1e3;
    constexpr double kSecond = 1e6;
    constexpr double kMinute = 60e6;
    return unit == "ms" ? kMillisecond : unit == "s" ? kSecond : unit == "min" ? kMinute : 0;
}

} // namespace

std::optional<std::int64_t> parseInterval(std::string_view text) {
    constexpr double kLongest = 86'400e6;
    double number = 0;
    auto const [unit, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        return std::nullopt;
    }
    double const microseconds = number * microsecondsOf({unit, text.data() + text.size()});
    if (!std::isfinite(microseconds) || microseconds < 1 || microseconds > kLongest) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(microseconds);
}

} // namespace velk
