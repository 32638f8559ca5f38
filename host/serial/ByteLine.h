#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace host {

/** How a wait for a line ended. */
enum class Wait {
    Ready,
    TimedOut,
    Interrupted, ///< by a signal, before the time was over
    Fault,       ///< the line failed: see ByteLine::faultText()
};

/** The bytes a line moved without waiting. */
struct Transfer {
    std::size_t count = 0; ///< 0 without a fault: nothing to receive, or no room to send
    bool fault = false;    ///< the line failed: see ByteLine::faultText()
};

/**
 * The few operations of a byte line that framing needs, so that framing can be tested without a kernel and without real
 * time. Only the waits block, and no longer than the given time; drain() blocks until the transmitter has sent its last
 * few bytes.
 */
class ByteLine {
public:
    virtual ~ByteLine() = default;

    virtual Wait waitForInput(std::int64_t microseconds) = 0;
    virtual Wait waitForRoom(std::int64_t microseconds) = 0;
    virtual Transfer receive(std::span<unsigned char> room) = 0;
    virtual Transfer send(std::span<unsigned char const> bytes) = 0;

    /** Bytes accepted for sending but not sent yet. */
    virtual std::size_t unsent() = 0;

    /** Waits for @p microseconds. False: the line failed. */
    virtual bool pause(std::int64_t microseconds) = 0;

    /** Waits until the transmitter is empty. False: the line failed. */
    virtual bool drain() = 0;

    /** Drops the bytes that are not sent yet. */
    virtual void dropUnsent() = 0;

    /** Why the line failed, in a few words. */
    [[nodiscard]] virtual std::string faultText() const = 0;

protected:
    ByteLine() = default;
    ByteLine(ByteLine const&) = default;
    ByteLine& operator=(ByteLine const&) = default;
};

} // namespace host
