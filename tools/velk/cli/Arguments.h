#pragma once

#include "tools/velk/cli/ChosenCommand.h"
#include "tools/velk/cli/WordParser.h"

namespace velk {

/** Stores the words after a command in its arguments. Throws CommandError (usage) when anything is wrong with them. */
void takeArguments(ChosenCommand const& chosen, ParsedWords const& parsed);

} // namespace velk
