#pragma once

#include "base/FileDescriptor.h"

#include <array>
#include <csignal>
#include <cstdint>

namespace base {

/**
 * The signals that end (SIGINT, SIGTERM, SIGHUP), suspend (SIGTSTP, as with Ctrl-Z) and resume (SIGCONT) the program.
 * All waiting is done here or watches descriptor(). A second SIGINT or SIGTERM ends the program at once, whatever the
 * program is doing.
 *
 * One object at a time: while it exists it handles the signals; its destructor restores the previous handlers. A signal
 * that was ignored when the program started, by nohup for example, stays ignored.
 */
class Signals {
public:
    /** Throws std::logic_error when there is another object, std::system_error when no event can be created. */
    Signals();
    ~Signals();
    Signals(Signals const&) = delete;
    Signals& operator=(Signals const&) = delete;

    /** Whether the program was asked to end. */
    [[nodiscard]] bool requested() const;

    /** Readable as soon as the program was asked to end. */
    [[nodiscard]] int descriptor() const { return end_.get(); }

    /** Asks the program to end, as a signal does; safe in a signal handler and from other threads. */
    void request();

    /** Waits for this time. False as soon as the program is asked to end. */
    bool pause(std::int64_t microseconds);

    /** Waits until @p input can be read or is at its end. False as soon as the program is asked to end. */
    bool waitForInput(int input);

    /** The same for a limited time; also true when the time is over. */
    bool waitForInput(int input, std::int64_t microseconds);

    /** The same as waitForInput(), but also true when the program was suspended and has resumed. */
    bool waitForInputOrResumption(int input);

    /** Whether the program was suspended and resumed since the last call. */
    bool takeResumption();

    /** How long the program was suspended in total, while there was an object. */
    [[nodiscard]] static std::int64_t stoppedMicroseconds();

private:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGCONT};

    FileDescriptor end_;
    FileDescriptor resumption_;
    std::array<struct sigaction, kSignals.size()> before_{};
};

} // namespace base
