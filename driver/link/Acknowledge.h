#pragma once

#include "driver/config/ByteOrder.h"

#include <cstddef>
#include <cstdint>
#include <span>

/**
 * The acknowledge, sent in either direction.
 *
 *     offset 0  0x55 0x55
 *     offset 2  acknowledge code 10, 16 bits, in the node's byte order
 *     offset 4  number of the acknowledged block, 16 bits, in the node's byte order
 *
 * Pure code, without a port. A routing header, if any, is not part of the acknowledge.
 */
namespace _VELK {

inline constexpr std::size_t kAcknowledgeLength = 6;

/** Block number of the acknowledge that turns the line around and of the one that closes an exchange. */
inline constexpr std::uint16_t kNoBlock = 0;

/** Writes an acknowledge to the first kAcknowledgeLength bytes of @p message, which must be there. */
void writeAcknowledge(std::span<unsigned char> message, std::uint16_t number, ByteOrder order);

/** Whether @p message starts with the acknowledge of block @p number. Bytes after it do not matter. */
bool isAcknowledge(std::span<unsigned char const> message, std::uint16_t number, ByteOrder order);

} // namespace _VELK
