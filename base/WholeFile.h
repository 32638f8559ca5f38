#pragma once

#include "base/Result.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace base {

/** The content of a file of at most @p most bytes. Folders and devices are refused; a pipe is read to its end. */
Result<std::string> readWholeFile(std::filesystem::path const& file, std::size_t most);

} // namespace base
