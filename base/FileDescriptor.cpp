#include "base/FileDescriptor.h"

#include "base/SystemError.h"

#include <unistd.h>
#include <utility>

namespace base {

FileDescriptor::~FileDescriptor() {
    close();
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

void FileDescriptor::close() {
    if (isOpen()) {
        // Linux frees the descriptor even when close() is interrupted, so it must not be closed again.
        ::close(std::exchange(descriptor_, -1));
    }
}

FileDescriptor openedOrThrow(int descriptor, std::string_view what) {
    if (descriptor < 0) {
        throwSystemError(what);
    }
    return FileDescriptor(descriptor);
}

} // namespace base
