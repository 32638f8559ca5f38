#include "base/WholeFile.h"

#include "base/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace base {
namespace {

Failure systemFailure(int error) {
    return Failure{FailureKind::File, std::strerror(error)};
}

Failure tooLarge(std::size_t most) {
    constexpr std::size_t kMebibyte = 1024UL * 1024;
    return Failure{FailureKind::File, most % kMebibyte == 0
                                          ? "it is larger than " + std::to_string(most / kMebibyte) + " MiB"
                                          : "it is larger than " + std::to_string(most) + " bytes"};
}

/** A device has no end, and opening one may already have an effect. */
Outcome canBeRead(struct stat const& status, std::size_t most) {
    if (S_ISDIR(status.st_mode)) {
        return Failure{FailureKind::File, "it is a directory"};
    }
    if (!S_ISREG(status.st_mode) && !S_ISFIFO(status.st_mode)) {
        return Failure{FailureKind::File, "it is a device, not a file"};
    }
    if (S_ISREG(status.st_mode) && static_cast<std::size_t>(status.st_size) > most) {
        return tooLarge(most);
    }
    return {};
}

} // namespace

Result<std::string> readWholeFile(std::filesystem::path const& file, std::size_t most) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        return systemFailure(errno);
    }
    if (Outcome const readable = canBeRead(status, most); !readable.ok()) {
        return readable.failure();
    }
    FileDescriptor const descriptor(::open(file.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
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
        if (content.size() > most) { // for a file that grows meanwhile, or has no size
            return tooLarge(most);
        }
    }
}

} // namespace base
