#include "driver/link/RoutingHeader.h"

#include "driver/config/NodeParams.h"
#include "protlib/text/IpAddress.h"

#include <algorithm>
#include <cstdlib>

namespace _VELK {

namespace {

constexpr unsigned char kRoutingId = 0x4F;
constexpr std::size_t kBlockSizeOffset = 1;
constexpr std::size_t kLevelsOffset = 3;
constexpr std::size_t kHop1Offset = 4;
constexpr std::size_t kAddress1Offset = 5;
constexpr std::size_t kHop2Offset = 10;
constexpr std::size_t kAddress2Offset = 11;
constexpr std::size_t kStatusOffset = 17;

constexpr unsigned char kCodeOfCouplerZero = 10;
constexpr unsigned kCodesPerCoupler = 20;

unsigned char lowByte(unsigned value) {
    return static_cast<unsigned char>(value & 0xFFU);
}

unsigned char hop(std::string const& coupler, int channel) {
    return lowByte(couplerCode(coupler) + static_cast<unsigned>(channel));
}

/** An address that is not in dotted form is sent as 0.0.0.0. */
void writeAddress(std::span<unsigned char> bytes, std::string const& dotted) {
    unsigned int address = 0;
    parseIpAddress(dotted.c_str(), address);
    bytes[0] = lowByte(address >> 24U);
    bytes[1] = lowByte(address >> 16U);
    bytes[2] = lowByte(address >> 8U);
    bytes[3] = lowByte(address);
}

} // namespace

unsigned char couplerCode(std::string const& coupler) {
    std::size_t const letter = coupler.find('e');
    char const* const digits = coupler.c_str() + (letter == std::string::npos ? 0 : letter + 1);
    auto const number = static_cast<unsigned long long>(std::strtoll(digits, nullptr, 10));
    return number == 0 ? kCodeOfCouplerZero : static_cast<unsigned char>(number * kCodesPerCoupler & 0xFFU);
}

void writeRoutingHeader(std::span<unsigned char> header, NodeParams const& node) {
    std::span<unsigned char> const bytes = header.first(kRoutingHeaderLength);
    std::fill(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    auto const blockSize = static_cast<unsigned>(node.BlockSize);
    bytes[0] = kRoutingId;
    // Least significant byte first even for a big-endian node.
    bytes[kBlockSizeOffset] = lowByte(blockSize);
    bytes[kBlockSizeOffset + 1] = lowByte(blockSize >> 8U);
    bytes[kLevelsOffset] = lowByte((static_cast<unsigned>(node.RoutingLevels) & 0x0FU) << 4U);
    bytes[kHop1Offset] = node.RoutingLevels > 0 ? hop(node.CouplerLV1, node.ChannelLV1) : lowByte(0);
    writeAddress(bytes.subspan(kAddress1Offset), node.AddressLV1);
    bytes[kHop2Offset] = node.RoutingLevels > 1 ? hop(node.CouplerLV2, node.ChannelLV2) : lowByte(0);
    writeAddress(bytes.subspan(kAddress2Offset), node.AddressLV2);
}

unsigned char routingStatus(std::span<unsigned char const> frame) {
    return frame[kStatusOffset];
}

} // namespace _VELK
