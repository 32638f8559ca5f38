#pragma once

#include "base/TomlSection.h"
#include "plc/program/ProgramDescription.h"

namespace plc {

/// Reads the program that a table describes, and tries it out when nothing is wrong so far.
[[nodiscard]] ProgramDescription readProgramTable(base::TomlSection& table);

} // namespace plc
