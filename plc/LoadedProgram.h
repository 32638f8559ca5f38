#pragma once

#include "plc/ByteOrder.h"
#include "plc/Bytes.h"
#include "plc/Memory.h"
#include "plc/Program.h"
#include "plc/ProgramDescription.h"
#include "plc/VariableBehaviours.h"

namespace plc {

/// A program in a station: its variables, its memory with the initial values, its symbol file, what it does by itself.
struct LoadedProgram {
    Program program;
    Memory memory;
    Bytes symbolFile{};
    VariableBehaviours behaviours;
};

/// Throws DescriptionError.
[[nodiscard]] LoadedProgram loadProgram(ProgramDescription const& description, ByteOrder order);

} // namespace plc
