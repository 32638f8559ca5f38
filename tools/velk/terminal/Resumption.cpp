#include "tools/velk/terminal/Resumption.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <system_error>

namespace velk {
namespace {

std::atomic<int> resumedDescriptor{-1};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler uses it");

extern "C" void onContinue(int /*signal*/) {
    int const error = errno;
    if (int const descriptor = resumedDescriptor.load(); descriptor >= 0) {
        static_cast<void>(eventfd_write(descriptor, 1)); // fails when the event is raised already
    }
    errno = error;
}

void handleContinue(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART; // an exchange on the line goes on where it was
    sigemptyset(&action.sa_mask);
    sigaction(SIGCONT, &action, nullptr);
}

} // namespace

Resumption::Resumption() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!event_.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "no event can be made");
    }
    resumedDescriptor = event_.get();
    handleContinue(onContinue);
}

Resumption::~Resumption() {
    handleContinue(SIG_DFL);
    resumedDescriptor = -1;
}

bool Resumption::take() {
    eventfd_t count = 0;
    return eventfd_read(event_.get(), &count) == 0;
}

} // namespace velk
