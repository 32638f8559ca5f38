#pragma once

#include "plc/frames/Bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace plc {

/// How frames are put on the line.
enum class Framing : std::uint8_t {
    kBare,  ///< "Serial_RS232": the frame alone, one station on the line
    kRouted ///< "ABB_RS232_AC": every frame after a 19-byte routing header, any number of stations
};

/// The framing that a configuration names, or nothing.
[[nodiscard]] std::optional<Framing> framingNamed(std::string_view name);

using Address = std::array<std::uint8_t, 4>;

/// The address in a dotted text of four numbers 0..255, first number first, or nothing.
[[nodiscard]] std::optional<Address> addressFromText(std::string_view text);

/// One coupler level of the route from the panel to a station.
struct RouteLevel {
    int coupler = 0; ///< 0 and above
    int channel = 0; ///< 0..19
    Address address{};
};

/// The route from the panel to a station.
struct Route {
    int levels = 0; ///< 0..2: how many of the levels below are passed
    std::array<RouteLevel, 2> level{};
};

/// The hop of one level on the wire: 10 for coupler 0, else coupler x 20, plus the channel, modulo 256.
[[nodiscard]] std::uint8_t hopByte(RouteLevel const& level);

/**
 * The routing header, before every frame in both directions:
 *
 * | offset | size | content |
 * |--------|------|---------|
 * | 0      | 1    | 0x4F |
 * | 1      | 2    | block size, least significant byte first whatever the station's byte order |
 * | 3      | 1    | levels in the high four bits, 0 in the low four |
 * | 4      | 1    | hop of level 1, 0 when no level is passed |
 * | 5      | 4    | address of level 1, always |
 * | 9      | 1    | 0 |
 * | 10     | 1    | hop of level 2, 0 when fewer than two levels are passed |
 * | 11     | 4    | address of level 2, always |
 * | 15     | 4    | 0; in frames to the panel byte 17 is a status, 0 when all is well |
 */
inline constexpr std::size_t kRoutingHeaderSize = 19;
inline constexpr std::uint8_t kRoutingMark = 0x4F;
inline constexpr std::size_t kRoutingStatusOffset = 17;
using RoutingHeader = std::array<std::uint8_t, kRoutingHeaderSize>;

[[nodiscard]] RoutingHeader encodeRoutingHeader(Route const& route, std::size_t blockSize);

/// Whether both headers (19 bytes each) have the same route: levels, hops and addresses. Nothing else is compared.
[[nodiscard]] bool sameWay(RoutingHeader const& header, ByteView received);

} // namespace plc
