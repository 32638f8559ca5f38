#pragma once

#include "plc/ProgramDescription.h"
#include "plc/TomlTable.h"

namespace plc {

/// Reads the program that a table describes; the caller finishes the table.
[[nodiscard]] ProgramDescription readProgramTable(TomlTable& table);

} // namespace plc
