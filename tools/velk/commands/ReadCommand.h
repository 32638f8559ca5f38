#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Reads variables once and shows their values. */
Command readCommand(Context& context);

} // namespace velk
