#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Prints scripts with which a shell asks this program for completions. */
Command completionsCommand(Context& context);

} // namespace velk
