#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Passes lines to the module's own console until the input ends. */
Command consoleCommand(Context& context);

} // namespace velk
