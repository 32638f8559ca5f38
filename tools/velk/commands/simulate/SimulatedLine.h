#pragma once

#include "plc/line/Line.h"
#include "tools/velk/commands/simulate/PlcOptions.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velk::simulation {

/** A timed event of a station. */
struct Happening {
    enum class Kind { ReplaceProgram, Restart };

    plc::Micros at{};
    Kind kind = Kind::Restart;
    std::size_t station = 0;
    plc::ProgramDescription program{}; ///< ReplaceProgram: the new one
};

/** The line to simulate. */
struct Plan {
    plc::LineDescription line;
    std::vector<Happening> happenings; ///< in the order of their times
};

/**
 * Combines the description and the flags; flags override the description. Throws CommandError (usage) with file and
 * line for mistakes in a file.
 *
 * For a program file alone the line is: routed framing without levels, a big-endian station with blocks of 128 bytes,
 * 19,200 bit/s, the defaults of the other commands.
 */
Plan makePlan(PlcOptions const& options);

/** "line.toml: 2 stations, routed framing, 19200 bit/s" and so on, followed by a line for each station. */
std::vector<std::string> planText(Plan const& plan, PlcOptions const& options);

} // namespace velk::simulation
