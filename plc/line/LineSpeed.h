#pragma once

#include "plc/frames/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace plc {

enum class Parity : std::uint8_t { kNone, kEven, kOdd, kMark };

/// "none", "even", "odd" or "mark".
[[nodiscard]] std::optional<Parity> parityNamed(std::string_view name);

/// The line speeds in bit/s that can be simulated.
inline constexpr std::uint32_t kLeastBaud = 50;
inline constexpr std::uint32_t kMostBaud = 4'000'000;

/// How characters are sent over a serial line: a start bit, eight data bits, a parity bit or none, one or two stop
/// bits.
struct LineSpeed {
    std::uint32_t baud = 0; ///< bit/s; 0: no speed
    Parity parity = Parity::kNone;
    int stopBits = 1;
};

/// How many characters are sent in a second; 0 without a speed, otherwise at least 1.
[[nodiscard]] std::uint32_t bytesPerSecond(LineSpeed const& speed);

/// How long this many characters take; 0 without a speed.
[[nodiscard]] Micros timeOf(std::size_t bytes, LineSpeed const& speed);

} // namespace plc
