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

/// Makes a pseudo-terminal behave like a serial line. Real serial ports behave so by themselves.
struct WireLikeness {
    std::uint32_t bytesPerSecond = 0; ///< the pace of the bytes from the panel; 0: they arrive at once
    std::uint32_t baud =
        0; ///< a panel that sets its port to another speed sends and receives garbage; 0: any speed works
};

/**
 * Serves a line over a file descriptor: a pseudo-terminal's master side or a serial port.
 *
 * The caller keeps the descriptor; it is made non-blocking and should be raw (makeRaw()). The line's time is the steady
 * clock since the server was created. run() works in one thread; other threads use the line through locked().
 */
class FdServer {
public:
    enum class End : std::uint8_t {
        kStopped, ///< the stop token asked for it
        kPortGone ///< the descriptor failed or was hung up permanently
    };

    /// Throws std::system_error when the descriptor is invalid. The line must outlive the server.
    FdServer(Line& line, int descriptor, WireLikeness wire = {});

    /// Serves until asked to stop. When its client closes a pseudo-terminal, serving continues for the next client.
    /// Bytes sent while there is no client are lost, as on a line without a receiver.
    End run(std::stop_token const& stop);

    /// Calls `work(line)` while the server does not use the line. Must not be called from an observer or a behaviour.
    template <typename Work>
    auto locked(Work&& work) {
        Waker const waker(*this);
        std::scoped_lock const lock(mutex_);
        return std::forward<Work>(work)(line_);
    }

private:
    enum class Port : std::uint8_t { kThere, kClientAway, kGone };

    /// Its destructor wakes the server, so that it checks the line again.
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
