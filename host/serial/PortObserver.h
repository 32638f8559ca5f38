#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace host {

enum class FrameDirection { Sent, Received };

/** A frame sent or received through a port. */
struct PortFrame {
    FrameDirection direction;
    std::span<unsigned char const> bytes; ///< valid during the call only
    std::int64_t firstByteAt;             ///< microseconds of the observing clock
    std::int64_t lastByteAt;              ///< for a sent frame: when its last bit was sent
};

/**
 * Observes the traffic of a port, for traces and progress.
 *
 * Called in the middle of an exchange with the PLC: return quickly. Exceptions are dropped. All times are microseconds
 * of the observing clock.
 */
class PortObserver {
public:
    virtual ~PortObserver() = default;

    /** A frame, as it was on the line. */
    virtual void onFrame(PortFrame const& frame) = 0;

    /** Nothing came within the time that the driver waits for a first byte. */
    virtual void onTimeout(std::int64_t /*at*/) {}

    /** Received bytes that were not expected were dropped: a late answer, or noise. */
    virtual void onDropped(std::span<unsigned char const> /*bytes*/, std::int64_t /*at*/) {}

    /** A frame that was perhaps sent only partly; how much is unknown. onFault() comes next. */
    virtual void onUnsent(std::span<unsigned char const> /*bytes*/) {}

    /** The port failed; @p reason may be empty. */
    virtual void onFault(std::string_view /*reason*/, std::int64_t /*at*/) {}

protected:
    PortObserver() = default;
    PortObserver(PortObserver const&) = default;
    PortObserver& operator=(PortObserver const&) = default;
};

} // namespace host
