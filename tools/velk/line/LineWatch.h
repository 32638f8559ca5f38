#pragma once

#include "host/serial/PortObserver.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace velk {

/** Properties of the line that a LineWatch observes. */
struct WatchedLine {
    std::size_t routingHeaderLength = 0; ///< bytes before every frame: 19 where frames are routed, else 0
    bool couplers = false;               ///< the route to a station passes couplers
};

/** The latest events on the line, for failures whose cause the driver does not report. */
class LineWatch final : public host::PortObserver {
public:
    explicit LineWatch(WatchedLine line) : line_(line) {}

    void onFrame(host::PortFrame const& frame) override {
        if (frame.direction == host::FrameDirection::Received) {
            ++received_;
            silent_ = false;
            judge(frame.bytes);
        }
    }
    void onTimeout(std::int64_t /*at*/) override { silent_ = true; }

    /** The last wait for the PLC timed out. */
    [[nodiscard]] bool silent() const { return silent_; }

    /** Not 0 when a coupler sent the last frame back instead of passing it on. */
    [[nodiscard]] int couplerStatus() const { return couplerStatus_; }

    /** Number of the last received bytes if they are not a frame, but the driver takes them for a coupler's; else 0. */
    [[nodiscard]] std::size_t strayBytes() const { return strayBytes_; }

    /** Received frames of any kind. */
    [[nodiscard]] std::uint64_t received() const { return received_; }

private:
    /** The driver accepts any byte at the position of the status, whatever the first bytes are. */
    void judge(std::span<unsigned char const> bytes) {
        constexpr unsigned char kRoutingMark = 'O';
        std::size_t const header = line_.routingHeaderLength;
        int const status = header > 1 && bytes.size() >= header ? bytes[header - 2] : 0; // the last byte but one
        bool const ofCoupler = status != 0 && line_.couplers && bytes[0] == kRoutingMark;
        couplerStatus_ = ofCoupler ? status : 0;
        strayBytes_ = status != 0 && !ofCoupler ? bytes.size() : 0;
    }

    WatchedLine line_;
    int couplerStatus_ = 0;
    std::size_t strayBytes_ = 0;
    std::uint64_t received_ = 0;
    bool silent_ = false;
};

} // namespace velk
