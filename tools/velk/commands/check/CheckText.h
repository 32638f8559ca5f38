#pragma once

#include "tools/velk/commands/check/CheckReport.h"

#include <cstddef>
#include <string>

namespace velk {

class Terminal;

/** "the port opens             ": as wide as the longest of them. */
std::string stepLabel(CheckStep step);

/** A line for a step, in the terminal's colours. */
std::string stepLine(StepReport const& step, Terminal const& terminal);

/** The last frames and the most likely causes, in this many columns; empty for a completed check. */
std::string failureText(CheckReport const& report, std::size_t columns);

} // namespace velk
