#include "plc/frames/PlcRouting.h"

#include <algorithm>
#include <charconv>

namespace plc {

namespace {

constexpr std::size_t kLevelsOffset = 3;
constexpr std::array<std::size_t, 2> kHopOffsets{4, 10};
constexpr std::size_t kAddressSize = 4;

void putLevel(RoutingHeader& header, std::size_t index, Route const& route) {
    std::size_t const hop = kHopOffsets[index];
    bool const passed = route.levels > static_cast<int>(index);
    header[hop] = passed ? hopByte(route.level[index]) : std::uint8_t{0};
    std::copy_n(route.level[index].address.begin(), kAddressSize,
                header.begin() + static_cast<std::ptrdiff_t>(hop) + 1);
}

} // namespace

std::optional<Framing> framingNamed(std::string_view name) {
    if (name == "Serial_RS232") {
        return Framing::kBare;
    }
    if (name == "ABB_RS232_AC") {
        return Framing::kRouted;
    }
    return std::nullopt;
}

std::optional<Address> addressFromText(std::string_view text) {
    Address address{};
    char const* position = text.data();
    char const* const end = position + text.size();
    for (std::size_t i = 0; i < address.size(); ++i) {
        if (i != 0 && (position == end || *position++ != '.')) {
            return std::nullopt;
        }
        auto const [next, error] = std::from_chars(position, end, address[i]);
        if (error != std::errc{}) {
            return std::nullopt;
        }
        position = next;
    }
    return position == end ? std::optional(address) : std::nullopt;
}

std::uint8_t hopByte(RouteLevel const& level) {
    auto const coupler = static_cast<unsigned>(level.coupler);
    unsigned const code = coupler == 0 ? 10U : coupler * 20U;
    return static_cast<std::uint8_t>(code + static_cast<unsigned>(level.channel));
}

RoutingHeader encodeRoutingHeader(Route const& route, std::size_t blockSize) {
    RoutingHeader header{};
    header[0] = kRoutingMark;
    header[1] = static_cast<std::uint8_t>(blockSize);
    header[2] = static_cast<std::uint8_t>(blockSize >> 8U);
    header[kLevelsOffset] = static_cast<std::uint8_t>(static_cast<unsigned>(route.levels) << 4U);
    putLevel(header, 0, route);
    putLevel(header, 1, route);
    return header;
}

bool sameWay(RoutingHeader const& header, ByteView received) {
    bool same = (header[kLevelsOffset] & 0xF0U) == (received[kLevelsOffset] & 0xF0U);
    for (std::size_t const hop : kHopOffsets) {
        same = same && std::equal(header.begin() + static_cast<std::ptrdiff_t>(hop),
                                  header.begin() + static_cast<std::ptrdiff_t>(hop + 1 + kAddressSize),
                                  received.begin() + static_cast<std::ptrdiff_t>(hop));
    }
    return same;
}

} // namespace plc
