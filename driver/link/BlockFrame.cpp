#include "driver/link/BlockFrame.h"

#include <algorithm>

namespace _VELK {

namespace {

constexpr unsigned char kProtocolId = 0xAA; // sent twice
constexpr std::size_t kLengthOffset = 2;
constexpr std::size_t kNumberOffset = 4;
constexpr std::size_t kChecksumOffset = 6;
constexpr std::size_t kLastFlagOffset = 7;

} // namespace

unsigned char blockChecksum(std::span<unsigned char const> frame) {
    unsigned sum = 0;
    for (unsigned char const byte : frame) {
        sum += byte;
    }
    if (frame.size() > kChecksumOffset) {
        sum -= frame[kChecksumOffset];
    }
    return static_cast<unsigned char>(sum & 0xFFU);
}

std::size_t writeBlockFrame(std::span<unsigned char> frame, std::span<unsigned char const> payload,
                            std::uint16_t number, bool last, ByteOrder order) {
    std::size_t const length = kBlockHeaderLength + payload.size();
    frame[0] = kProtocolId;
    frame[1] = kProtocolId;
    put16(frame.subspan(kLengthOffset), static_cast<std::uint16_t>(payload.size()), order);
    put16(frame.subspan(kNumberOffset), number, order);
    frame[kLastFlagOffset] = last ? 1 : 0;
    std::copy(payload.begin(), payload.end(), frame.subspan(kBlockHeaderLength).begin());
    frame[kChecksumOffset] = blockChecksum(frame.first(length));
    return length;
}

BlockFault parseBlockFrame(std::span<unsigned char const> frame, std::uint16_t expectedNumber, ByteOrder order,
                           ReceivedBlock& block) {
    if (frame.size() < kBlockHeaderLength) {
        return BlockFault::TooShort;
    }
    if (frame[0] != kProtocolId || frame[1] != kProtocolId) {
        return BlockFault::WrongProtocolId;
    }
    if (blockChecksum(frame) != frame[kChecksumOffset] ||
        get16(frame.subspan(kNumberOffset), order) != expectedNumber) {
        return BlockFault::WrongChecksumOrNumber;
    }
    block.payload = frame.subspan(kBlockHeaderLength);
    block.last = frame[kLastFlagOffset] != 0;
    return BlockFault::None;
}

} // namespace _VELK
