#include "host/serial/FrameReader.h"

#include "host/serial/ByteLine.h"
#include "host/services/Clock.h"

#include <algorithm>

namespace host {

namespace {

void note(ReceivedFrame& frame, std::size_t received, std::int64_t now) {
    if (frame.count == 0) {
        frame.firstByteAt = now;
    }
    frame.count += received;
    frame.lastByteAt = now;
}

} // namespace

ReceivedFrame readFrame(ByteLine& line, Clock& clock, std::span<unsigned char> room, ReadTimes const& times) {
    ReceivedFrame frame;
    std::int64_t deadline = clock.microseconds() + times.firstByte;
    while (frame.count < room.size()) {
        Wait const wait = line.waitForInput(std::max<std::int64_t>(0, deadline - clock.microseconds()));
        if (wait == Wait::TimedOut) {
            break;
        }
        Transfer const transfer = wait == Wait::Ready ? line.receive(room.subspan(frame.count)) : Transfer{};
        if (wait == Wait::Fault || transfer.fault) {
            frame.fault = true;
            break;
        }
        std::int64_t const now = clock.microseconds();
        if (transfer.count > 0) {
            note(frame, transfer.count, now);
            deadline = now + times.interByte;
        } else if (now >= deadline) {
            break; // woken without a byte: do not wait again without time left
        }
    }
    return frame;
}

} // namespace host
