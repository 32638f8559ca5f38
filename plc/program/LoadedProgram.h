#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/frames/Bytes.h"
#include "plc/program/Memory.h"
#include "plc/program/Program.h"
#include "plc/program/ProgramDescription.h"
#include "plc/program/VariableBehaviours.h"

namespace plc {

/// A program in a station: its variables, its memory with the initial values, its symbol file, its behaviours.
struct LoadedProgram {
    Program program;
    Memory memory;
    Bytes symbolFile{};
    VariableBehaviours behaviours;
};

/// Throws DescriptionError.
[[nodiscard]] LoadedProgram loadProgram(ProgramDescription const& description, ByteOrder order);

} // namespace plc
