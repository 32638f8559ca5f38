#pragma once

#include <cstdint>
#include <optional>

namespace plc {

/// The speed in bit/s to which a terminal is set; at the master of a pseudo-terminal that of its slave. Nothing when it
/// is unknown.
[[nodiscard]] std::optional<std::uint32_t> speedOf(int terminal);

/// Sets the speed; any number that the terminal supports. Throws std::system_error.
void setSpeed(int terminal, std::uint32_t baud);

} // namespace plc
