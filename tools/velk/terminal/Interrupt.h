#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>

namespace velk {

/**
 * The user's wish to end: SIGINT, SIGTERM and SIGHUP. Whoever waits, waits here or watches the descriptor.
 *
 * One object at a time; it takes over the signals while it lives.
 */
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(Interrupt const&) = delete;
    Interrupt& operator=(Interrupt const&) = delete;

    [[nodiscard]] bool requested() const;

    /** Readable from the moment of the request on. */
    [[nodiscard]] int descriptor() const { return event_.get(); }

    /** As if the user had asked for the end; safe in a signal handler and from other threads. */
    void request();

    /** Lets time pass. False as soon as the end is asked for. */
    bool pause(std::int64_t microseconds);

    /** Waits until @p input can be read or has ended. False as soon as the end is asked for. */
    bool waitForInput(int input);

    /** The same for two inputs, of which one is enough. */
    bool waitForEither(int one, int other);

    /** The same for a bounded time; true also when the time is over. */
    bool waitForInput(int input, std::int64_t microseconds);

private:
    base::FileDescriptor event_;
};

} // namespace velk
