#pragma once

#include "driver/config/ByteOrder.h"

#include <cstddef>
#include <cstdint>
#include <span>

/**
 * The block frame that carries a piece of a message in either direction.
 *
 *     offset 0  0xAA 0xAA
 *     offset 2  payload length, 16 bits, in the node's byte order
 *     offset 4  block number, 16 bits, in the node's byte order; the first block of a message is 1
 *     offset 6  checksum
 *     offset 7  1 on the last block of a message, else 0
 *     offset 8  payload
 *
 * Pure code, without a port. A routing header, if any, is not part of the block frame.
 */
namespace _VELK {

inline constexpr std::size_t kBlockHeaderLength = 8;
inline constexpr unsigned kMaxBlockNumber = 0xFFFFU;  ///< block numbers have 16 bits
inline constexpr std::uint16_t kFirstBlockNumber = 1; ///< in each direction of every exchange

/**
 * Sum of all bytes of @p frame modulo 256, without the checksum byte itself.
 *
 * A plain byte sum: it detects neither swapped bytes nor two errors that cancel each other.
 */
unsigned char blockChecksum(std::span<unsigned char const> frame);

/**
 * Writes a block frame to the start of @p frame.
 *
 * @param frame room for kBlockHeaderLength + payload.size() bytes
 * @param payload at most 65,535 bytes
 * @return the number of bytes written
 */
std::size_t writeBlockFrame(std::span<unsigned char> frame, std::span<unsigned char const> payload,
                            std::uint16_t number, bool last, ByteOrder order);

/** What is wrong with a received block frame. */
enum class BlockFault { None, TooShort, WrongProtocolId, WrongChecksumOrNumber };

/** A received block frame. */
struct ReceivedBlock {
    std::span<unsigned char const> payload; ///< everything after the header; part of the frame it was read from
    bool last = false;
};

/**
 * Checks a received block frame and splits it. @p block is written only when the result is None.
 *
 * The number of bytes received decides the payload's length. The length field is deliberately ignored.
 */
BlockFault parseBlockFrame(std::span<unsigned char const> frame, std::uint16_t expectedNumber, ByteOrder order,
                           ReceivedBlock& block);

} // namespace _VELK
