#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Writes a commented project file from the flags; asks on a terminal for settings not given as flags. */
Command initCommand(Context& context);

} // namespace velk
