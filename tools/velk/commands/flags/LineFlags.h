#pragma once

#include "tools/velk/usage/Command.h"

#include <string>
#include <vector>

namespace velk {

struct Context;

/** The flags of the line, of the station and of the couplers, with the project file (-f) and -q. */
std::vector<Argument> settingFlags(Context& context);

/** The flags of every command that uses a line: settingFlags() and those of the trace. */
std::vector<Argument> lineFlags(Context& context);

/** A command's own flags, followed by lineFlags(). */
std::vector<Argument> withLineFlags(std::vector<Argument> own, Context& context);

/** What is wrong with a line speed; empty when serial ports support it. */
std::string baudFault(std::string const& text);

} // namespace velk
