#pragma once

#include "base/Result.h"

#include <filesystem>
#include <string_view>

namespace velk {

/**
 * Writes a complete file or none. Without @p replace an existing file stays as it is, also one that appears while this
 * one is written; the failure is of the kind FileExists. Anything that is not a regular file is never replaced.
 */
base::Outcome writeWholeFile(std::filesystem::path const& file, std::string_view content, bool replace);

} // namespace velk
