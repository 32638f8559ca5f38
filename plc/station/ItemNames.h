#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/program/LoadedProgram.h"
#include "plc/station/ListRequest.h"

#include <span>
#include <string>

namespace plc {

/// The variables of a list, "PLC_PRG.Level, PLC_PRG.Mode and 12 more". Empty for an empty list.
[[nodiscard]] std::string namesOf(std::span<ListItem const> items, Program const& program);

/// The same with the values that a list has just written: "PLC_PRG.Level = 5".
[[nodiscard]] std::string valuesOf(std::span<ListItem const> items, LoadedProgram const& program, ByteOrder order);

} // namespace plc
