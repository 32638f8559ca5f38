#include "host/ports/PortLock.h"

#include <sys/file.h>
#include <sys/ioctl.h>
#include <utility>

namespace host {

std::optional<PortLock> PortLock::take(int descriptor, bool exclusiveMode) {
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        return std::nullopt;
    }
    if (exclusiveMode && ioctl(descriptor, TIOCEXCL) != 0) {
        return std::nullopt;
    }
    return PortLock(exclusiveMode ? descriptor : -1);
}

PortLock::~PortLock() {
    if (exclusiveDescriptor_ >= 0) {
        ioctl(exclusiveDescriptor_, TIOCNXCL);
    }
}

PortLock::PortLock(PortLock&& other) noexcept : exclusiveDescriptor_(std::exchange(other.exclusiveDescriptor_, -1)) {}

} // namespace host
