#include "plc/ports/FdServer.h"

#include "base/SystemError.h"
#include "plc/ports/TerminalSpeed.h"
#include "plc/ports/WrongSpeed.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace plc {

namespace {

/// How often a pseudo-terminal without a client is checked: poll() returns at once while there is none.
constexpr Micros kClientLook = std::chrono::milliseconds(20);

/// The most bytes kept for a client that does not read; beyond that the oldest are lost.
constexpr std::size_t kMostUnsent = 65'536;

/// The most bytes in transit from a panel that sends faster than the line; beyond that nothing is read.
constexpr std::size_t kMostUnheard = 8'192;

void makeNonBlocking(int descriptor) {
    int const flags = ::fcntl(descriptor, F_GETFL);
    if (flags < 0 || ::fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) < 0) {
        base::throwSystemError("port");
    }
}

bool isPseudoTerminalMaster(int descriptor) {
    unsigned number = 0;
    return ::ioctl(descriptor, TIOCGPTN, &number) == 0;
}

timespec timespecOf(Micros time) {
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    timespec spec{};
    spec.tv_sec = static_cast<std::time_t>(seconds.count());
    spec.tv_nsec = static_cast<decltype(spec.tv_nsec)>((time - seconds).count() * 1000);
    return spec;
}

bool isOnlyBusy(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

FdServer::FdServer(Line& line, int descriptor, WireLikeness wire)
    : line_(line), descriptor_(descriptor), pseudoTerminal_(isPseudoTerminalMaster(descriptor)),
      wakeUp_(base::openedOrThrow(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd")),
      start_(std::chrono::steady_clock::now()), wire_(wire), input_(wire.bytesPerSecond) {
    makeNonBlocking(descriptor);
}

FdServer::End FdServer::run(std::stop_token const& stop) {
    std::stop_callback const wakeToStop(stop, [this] { wake(); });
    Port port = Port::kThere;
    while (port != Port::kGone && !stop.stop_requested()) {
        std::optional<Micros> const deadline = collectOutput();
        if (port == Port::kClientAway) {
            unsent_.clear();
        } else {
            port = writeOutput();
        }
        if (port != Port::kGone) {
            port = wait(deadline, port);
        }
    }
    return port == Port::kGone ? End::kPortGone : End::kStopped;
}

void FdServer::wake() const {
    std::uint64_t const one = 1;
    // It can only fail when the counter is full: then the server is already woken.
    static_cast<void>(::write(wakeUp_.get(), &one, sizeof one) == sizeof one);
}

Micros FdServer::now() const {
    return std::chrono::duration_cast<Micros>(std::chrono::steady_clock::now() - start_);
}

/// Takes the bytes that are due from the line and returns when to check again.
std::optional<Micros> FdServer::collectOutput() {
    std::scoped_lock const lock(mutex_);
    deliverInput(now());
    Bytes const due = heard(line_.takeOutput(now()), Direction::kToPanel);
    unsent_.insert(unsent_.end(), due.begin(), due.end());
    if (unsent_.size() > kMostUnsent) {
        unsent_.erase(unsent_.begin(), unsent_.end() - static_cast<std::ptrdiff_t>(kMostUnsent));
    }
    auto const arrival = input_.nextDue();
    auto const deadline = line_.nextDeadline();
    return arrival && deadline ? std::min(arrival, deadline) : arrival ? arrival : deadline;
}

/// Passes arrived bytes to the line. The lock must be held.
void FdServer::deliverInput(Micros now) {
    if (Bytes const bytes = input_.take(now); !bytes.empty()) {
        line_.receive(bytes, now);
    }
}

/// The bytes that one side receives from the other when the panel has set its port to a different speed.
Bytes FdServer::heard(ByteView bytes, Direction direction) const {
    std::uint32_t const panels =
        pseudoTerminal_ && wire_.baud != 0 && !bytes.empty() ? speedOf(descriptor_).value_or(wire_.baud) : wire_.baud;
    if (panels == wire_.baud || panels == 0) {
        return {bytes.begin(), bytes.end()};
    }
    return direction == Direction::kToPanel ? heardAt(panels, bytes, wire_.baud) : heardAt(wire_.baud, bytes, panels);
}

FdServer::Port FdServer::writeOutput() {
    while (!unsent_.empty()) {
        ssize_t const written = ::write(descriptor_, unsent_.data(), unsent_.size());
        if (written < 0) {
            return isOnlyBusy(errno) ? Port::kThere : hungUp();
        }
        unsent_.erase(unsent_.begin(), unsent_.begin() + written);
    }
    return Port::kThere;
}

/// Waits for bytes, for room to write, for the deadline or to be woken, and reads the bytes that have arrived.
FdServer::Port FdServer::wait(std::optional<Micros> deadline, Port port) {
    if (port == Port::kClientAway) {
        Micros const look = now() + kClientLook;
        deadline = std::min(deadline.value_or(look), look);
    }
    timespec const timeout = timespecOf(std::max(deadline.value_or(Micros{}) - now(), Micros::zero()));
    int const input = input_.size() < kMostUnheard ? POLLIN : 0;
    auto const events = static_cast<short>(unsent_.empty() ? input : input | POLLOUT);
    std::array<pollfd, 2> ports{
        {{.fd = wakeUp_.get(), .events = POLLIN, .revents = 0}, {.fd = descriptor_, .events = events, .revents = 0}}};
    // A pseudo-terminal without a client would end every wait at once, so it is checked after the wait.
    nfds_t const watched = port == Port::kClientAway ? 1 : 2;
    if (::ppoll(ports.data(), watched, deadline ? &timeout : nullptr, nullptr) < 0) {
        return errno == EINTR ? port : Port::kGone;
    }
    std::uint64_t ignored = 0;
    static_cast<void>(::read(wakeUp_.get(), &ignored, sizeof ignored) == sizeof ignored);
    if (watched == 1 && ::poll(&ports[1], 1, 0) < 0) {
        return port;
    }
    short const happened = ports[1].revents;
    if ((happened & POLLIN) != 0) {
        return readInput();
    }
    if ((happened & (POLLERR | POLLNVAL)) != 0) {
        return Port::kGone;
    }
    return (happened & POLLHUP) != 0 ? hungUp() : Port::kThere;
}

FdServer::Port FdServer::readInput() {
    std::array<std::uint8_t, 4096> bytes{};
    ssize_t const count = ::read(descriptor_, bytes.data(), bytes.size());
    if (count > 0) {
        std::scoped_lock const lock(mutex_);
        Micros const time = now();
        input_.put(heard(ByteView(bytes).first(static_cast<std::size_t>(count)), Direction::kFromPanel), time);
        deliverInput(time);
        return Port::kThere;
    }
    return count < 0 && isOnlyBusy(errno) ? Port::kThere : hungUp();
}

} // namespace plc
