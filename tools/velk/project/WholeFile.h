#pragma once

#include "base/Result.h"

#include <filesystem>
#include <string_view>

namespace velk {

/**
 * Writes a file that is there as a whole or not at all. Without @p replace one that is there stays as it is, also one
 * that appears while this one is written; its failure is of the kind FileExists. What is there
 * and is no regular file is never replaced.
 */
base::Outcome writeWholeFile(std::filesystem::path const& file, std::string_view content, bool replace);

} // namespace velk
