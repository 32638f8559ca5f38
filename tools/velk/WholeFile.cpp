#include "tools/velk/WholeFile.h"

#include "host/FileDescriptor.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velk {
namespace {

host::Failure systemFailure(int error) {
    return host::hostFailure(std::strerror(error));
}

host::Failure tooLarge(std::size_t most) {
    constexpr std::size_t kMebibyte = 1024UL * 1024;
    return host::hostFailure(most % kMebibyte == 0 ? fmt::format("it is larger than {} MiB", most / kMebibyte)
                                                   : fmt::format("it is larger than {} bytes", most));
}

/** A device has no end, and opening one may already do something to it. */
host::Outcome canBeRead(struct stat const& status, std::size_t most) {
    if (S_ISDIR(status.st_mode)) {
        return host::hostFailure("it is a directory");
    }
    if (!S_ISREG(status.st_mode) && !S_ISFIFO(status.st_mode)) {
        return host::hostFailure("it is a device, not a file");
    }
    if (S_ISREG(status.st_mode) && static_cast<std::size_t>(status.st_size) > most) {
        return tooLarge(most);
    }
    return {};
}

} // namespace

host::Result<std::string> readWholeFile(std::filesystem::path const& file, std::size_t most) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        return systemFailure(errno);
    }
    if (host::Outcome const readable = canBeRead(status, most); !readable.ok()) {
        return readable.failure();
    }
    host::FileDescriptor const descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        return systemFailure(errno);
    }
    std::string content;
    std::array<char, 65'536> piece;
    while (true) {
        ssize_t const count = ::read(descriptor.get(), piece.data(), piece.size());
        if (count < 0) {
            return systemFailure(errno);
        }
        if (count == 0) {
            return content;
        }
        content.append(piece.data(), static_cast<std::size_t>(count));
        if (content.size() > most) { // what grows meanwhile, or has no size
            return tooLarge(most);
        }
    }
}

} // namespace velk
