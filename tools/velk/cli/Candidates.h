#pragma once

#include "tools/velk/usage/Command.h"

#include <span>
#include <string>

namespace velk {

/**
 * Completions of the last word of a command line, which may be empty: a candidate a line, followed by a tab and its
 * description. For files or folders, which shells complete better, the only line is ":files" or ":folders".
 */
std::string candidates(Command const& root, std::span<std::string const> words);

} // namespace velk
