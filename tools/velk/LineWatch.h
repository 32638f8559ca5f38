#pragma once

#include "host/PortObserver.h"

#include <cstdint>

namespace velk {

/** What happened on the line last, for failures whose reason the driver puts into other words. */
class LineWatch final : public host::PortObserver {
public:
    void onFrame(host::PortFrame const& frame) override {
        if (frame.direction == host::FrameDirection::Received) {
            ++received_;
            silent_ = false;
        }
    }
    void onTimeout(std::int64_t /*at*/) override { silent_ = true; }

    /** The last wait for the PLC was in vain. */
    [[nodiscard]] bool silent() const { return silent_; }

    /** Frames that came, of whatever kind. */
    [[nodiscard]] std::uint64_t received() const { return received_; }

private:
    std::uint64_t received_ = 0;
    bool silent_ = false;
};

} // namespace velk
