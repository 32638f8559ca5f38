#include "tools/velk/commands/simulate/PlcService.h"

#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace velk::simulation {

PlcService::PlcService(plc::FdServer& server) : server_(server), end_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!end_.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "no event can be made");
    }
}

PlcService::~PlcService() = default;

void PlcService::start() {
    thread_ = std::jthread([this](std::stop_token const& stop) {
        try {
            why_ = server_.run(stop);
        } catch (...) {
            problem_ = std::current_exception();
        }
        tellEnd();
    });
}

bool PlcService::isOver() const {
    pollfd end{end_.get(), POLLIN, 0};
    return ::poll(&end, 1, 0) == 1;
}

void PlcService::tellEnd() const {
    std::uint64_t const one = 1;
    // It can only fail when the counter is full: then the end is already signalled.
    [[maybe_unused]] ssize_t const written = ::write(end_.get(), &one, sizeof one);
}

plc::FdServer::End PlcService::finish() {
    if (thread_.joinable()) {
        thread_.request_stop();
        thread_.join();
    }
    if (problem_) {
        std::rethrow_exception(problem_);
    }
    return why_;
}

} // namespace velk::simulation
