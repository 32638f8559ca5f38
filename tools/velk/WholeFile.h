#pragma once

#include "host/Result.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace velk {

/** The content of a file of at most @p most bytes. Folders and devices are refused; a pipe is read to its end. */
host::Result<std::string> readWholeFile(std::filesystem::path const& file, std::size_t most);

} // namespace velk
