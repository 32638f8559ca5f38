#include "host/serial/TrafficMeter.h"

namespace host {

void TrafficMeter::onFrame(PortFrame const& frame) {
    if (frame.direction == FrameDirection::Sent) {
        traffic_.bytesSent += frame.bytes.size();
        ++traffic_.framesSent;
        awaitsAnswer_ = true;
        return;
    }
    traffic_.bytesReceived += frame.bytes.size();
    ++traffic_.framesReceived;
    traffic_.exchanges += awaitsAnswer_ ? 1 : 0;
    awaitsAnswer_ = false;
}

void TrafficMeter::onTimeout(std::int64_t /*at*/) {
    ++traffic_.timeouts;
    awaitsAnswer_ = false;
}

void TrafficMeter::onDropped(std::span<unsigned char const> bytes, std::int64_t /*at*/) {
    traffic_.bytesDropped += bytes.size();
}

void TrafficMeter::onFault(std::string_view /*reason*/, std::int64_t /*at*/) {
    ++traffic_.faults;
}

} // namespace host
