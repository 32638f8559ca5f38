#include "plc/line/LineSpeed.h"

#include <algorithm>
#include <array>

namespace plc {

namespace {

constexpr std::array<std::string_view, 4> kParities{"none", "even", "odd", "mark"};
constexpr std::uint64_t kMicrosPerSecond = 1'000'000;

std::uint32_t bitsPerByte(LineSpeed const& speed) {
    constexpr std::uint32_t kStartAndData = 9;
    return kStartAndData + (speed.parity == Parity::kNone ? 0U : 1U) + static_cast<std::uint32_t>(speed.stopBits);
}

} // namespace

std::optional<Parity> parityNamed(std::string_view name) {
    auto const* const found = std::find(kParities.begin(), kParities.end(), name);
    return found == kParities.end() ? std::nullopt : std::optional(static_cast<Parity>(found - kParities.begin()));
}

std::uint32_t bytesPerSecond(LineSpeed const& speed) {
    return speed.baud == 0 ? 0 : std::max(1U, speed.baud / bitsPerByte(speed));
}

Micros timeOf(std::size_t bytes, LineSpeed const& speed) {
    if (speed.baud == 0) {
        return Micros::zero();
    }
    std::uint64_t const micros = std::uint64_t{bytes} * bitsPerByte(speed) * kMicrosPerSecond / speed.baud;
    return Micros(static_cast<Micros::rep>(micros));
}

} // namespace plc
