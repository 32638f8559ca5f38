#pragma once

#include "base/FileDescriptor.h"
#include "plc/frames/Bytes.h"
#include "plc/line/Line.h"
#include "plc/ports/InputDelay.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

namespace plc {

/// What makes a pseudo-terminal like a serial line. Serial ports have all of it themselves.
struct WireLikeness {
    std::uint32_t bytesPerSecond = 0; ///< the pace of the bytes from the panel; 0: they are there at once
    std::uint32_t baud =
        0; ///< a panel that sets its port to another speed says and hears garbage; 0: any speed will do
};

/**
 * Serves a line over a file descriptor: a pseudo-terminal's master side or a serial port.
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
    FdServer(Line& line, int descriptor, WireLikeness wire = {});

    /// Serves until asked to stop. A pseudo-terminal that its client closed is served on: the next client finds it.
    /// What is sent while there is no client is lost, as on a line that nobody listens to.
    End run(std::stop_token const& stop);

    /// Calls `work(line)` while the server leaves the line alone. Not from within an observer or a behaviour.
    template <typename Work>
    auto locked(Work&& work) {
        Waker const waker(*this);
        std::scoped_lock const lock(mutex_);
        return std::forward<Work>(work)(line_);
    }

private:
    enum class Port : std::uint8_t { kThere, kClientAway, kGone };

    /// Wakes the server at its end, so that it looks at the line again.
    class Waker {
    public:
        explicit Waker(FdServer& server) : server_(server) {}
        Waker(Waker const&) = delete;
        Waker& operator=(Waker const&) = delete;
        ~Waker() { server_.wake(); }

    private:
        FdServer& server_;
    };

    void deliverInput(Micros now);
    [[nodiscard]] Bytes heard(ByteView bytes, Direction direction) const;
    void wake() const;
    [[nodiscard]] Micros now() const;
    [[nodiscard]] std::optional<Micros> collectOutput();
    [[nodiscard]] Port writeOutput();
    [[nodiscard]] Port wait(std::optional<Micros> deadline, Port port);
    [[nodiscard]] Port readInput();
    [[nodiscard]] Port hungUp() const { return pseudoTerminal_ ? Port::kClientAway : Port::kGone; }

    Line& line_;
    int descriptor_;
    bool pseudoTerminal_; ///< the descriptor is the master of one: its clients come and go
    base::FileDescriptor wakeUp_;
    std::mutex mutex_;
    std::chrono::steady_clock::time_point start_;
    WireLikeness wire_;
    InputDelay input_;
    Bytes unsent_;
};

} // namespace plc
