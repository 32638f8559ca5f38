#pragma once

#include <string_view>

namespace base {

/** Throws std::system_error with what errno says and @p what. */
[[noreturn]] void throwSystemError(std::string_view what);

} // namespace base
