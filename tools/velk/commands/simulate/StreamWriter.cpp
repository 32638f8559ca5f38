#include "tools/velk/commands/simulate/StreamWriter.h"

#include "tools/velk/context/CommandError.h"

#include <climits>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velk::simulation {
namespace {

/**
 * The same pipe or terminal opened again, to write without waiting: the mode of the stream itself is shared with other
 * programs. Closed if that fails; then the stream itself is used.
 */
base::FileDescriptor openedAgain(int stream) {
    struct stat kind {};
    if (::fstat(stream, &kind) != 0 || !(S_ISFIFO(kind.st_mode) || ::isatty(stream) == 1)) {
        return {};
    }
    std::string const path = "/proc/self/fd/" + std::to_string(stream);
    return base::FileDescriptor(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

bool isOnlyBusy(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

StreamWriter::StreamWriter(int stream, OnFailure onFailure)
    : stream_(stream), onFailure_(onFailure), own_(openedAgain(stream)) {}

bool StreamWriter::write() {
    constexpr std::size_t kAtOnce = PIPE_BUF; // a writable pipe has room for this much
    bool any = false;
    while (isPending() && (own_.isOpen() || isReady(std::chrono::milliseconds(0)))) {
        std::size_t const size = std::min(kAtOnce, text_.size() - written_);
        ssize_t const count = ::write(descriptor(), text_.data() + written_, size);
        if (count < 0 && isOnlyBusy(errno)) {
            return any;
        }
        if (count < 0) {
            fail(errno);
            return any;
        }
        written_ += static_cast<std::size_t>(count);
        any = true;
    }
    if (!isPending()) {
        forget();
    }
    return any;
}

void StreamWriter::fail(int error) {
    if (onFailure_ == OnFailure::Throw) {
        throw CommandError(ExitCode::ItemNotGood,
                           "standard output cannot be written: " + std::string(std::strerror(error)));
    }
    forget();
}

void StreamWriter::forget() {
    text_.clear();
    written_ = 0;
}

std::size_t StreamWriter::finish(Patience patience) {
    using Clock = std::chrono::steady_clock;
    auto const end = Clock::now() + patience.altogether;
    auto standstill = Clock::now() + patience.standstill;
    write();
    while (isPending() && Clock::now() < std::min(end, standstill)) {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(std::min(end, standstill) - Clock::now());
        if (isReady(std::max(left, std::chrono::milliseconds(0))) && write()) {
            standstill = Clock::now() + patience.standstill;
        }
    }
    auto const rest = text_.begin() + static_cast<std::ptrdiff_t>(written_);
    return static_cast<std::size_t>(std::count(rest, text_.end(), '\n'));
}

/** Also true when writing would fail at once. */
bool StreamWriter::isReady(std::chrono::milliseconds wait) const {
    pollfd stream{descriptor(), POLLOUT, 0};
    return ::poll(&stream, 1, static_cast<int>(wait.count())) == 1;
}

} // namespace velk::simulation
