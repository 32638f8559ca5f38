#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Simulates the PLCs of a line, until the user asks to stop or the time is over. */
Command plcCommand(Context& context);

} // namespace velk
