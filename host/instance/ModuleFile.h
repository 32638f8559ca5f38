#pragma once

#include "base/Result.h"

#include <filesystem>

namespace host {

/**
 * The path of the driver module: $VELK_MODULE when that is set, else its place in the installed or the built tree,
 * relative to the running program.
 */
base::Result<std::filesystem::path> findModule();

} // namespace host
