#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace host {

/** How waiting for a line ended. */
enum class Wait {
    Ready,
    TimedOut,
    Interrupted, ///< by a signal, before the time was over
    Fault,       ///< the line is dead: see ByteLine::faultText()
};

/** What a line moved at once; it never waits for more. */
struct Transfer {
    std::size_t count = 0; ///< 0 without a fault: nothing was there, or no room
    bool fault = false;    ///< the line is dead: see ByteLine::faultText()
};

/**
 * The few operations of a byte line that framing is made of, so that framing can be tried without a kernel and
 * without time passing. Nothing but the waits ever blocks, and they no longer than they are told; drain() blocks
 * for the little that a transmitter still holds.
 */
class ByteLine {
public:
    virtual ~ByteLine() = default;

    virtual Wait waitForInput(std::int64_t microseconds) = 0;
    virtual Wait waitForRoom(std::int64_t microseconds) = 0;
    virtual Transfer receive(std::span<unsigned char> room) = 0;
    virtual Transfer send(std::span<unsigned char const> bytes) = 0;

    /** Bytes handed over that have not left yet. */
    virtual std::size_t unsent() = 0;

    /** Lets @p microseconds pass. False: the line is dead. */
    virtual bool pause(std::int64_t microseconds) = 0;

    /** Waits until the transmitter is empty. False: the line is dead. */
    virtual bool drain() = 0;

    /** Forgets the bytes that have not left yet. */
    virtual void dropUnsent() = 0;

    /** Why the line is dead, in a few words. */
    [[nodiscard]] virtual std::string faultText() const = 0;

protected:
    ByteLine() = default;
    ByteLine(ByteLine const&) = default;
    ByteLine& operator=(ByteLine const&) = default;
};

} // namespace host
