#pragma once

#include <string_view>

namespace base {

/** Throws std::system_error with errno and @p what. */
[[noreturn]] void throwSystemError(std::string_view what);

} // namespace base
