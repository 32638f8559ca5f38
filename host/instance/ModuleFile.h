#pragma once

#include "base/Result.h"

#include <filesystem>

namespace host {

/**
 * Where the driver module is: $VELK_MODULE when that is set, else where the installed or the built tree has it,
 * seen from the running program.
 */
base::Result<std::filesystem::path> findModule();

} // namespace host
