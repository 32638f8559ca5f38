#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/frames/Bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace plc {

/**
 * The two frames of the link, without routing header.
 *
 * Block frame: 0xAA 0xAA, payload length (2), block number (2), checksum (1), last-block flag (1), payload.
 * Acknowledge: 0x55 0x55, code 10 (2), block number (2); number 0 is the turnaround or the closing acknowledge.
 * The two-byte numbers are in the station's byte order.
 */
inline constexpr std::uint8_t kBlockMark = 0xAA;
inline constexpr std::uint8_t kAckMark = 0x55;
inline constexpr std::uint16_t kAcknowledgeCode = 10;
inline constexpr std::size_t kBlockHeaderSize = 8;
inline constexpr std::size_t kChecksumOffset = 6;
inline constexpr std::size_t kAckSize = 6;

/// Sizes of a block frame, its header included and a routing header excluded.
inline constexpr std::size_t kSmallestBlockSize = 128;
inline constexpr std::size_t kLargestBlockSize = 1460;

/// Fields of a block frame. Each can be deliberately wrong; the checksum always matches the built bytes.
struct BlockFields {
    std::array<std::uint8_t, 2> mark{kBlockMark, kBlockMark};
    std::uint16_t length = 0;
    std::uint16_t number = 0;
    std::uint8_t lastFlag = 0;
    ByteView payload{};
};

/// The fixed part of a received block frame.
struct BlockHeader {
    std::uint16_t length = 0;
    std::uint16_t number = 0;
    std::uint8_t checksum = 0;
    std::uint8_t lastFlag = 0;
};

struct AckFields {
    std::array<std::uint8_t, 2> mark{kAckMark, kAckMark};
    std::uint16_t code = kAcknowledgeCode;
    std::uint16_t number = 0;
};

/// The sum, modulo 256, of every byte of a block frame except the checksum itself. At least 8 bytes.
[[nodiscard]] std::uint8_t blockChecksum(ByteView frame);

[[nodiscard]] Bytes encodeBlock(BlockFields const& fields, ByteOrder order);
[[nodiscard]] Bytes encodeAck(AckFields const& fields, ByteOrder order);

/// Reads the first 8 bytes of a block frame; the mark is not checked.
[[nodiscard]] BlockHeader decodeBlockHeader(ByteView frame, ByteOrder order);
/// Reads the 6 bytes of an acknowledge.
[[nodiscard]] AckFields decodeAck(ByteView frame, ByteOrder order);

} // namespace plc
