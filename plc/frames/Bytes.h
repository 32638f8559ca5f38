#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

namespace plc {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<std::uint8_t const>;

/// Virtual time: microseconds since a start that the caller chooses. Nothing in this folder but FdServer reads a clock.
using Micros = std::chrono::microseconds;

} // namespace plc
