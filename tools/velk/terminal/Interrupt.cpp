#include "tools/velk/terminal/Interrupt.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace velk {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
constexpr std::int64_t kForEver = -1;

std::atomic<int> signalledDescriptor{-1};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler uses it");

void raiseEvent(int descriptor) {
    std::uint64_t const one = 1;
    // Nothing can be done about a failure: the counter is full, so the event is raised already.
    [[maybe_unused]] ssize_t const written = write(descriptor, &one, sizeof one);
}

extern "C" void onSignal(int /*signal*/) {
    int const error = errno;
    if (int const descriptor = signalledDescriptor.load(); descriptor >= 0) {
        raiseEvent(descriptor);
    }
    errno = error;
}

/** A signal that this program was started without, by nohup for example, stays ignored. */
void handleSignals(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    for (int const signal : kSignals) {
        struct sigaction before {};
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
            sigaction(signal, &action, nullptr);
        }
    }
}

std::int64_t now() {
    using std::chrono::duration_cast;
    using std::chrono::microseconds;
    return duration_cast<microseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

int toMilliseconds(std::int64_t microseconds) {
    constexpr std::int64_t kLongest = 1'000'000'000;
    constexpr std::int64_t kMicrosecondsPerMillisecond = 1000;
    return static_cast<int>(std::min(kLongest, microseconds + kMicrosecondsPerMillisecond - 1) /
                            kMicrosecondsPerMillisecond);
}

struct Inputs {
    int one = -1; ///< -1: none
    int other = -1;
};

/** Waits for the event or an input. False when the event came. */
bool waitFor(int event, Inputs inputs, std::int64_t microseconds) {
    std::int64_t const end = now() + microseconds;
    while (true) {
        std::int64_t const left = microseconds == kForEver ? 0 : std::max<std::int64_t>(0, end - now());
        std::array<pollfd, 3> waiting{{{event, POLLIN, 0}, {inputs.one, POLLIN, 0}, {inputs.other, POLLIN, 0}}};
        int const ready = poll(waiting.data(), waiting.size(), microseconds == kForEver ? -1 : toMilliseconds(left));
        if (waiting[0].revents != 0) {
            return false;
        }
        if (ready > 0 || (ready == 0 && left == 0)) {
            return true;
        }
    }
}

} // namespace

Interrupt::Interrupt() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!event_.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "no event can be made");
    }
    signalledDescriptor = event_.get();
    handleSignals(onSignal);
}

Interrupt::~Interrupt() {
    handleSignals(SIG_DFL);
    signalledDescriptor = -1;
}

bool Interrupt::requested() const {
    return !waitFor(event_.get(), {}, 0);
}

void Interrupt::request() {
    raiseEvent(event_.get());
}

bool Interrupt::pause(std::int64_t microseconds) {
    return waitFor(event_.get(), {}, std::max<std::int64_t>(0, microseconds));
}

bool Interrupt::waitForInput(int input) {
    return waitFor(event_.get(), {.one = input}, kForEver);
}

bool Interrupt::waitForEither(int one, int other) {
    return waitFor(event_.get(), {.one = one, .other = other}, kForEver);
}

bool Interrupt::waitForInput(int input, std::int64_t microseconds) {
    return waitFor(event_.get(), {.one = input}, std::max<std::int64_t>(0, microseconds));
}

} // namespace velk
