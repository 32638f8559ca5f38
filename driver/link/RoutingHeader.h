#pragma once

#include <cstddef>
#include <span>
#include <string>

/**
 * The header that precedes every block frame and every acknowledge when the PLC is reached through couplers.
 *
 *     offset  0  0x4F
 *     offset  1  block size, 16 bits, least significant byte first for either byte order of the node
 *     offset  3  number of routing levels in the high four bits
 *     offset  4  hop of level 1: coupler code + channel modulo 256; 0 when not routed over level 1
 *     offset  5  address of level 1, first number of the dotted text first
 *     offset  9  0
 *     offset 10  hop of level 2
 *     offset 11  address of level 2
 *     offset 15  0, four bytes; in received frames the byte at offset 17 is a status, 0 when there is no error
 *
 * Pure code, without a port.
 */
namespace _VELK {

struct NodeParams;

inline constexpr std::size_t kRoutingHeaderLength = 19;

/** Writes the header for @p node to the first kRoutingHeaderLength bytes of @p header, which must be there. */
void writeRoutingHeader(std::span<unsigned char> header, NodeParams const& node);

/** Status byte of a received frame of at least kRoutingHeaderLength bytes: not 0 when a coupler failed. */
unsigned char routingStatus(std::span<unsigned char const> frame);

/**
 * Code of a coupler text: 10 for number 0, else number * 20 modulo 256. The number is the decimal number after the
 * first "e" of the text, or at its start when there is no "e"; 0 when there is no number.
 */
unsigned char couplerCode(std::string const& coupler);

} // namespace _VELK
