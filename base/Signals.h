#pragma once

#include "base/FileDescriptor.h"

#include <array>
#include <csignal>
#include <cstdint>

namespace base {

/**
 * What the user tells the program with signals: to end (SIGINT, SIGTERM, SIGHUP), to stop (SIGTSTP, as with Ctrl-Z) and
 * to go on (SIGCONT). Whoever waits, waits here or watches a descriptor. A second SIGINT or SIGTERM ends the program at
 * once, whatever it is doing.
 *
 * One object at a time: it takes over the signals while it lives, and gives them back to their handlers from before. A
 * signal that the program was started without, by nohup for example, stays ignored.
 */
class Signals {
public:
    /** Throws std::logic_error when there is another object, std::system_error when the system has no events left. */
    Signals();
    ~Signals();
    Signals(Signals const&) = delete;
    Signals& operator=(Signals const&) = delete;

    /** Whether the end is asked for. */
    [[nodiscard]] bool requested() const;

    /** Readable from the moment of the request on. */
    [[nodiscard]] int descriptor() const { return end_.get(); }

    /** As if the user had asked for the end; safe in a signal handler and from other threads. */
    void request();

    /** Lets time pass. False as soon as the end is asked for. */
    bool pause(std::int64_t microseconds);

    /** Waits until @p input can be read or has ended. False as soon as the end is asked for. */
    bool waitForInput(int input);

    /** The same for a bounded time; true also when the time is over. */
    bool waitForInput(int input, std::int64_t microseconds);

    /** The same as waitForInput(), but true also when the program was stopped and goes on. */
    bool waitForInputOrResumption(int input);

    /** Whether the program was stopped and goes on since the last call. */
    bool takeResumption();

    /** How long the program was stopped in all, while there was an object. */
    [[nodiscard]] static std::int64_t stoppedMicroseconds();

private:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGCONT};

    FileDescriptor end_;
    FileDescriptor resumption_;
    std::array<struct sigaction, kSignals.size()> before_{};
};

} // namespace base
