#pragma once

#include <cstdint>
#include <span>

namespace host {

class ByteLine;
class Clock;

enum class SendResult {
    Sent,
    Stuck, ///< the line took no more bytes for too long; what had not left was dropped
    Fault, ///< the line is dead
};

/**
 * Sends one frame and waits until its last bit has left, so that a time-out that starts afterwards measures the
 * other side and not our own transmitter.
 *
 * @param nanosecondsPerByte time of one byte on the wire
 */
SendResult sendFrame(ByteLine& line, Clock& clock, std::span<unsigned char const> bytes,
                     std::int64_t nanosecondsPerByte);

} // namespace host
