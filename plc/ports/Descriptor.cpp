#include "plc/ports/Descriptor.h"

#include <cerrno>
#include <string>
#include <system_error>
#include <unistd.h>

namespace plc {

Descriptor::Descriptor(int descriptor, std::string_view what) : descriptor_(descriptor) {
    if (descriptor < 0) {
        throwSystemError(what);
    }
}

Descriptor::~Descriptor() {
    ::close(descriptor_);
}

void throwSystemError(std::string_view what) {
    throw std::system_error(errno, std::generic_category(), std::string(what));
}

} // namespace plc
