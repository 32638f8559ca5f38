#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace velk {

/** Microseconds for "500ms", "2s", "1.5s", "1min", up to a day; nothing for anything else and for 0 or less.
 */
std::optional<std::int64_t> parseInterval(std::string_view text);

} // namespace velk
