#pragma once

#include "plc/frames/Bytes.h"

#include <cstdint>

namespace plc {

/**
 * The bytes that a receiver gets from characters sent at a different speed: it finds the edge of a start bit and
 * samples the line where it expects the middle of each bit. Eight data bits, no parity, one stop bit; the characters
 * follow each other without a pause, and a character with a wrong stop bit is still received.
 *
 * The same speed gives the same bytes. Neither speed may be 0.
 */
[[nodiscard]] Bytes heardAt(std::uint32_t receiverBaud, ByteView sent, std::uint32_t senderBaud);

} // namespace plc
