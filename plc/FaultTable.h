#pragma once

#include "plc/Faults.h"
#include "plc/TomlTable.h"

namespace plc {

/// Reads a rule of misbehaviour; the caller finishes the table.
[[nodiscard]] FaultRule readFault(TomlTable& table);

} // namespace plc
