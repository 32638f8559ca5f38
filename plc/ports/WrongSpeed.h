#pragma once

#include "plc/frames/Bytes.h"

#include <cstdint>

namespace plc {

/**
 * What a receiver makes of characters that are sent at another speed than its own: it finds the edge of a start bit and
 * looks at the line where it takes the middles of the bits to be. Eight data bits, no parity, one stop bit; the
 * characters follow each other without a pause, and a wrong stop bit does not keep a character from being heard.
 *
 * The same speed gives the same bytes. Neither speed may be 0.
 */
[[nodiscard]] Bytes heardAt(std::uint32_t receiverBaud, ByteView sent, std::uint32_t senderBaud);

} // namespace plc
