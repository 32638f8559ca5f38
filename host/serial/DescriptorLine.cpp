#include "host/serial/DescriptorLine.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <poll.h>
#include <sys/ioctl.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>

namespace host {

namespace {

timespec toTimespec(std::int64_t microseconds) {
    constexpr std::int64_t kLongest = 3'600'000'000; // one hour fits every time_t
    std::int64_t const bounded = std::clamp<std::int64_t>(microseconds, 0, kLongest);
    timespec time{};
    time.tv_sec = static_cast<decltype(time.tv_sec)>(bounded / 1'000'000);
    time.tv_nsec = static_cast<decltype(time.tv_nsec)>(bounded % 1'000'000 * 1000);
    return time;
}

bool isTransient(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

Wait DescriptorLine::waitFor(short events, std::int64_t microseconds) {
    timespec const time = toTimespec(microseconds);
    std::array<pollfd, 2> watched{{{descriptor_, events, 0}, {interruption_, POLLIN, 0}}}; // -1 is never ready
    pollfd const& line = watched.front();
    int const ready = ppoll(watched.data(), watched.size(), &time, nullptr);
    if (ready < 0) {
        if (errno == EINTR) {
            return Wait::Interrupted;
        }
        error_ = errno;
        return Wait::Fault;
    }
    if (ready == 0) {
        return Wait::TimedOut;
    }
    if (watched.back().revents != 0) {
        return interrupt();
    }
    if ((line.revents & events) != 0 && (line.revents & POLLNVAL) == 0) {
        return Wait::Ready; // bytes received before a hang-up are still read
    }
    condition_ = (line.revents & POLLHUP) != 0 ? "hang-up" : "line error";
    return Wait::Fault;
}

Wait DescriptorLine::interrupt() {
    interrupted_ = true;
    condition_ = "interrupted";
    return Wait::Fault;
}

Wait DescriptorLine::waitForInput(std::int64_t microseconds) {
    return waitFor(POLLIN, microseconds);
}

Wait DescriptorLine::waitForRoom(std::int64_t microseconds) {
    return waitFor(POLLOUT, microseconds);
}

Transfer DescriptorLine::receive(std::span<unsigned char> room) {
    if (room.empty()) {
        return {};
    }
    ssize_t count = ::read(descriptor_, room.data(), room.size());
    if (count == 0) {
        // A raw terminal returns 0 both when there are no bytes and when it has disappeared; only poll can tell these
        // apart.
        if (!isReadable()) {
            return {};
        }
        count = ::read(descriptor_, room.data(), room.size());
    }
    if (count > 0) {
        return {static_cast<std::size_t>(count), false};
    }
    if (count < 0) {
        return failedTransfer(errno);
    }
    condition_ = "hang-up"; // readable without a byte: reading again would loop for ever
    return {0, true};
}

bool DescriptorLine::isReadable() const {
    pollfd line{descriptor_, POLLIN, 0};
    timespec const now{};
    return ppoll(&line, 1, &now, nullptr) > 0;
}

Transfer DescriptorLine::send(std::span<unsigned char const> bytes) {
    if (bytes.empty()) {
        return {};
    }
    ssize_t const count = ::write(descriptor_, bytes.data(), bytes.size());
    return count >= 0 ? Transfer{static_cast<std::size_t>(count), false} : failedTransfer(errno);
}

Transfer DescriptorLine::failedTransfer(int error) {
    if (isTransient(error)) {
        return {};
    }
    error_ = error;
    return {0, true};
}

std::size_t DescriptorLine::unsent() {
    int count = 0;
    return ioctl(descriptor_, TIOCOUTQ, &count) == 0 && count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool DescriptorLine::pause(std::int64_t microseconds) {
    timespec const time = toTimespec(microseconds);
    pollfd interruption{interruption_, POLLIN, 0};
    ppoll(&interruption, 1, &time, nullptr); // interrupted by a signal: the caller recalculates the time
    return interruption.revents == 0 || interrupt() != Wait::Fault;
}

bool DescriptorLine::drain() {
    while (tcdrain(descriptor_) != 0) {
        if (errno != EINTR) {
            error_ = errno;
            return false;
        }
    }
    return true;
}

void DescriptorLine::dropUnsent() {
    tcflush(descriptor_, TCOFLUSH);
}

std::string DescriptorLine::faultText() const {
    return error_ != 0 ? std::generic_category().message(error_) : condition_;
}

} // namespace host
