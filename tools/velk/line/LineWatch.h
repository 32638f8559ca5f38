#pragma once

#include "host/serial/PortObserver.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace velk {

/** The latest events on the line, for failures whose cause the driver does not report. */
class LineWatch final : public host::PortObserver {
public:
    /** @param routingHeaderLength bytes before every frame: 19 where frames are routed through couplers, else 0 */
    explicit LineWatch(std::size_t routingHeaderLength) : routingHeaderLength_(routingHeaderLength) {}

    void onFrame(host::PortFrame const& frame) override {
        if (frame.direction == host::FrameDirection::Received) {
            ++received_;
            silent_ = false;
            couplerStatus_ = statusOf(frame.bytes);
        }
    }
    void onTimeout(std::int64_t /*at*/) override { silent_ = true; }

    /** The last wait for the PLC timed out. */
    [[nodiscard]] bool silent() const { return silent_; }

    /** Not 0 when a coupler sent the last frame back instead of passing it on. */
    [[nodiscard]] int couplerStatus() const { return couplerStatus_; }

    /** Received frames of any kind. */
    [[nodiscard]] std::uint64_t received() const { return received_; }

private:
    /** The status of a routing header is in its last byte but one. */
    [[nodiscard]] int statusOf(std::span<unsigned char const> bytes) const {
        return routingHeaderLength_ > 1 && bytes.size() >= routingHeaderLength_ ? bytes[routingHeaderLength_ - 2] : 0;
    }

    std::size_t routingHeaderLength_;
    int couplerStatus_ = 0;
    std::uint64_t received_ = 0;
    bool silent_ = false;
};

} // namespace velk
