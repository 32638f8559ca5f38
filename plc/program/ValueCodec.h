#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/program/Memory.h"
#include "plc/program/Program.h"
#include "plc/program/Value.h"

namespace plc {

/// Writes a value to its place. Throws std::invalid_argument when the place is not an elementary variable with memory,
/// or when the value does not fit the type.
void writeValue(Memory& memory, Place const& place, Value const& value, ByteOrder order);

/// Reads the value at a place: bool for BOOL and BIT, a signed or unsigned number, a double, a text. Throws as
/// writeValue() does.
[[nodiscard]] Value readValue(Memory const& memory, Place const& place, ByteOrder order);

} // namespace plc
