#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Writes a commented project file from the flags; asks on a terminal for what they leave out. */
Command initCommand(Context& context);

} // namespace velk
