#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Prints scripts that let a shell ask this program for what may stand on its command line. */
Command completionsCommand(Context& context);

} // namespace velk
