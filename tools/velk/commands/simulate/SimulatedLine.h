#pragma once

#include "plc/line/Line.h"
#include "tools/velk/commands/simulate/PlcOptions.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velk::simulation {

/** Something that is done to a station when its time has come. */
struct Happening {
    enum class Kind { ReplaceProgram, Restart };

    plc::Micros at{};
    Kind kind = Kind::Restart;
    std::size_t station = 0;
    plc::ProgramDescription program{}; ///< ReplaceProgram: the one that comes
};

/** A line as it is to be played. */
struct Plan {
    plc::LineDescription line;
    std::vector<Happening> happenings; ///< in the order of their times
};

/**
 * What the description and the flags make together; flags count more. Throws CommandError (usage) with file and line
 * for what is wrong in a file.
 *
 * A program file alone gets a line of its own: routed framing without levels, a big-endian station with blocks of 128
 * bytes, 19,200 bit/s, as the other commands have it when nothing else is said.
 */
Plan makePlan(PlcOptions const& options);

/** "line.toml: 2 stations, routed framing, 19200 bit/s" and so on, a line for each station behind it. */
std::vector<std::string> planText(Plan const& plan, PlcOptions const& options);

} // namespace velk::simulation
