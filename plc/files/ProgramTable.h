#pragma once

#include "plc/files/TomlTable.h"
#include "plc/program/ProgramDescription.h"

namespace plc {

/// Reads the program that a table describes; the caller finishes the table.
[[nodiscard]] ProgramDescription readProgramTable(TomlTable& table);

} // namespace plc
