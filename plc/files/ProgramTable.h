#pragma once

#include "base/TomlSection.h"
#include "plc/program/ProgramDescription.h"

namespace plc {

/// Reads the program that a table describes, and builds it as a test if there are no errors so far.
[[nodiscard]] ProgramDescription readProgramTable(base::TomlSection& table);

} // namespace plc
