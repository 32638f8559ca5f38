#pragma once

#include <cstdint>
#include <optional>

namespace plc {

/// The speed in bit/s to which a terminal is set; at the master of a pseudo-terminal that of its slave. Nothing when it
/// cannot be told.
[[nodiscard]] std::optional<std::uint32_t> speedOf(int terminal);

/// Sets it; any number that the terminal can do. Throws std::system_error.
void setSpeed(int terminal, std::uint32_t baud);

} // namespace plc
