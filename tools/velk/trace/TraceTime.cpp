#include "tools/velk/trace/TraceTime.h"

#include <fmt/format.h>

#include <ctime>

namespace velk::trace {
namespace {

constexpr std::int64_t kMicrosPerSecond = 1'000'000;

} // namespace

std::string isoTime(std::int64_t at) {
    std::int64_t const micros = (at % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
    auto const seconds = static_cast<std::time_t>((at - micros) / kMicrosPerSecond);
    std::tm utc{};
    if (gmtime_r(&seconds, &utc) == nullptr) {
        return fmt::format("{}", at);
    }
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z", utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday,
                       utc.tm_hour, utc.tm_min, utc.tm_sec, micros);
}

std::string secondsText(std::int64_t microseconds) {
    std::int64_t const size = microseconds < 0 ? -microseconds : microseconds;
    return fmt::format("{}{}.{:06}", microseconds < 0 ? "-" : "", size / kMicrosPerSecond, size % kMicrosPerSecond);
}

} // namespace velk::trace
