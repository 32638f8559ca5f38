#pragma once

#include "tools/velk/usage/Command.h"

#include <span>
#include <string>

namespace velk {

/**
 * What may stand in place of the last one of the words of a command line, which may be empty: a candidate a line, with
 * a description behind a tab. Where files or folders may stand, which shells know better to complete, the only line
 * is ":files" or ":folders".
 */
std::string candidates(Command const& root, std::span<std::string const> words);

} // namespace velk
