#include "base/SystemError.h"

#include <cerrno>
#include <string>
#include <system_error>

namespace base {

void throwSystemError(std::string_view what) {
    throw std::system_error(errno, std::generic_category(), std::string(what));
}

} // namespace base
