#include "base/Signals.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <span>
#include <stdexcept>
#include <sys/eventfd.h>

namespace base {
namespace {

constexpr std::int64_t kForEver = -1;

// Used by the signal handlers.
std::atomic<int> endDescriptor{-1};
std::atomic<int> resumptionDescriptor{-1};
std::atomic<bool> endSignalled{false};
std::atomic<std::int64_t> stopped{0};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "signal handlers use them");

std::int64_t now() {
    using std::chrono::duration_cast;
    using std::chrono::microseconds;
    return duration_cast<microseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void raiseEvent(int descriptor) {
    static_cast<void>(eventfd_write(descriptor, 1)); // fails when the counter is full: then the event is already set
}

void handle(int signal, void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

extern "C" void onEnd(int signal) {
    int const error = errno;
    bool const again = endSignalled.exchange(true);
    if (again && signal != SIGHUP) {
        handle(signal, SIG_DFL, 0);
        static_cast<void>(raise(signal)); // ends the program as soon as this handler returns
    }
    raiseEvent(endDescriptor);
    errno = error;
}

extern "C" void onStop(int signal) {
    int const error = errno;
    std::int64_t const began = now();
    static_cast<void>(raise(signal)); // stops here, because the handler is removed meanwhile
    stopped += now() - began;
    handle(signal, onStop, SA_RESTART | SA_RESETHAND | SA_NODEFER);
    errno = error;
}

extern "C" void onContinue(int /*signal*/) {
    int const error = errno;
    raiseEvent(resumptionDescriptor);
    errno = error;
}

void takeOver(int signal) {
    switch (signal) {
    case SIGTSTP:
        return handle(signal, onStop, SA_RESTART | SA_RESETHAND | SA_NODEFER);
    case SIGCONT:
        return handle(signal, onContinue, SA_RESTART); // an interrupted exchange on the line continues
    default:
        return handle(signal, onEnd, 0); // a waiting read() returns
    }
}

FileDescriptor makeEvent() {
    return openedOrThrow(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "no event can be made");
}

int toMilliseconds(std::int64_t microseconds) {
    constexpr std::int64_t kLongest = 1'000'000'000;
    constexpr std::int64_t kMicrosecondsPerMillisecond = 1000;
    return static_cast<int>(std::min(kLongest, microseconds + kMicrosecondsPerMillisecond - 1) /
                            kMicrosecondsPerMillisecond);
}

/** Waits for the first descriptor or one of the others; -1 means none. False when it was the first one. */
bool waitFor(std::span<pollfd> waiting, std::int64_t microseconds) {
    std::int64_t const end = now() + microseconds;
    while (true) {
        std::int64_t const left = microseconds == kForEver ? 0 : std::max<std::int64_t>(0, end - now());
        int const ready = poll(waiting.data(), waiting.size(), microseconds == kForEver ? -1 : toMilliseconds(left));
        if (ready > 0) {
            return waiting.front().revents == 0;
        }
        if (ready == 0 && left == 0) {
            return true;
        }
    }
}

} // namespace

Signals::Signals() : end_(makeEvent()), resumption_(makeEvent()) {
    int none = -1;
    if (!endDescriptor.compare_exchange_strong(none, end_.get())) {
        throw std::logic_error("the signals are taken already");
    }
    resumptionDescriptor = resumption_.get();
    endSignalled = false;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        if (sigaction(kSignals[i], nullptr, &before_[i]) == 0 && before_[i].sa_handler != SIG_IGN) {
            takeOver(kSignals[i]);
        }
    }
}

Signals::~Signals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &before_[i], nullptr);
    }
    resumptionDescriptor = -1;
    endDescriptor = -1;
}

bool Signals::requested() const {
    std::array waiting{pollfd{descriptor(), POLLIN, 0}};
    return !waitFor(waiting, 0);
}

void Signals::request() {
    raiseEvent(descriptor());
}

bool Signals::pause(std::int64_t microseconds) {
    return waitForInput(-1, microseconds);
}

bool Signals::waitForInput(int input) {
    std::array waiting{pollfd{descriptor(), POLLIN, 0}, pollfd{input, POLLIN, 0}};
    return waitFor(waiting, kForEver);
}

bool Signals::waitForInput(int input, std::int64_t microseconds) {
    std::array waiting{pollfd{descriptor(), POLLIN, 0}, pollfd{input, POLLIN, 0}};
    return waitFor(waiting, std::max<std::int64_t>(0, microseconds));
}

bool Signals::waitForInputOrResumption(int input) {
    std::array waiting{pollfd{descriptor(), POLLIN, 0}, pollfd{input, POLLIN, 0}, pollfd{resumption_.get(), POLLIN, 0}};
    return waitFor(waiting, kForEver);
}

bool Signals::takeResumption() {
    eventfd_t count = 0;
    return eventfd_read(resumption_.get(), &count) == 0;
}

std::int64_t Signals::stoppedMicroseconds() {
    return stopped;
}

} // namespace base
