#pragma once

#include "plc/files/TomlTable.h"
#include "plc/station/Faults.h"

namespace plc {

/// Reads a rule of misbehaviour; the caller finishes the table.
[[nodiscard]] FaultRule readFault(TomlTable& table);

} // namespace plc
