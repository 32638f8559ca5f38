#pragma once

#include "tools/velk/usage/Command.h"

#include <string>

namespace velk {

/** Help of a command: usage, words, commands, flags by group; 80 columns. */
std::string helpText(Command const& command, std::string const& path);

} // namespace velk
