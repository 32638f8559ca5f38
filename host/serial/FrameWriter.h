#pragma once

#include <cstdint>
#include <span>

namespace host {

class ByteLine;
class Clock;

enum class SendResult {
    Sent,
    Stuck, ///< the line stopped accepting bytes; unsent bytes were dropped
    Fault, ///< the line failed
};

/**
 * Sends one frame and waits until its last bit is sent, so that a following time-out measures the other side and not
 * our own transmitter.
 *
 * @param nanosecondsPerByte time of one byte on the wire
 */
SendResult sendFrame(ByteLine& line, Clock& clock, std::span<unsigned char const> bytes,
                     std::int64_t nanosecondsPerByte);

} // namespace host
