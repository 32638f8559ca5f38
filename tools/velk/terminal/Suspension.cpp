#include "tools/velk/terminal/Suspension.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>

namespace velk {
namespace {

std::atomic<std::int64_t> stoppedMicroseconds{0};
static_assert(std::atomic<std::int64_t>::is_always_lock_free, "a signal handler uses it");

std::int64_t now() {
    using std::chrono::duration_cast;
    using std::chrono::microseconds;
    return duration_cast<microseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void handleStop(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART | SA_RESETHAND | SA_NODEFER; // within the handler the signal does what it always does
    sigemptyset(&action.sa_mask);
    sigaction(SIGTSTP, &action, nullptr);
}

extern "C" void onStop(int signal) {
    int const error = errno;
    std::int64_t const began = now();
    static_cast<void>(raise(signal)); // stops here
    stoppedMicroseconds += now() - began;
    handleStop(onStop);
    errno = error;
}

/** A program that was started with the signal ignored is not to be stopped. */
bool isIgnored() {
    struct sigaction before {};
    return sigaction(SIGTSTP, nullptr, &before) != 0 || before.sa_handler == SIG_IGN;
}

} // namespace

Suspension::Suspension() {
    if (!isIgnored()) {
        handleStop(onStop);
    }
}

Suspension::~Suspension() {
    if (!isIgnored()) {
        handleStop(SIG_DFL);
    }
}

std::int64_t Suspension::microseconds() {
    return stoppedMicroseconds;
}

} // namespace velk
