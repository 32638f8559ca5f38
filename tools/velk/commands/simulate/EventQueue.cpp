#include "tools/velk/commands/simulate/EventQueue.h"

#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velk::simulation {

EventQueue::EventQueue(std::size_t mostBytes, LeftOut leftOut)
    : mostBytes_(mostBytes), leftOut_(std::move(leftOut)), filled_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!filled_.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "no event can be made");
    }
}

void EventQueue::put(std::string_view line, plc::Micros time) {
    std::scoped_lock const lock(mutex_);
    if (leftOutCount_ > 0 || lines_.size() + line.size() > mostBytes_) {
        ++leftOutCount_;
        leftOutTime_ = time;
    } else {
        lines_ += line;
    }
    std::uint64_t const one = 1;
    // It can only fail when the counter is full: then the reader has already been woken.
    [[maybe_unused]] ssize_t const written = ::write(filled_.get(), &one, sizeof one);
}

std::string EventQueue::take() {
    std::scoped_lock const lock(mutex_);
    std::uint64_t ignored = 0;
    // It fails when nothing was put since the last time.
    [[maybe_unused]] ssize_t const count = ::read(filled_.get(), &ignored, sizeof ignored);
    std::string lines = std::exchange(lines_, {});
    if (leftOutCount_ > 0) {
        lines += leftOut_(std::exchange(leftOutCount_, 0), leftOutTime_);
    }
    return lines;
}

} // namespace velk::simulation
