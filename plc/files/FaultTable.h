#pragma once

#include "base/TomlSection.h"
#include "plc/station/Faults.h"

namespace plc {

/// Reads a fault rule.
[[nodiscard]] FaultRule readFault(base::TomlSection& table);

} // namespace plc
