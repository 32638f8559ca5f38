#pragma once

#include "host/serial/PortObserver.h"

namespace host {

/** The traffic of a port so far. */
struct Traffic {
    std::uint64_t bytesSent = 0;
    std::uint64_t bytesReceived = 0;
    std::uint64_t framesSent = 0;
    std::uint64_t framesReceived = 0;
    std::uint64_t exchanges = 0; ///< sent frames that were answered by a frame
    std::uint64_t timeouts = 0;
    std::uint64_t bytesDropped = 0;
    std::uint64_t faults = 0;
};

/** Counts the traffic of a port. */
class TrafficMeter final : public PortObserver {
public:
    void onFrame(PortFrame const& frame) override;
    void onTimeout(std::int64_t at) override;
    void onDropped(std::span<unsigned char const> bytes, std::int64_t at) override;
    void onFault(std::string_view reason, std::int64_t at) override;

    [[nodiscard]] Traffic const& traffic() const { return traffic_; }

private:
    Traffic traffic_;
    bool awaitsAnswer_ = false;
};

} // namespace host
