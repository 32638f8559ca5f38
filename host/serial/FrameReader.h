#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace host {

class ByteLine;
class Clock;

/** How long to wait, in microseconds. */
struct ReadTimes {
    std::int64_t firstByte = 0; ///< for the first byte of the frame
    std::int64_t interByte = 0; ///< the silence that ends the frame
};

/** A received frame, or a time-out (no bytes), or a fault. */
struct ReceivedFrame {
    std::size_t count = 0; ///< bytes at the start of the room; may be above 0 with a fault
    bool fault = false;
    std::int64_t firstByteAt = 0; ///< microseconds; only when count is above 0
    std::int64_t lastByteAt = 0;
};

/**
 * Receives one frame: waits for a first byte, then collects until the line is silent or @p room is full.
 *
 * Waits no longer than the given times: an interrupted wait continues with the remaining time. Bytes already received
 * are taken even when the time is over, so a time of 0 takes only those.
 */
ReceivedFrame readFrame(ByteLine& line, Clock& clock, std::span<unsigned char> room, ReadTimes const& times);

} // namespace host
