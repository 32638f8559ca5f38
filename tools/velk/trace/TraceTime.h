#pragma once

#include <cstdint>
#include <string>

namespace velk::trace {

/** Microseconds since 1970 as "2026-11-21T11:34:18.123456Z". */
std::string isoTime(std::int64_t at);

/** Microseconds as seconds: "12.345678", "-0.000001". */
std::string secondsText(std::int64_t microseconds);

} // namespace velk::trace
