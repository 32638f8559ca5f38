#pragma once

#include "host/Result.h"

#include <filesystem>

namespace tools {

/**
 * Where the driver module is: $VELK_MODULE when that is set, else where the installed or the built tree has it,
 * seen from the running program.
 */
host::Result<std::filesystem::path> findModule();

} // namespace tools
