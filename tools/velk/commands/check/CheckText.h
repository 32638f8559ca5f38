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

/** What was said last and the likeliest causes, in so many columns; empty for a walk that came to its end. */
std::string failureText(CheckReport const& report, std::size_t columns);

} // namespace velk
