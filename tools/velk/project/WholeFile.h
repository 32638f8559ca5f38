#pragma once

#include "base/Result.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace velk {

/** The content of a file of at most @p most bytes. Folders and devices are refused; a pipe is read to its end. */
base::Result<std::string> readWholeFile(std::filesystem::path const& file, std::size_t most);

/**
 * Writes a file that is there as a whole or not at all. Without @p replace one that is there stays as it is, also one
 * that appears while this one is written; its failure is of the kind FileExists. What is there
 * and is no regular file is never replaced.
 */
base::Outcome writeWholeFile(std::filesystem::path const& file, std::string_view content, bool replace);

} // namespace velk
