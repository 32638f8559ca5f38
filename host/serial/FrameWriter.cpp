#include "host/serial/FrameWriter.h"

#include "host/serial/ByteLine.h"
#include "host/services/Clock.h"

#include <algorithm>
#include <cstddef>

namespace host {

namespace {

constexpr std::int64_t kGrace = 1'000'000;   ///< microseconds added to twice the time on the wire
constexpr std::int64_t kShortestPause = 200; ///< microseconds; a shorter one only costs wake-ups

std::int64_t wireTime(std::size_t bytes, std::int64_t nanosecondsPerByte) {
    return static_cast<std::int64_t>(bytes) * nanosecondsPerByte / 1000;
}

SendResult handOver(ByteLine& line, Clock& clock, std::span<unsigned char const> bytes, std::int64_t deadline) {
    while (!bytes.empty()) {
        Transfer const transfer = line.send(bytes);
        if (transfer.fault) {
            return SendResult::Fault;
        }
        bytes = bytes.subspan(std::min(transfer.count, bytes.size()));
        if (bytes.empty()) {
            break;
        }
        std::int64_t const left = deadline - clock.microseconds();
        if (left <= 0) {
            return SendResult::Stuck;
        }
        if (line.waitForRoom(left) == Wait::Fault) {
            return SendResult::Fault;
        }
    }
    return SendResult::Sent;
}

SendResult waitUntilSent(ByteLine& line, Clock& clock, std::int64_t nanosecondsPerByte, std::int64_t deadline) {
    // Counting what is left keeps this bounded; waiting for an empty transmitter alone could hang for ever.
    for (std::size_t unsent = line.unsent(); unsent > 0; unsent = line.unsent()) {
        std::int64_t const left = deadline - clock.microseconds();
        if (left <= 0) {
            return SendResult::Stuck;
        }
        if (!line.pause(std::min(left, std::max(kShortestPause, wireTime(unsent, nanosecondsPerByte))))) {
            return SendResult::Fault;
        }
    }
    return line.drain() ? SendResult::Sent : SendResult::Fault;
}

} // namespace

SendResult sendFrame(ByteLine& line, Clock& clock, std::span<unsigned char const> bytes,
                     std::int64_t nanosecondsPerByte) {
    std::int64_t const deadline = clock.microseconds() + 2 * wireTime(bytes.size(), nanosecondsPerByte) + kGrace;
    SendResult result = handOver(line, clock, bytes, deadline);
    if (result == SendResult::Sent) {
        result = waitUntilSent(line, clock, nanosecondsPerByte, deadline);
    }
    if (result == SendResult::Stuck) {
        line.dropUnsent(); // half a frame must not go out later, before the next one
    }
    return result;
}

} // namespace host
