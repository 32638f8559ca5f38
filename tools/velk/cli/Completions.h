#pragma once

#include "tools/velk/cli/CommandTree.h"

#include <string>

namespace velk {

/** Scripts that let a shell complete the command line, made from the command tree. */
std::string bashCompletion(CommandInfo const& tree);
std::string zshCompletion(CommandInfo const& tree);
std::string fishCompletion(CommandInfo const& tree);

} // namespace velk
