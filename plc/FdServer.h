#pragma once

#include "plc/Bytes.h"
#include "plc/Line.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

namespace plc {

/**
 * Serves a line over a file descriptor: a pseudo-terminal's master side, a serial port, a socket.
 *
 * The descriptor stays the caller's; it is made non-blocking and should be raw (makeRaw()). The line's time is the
 * steady clock since the server was made. run() works in one thread; others reach the line through locked().
 */
class FdServer {
public:
    enum class End : std::uint8_t {
        kStopped, ///< the stop token asked for it
        kPortGone ///< the descriptor failed or was hung up for good
    };

    /// Throws std::system_error when the descriptor is none. The line must outlive the server.
    FdServer(Line& line, int descriptor);

    /// Serves until asked to stop. A pseudo-terminal that its client closed is served on: the next client finds it.
    End run(std::stop_token const& stop);

    /// Calls `work(line)` while the server leaves the line alone.
    template <typename Work>
    auto locked(Work&& work) {
        std::scoped_lock const lock(mutex_);
        return std::forward<Work>(work)(line_);
    }

private:
    enum class Client : std::uint8_t { kThere, kAway, kGoneForGood };

    [[nodiscard]] Micros now() const;
    [[nodiscard]] std::optional<Micros> collectOutput();
    [[nodiscard]] Client wait(int wakeUp, std::optional<Micros> deadline);
    [[nodiscard]] Client readInput();
    [[nodiscard]] Client writeOutput();
    [[nodiscard]] Client hungUp() const;

    Line& line_;
    int descriptor_;
    bool pseudoTerminal_;
    std::mutex mutex_;
    std::chrono::steady_clock::time_point start_;
    Bytes unsent_;
};

} // namespace plc
