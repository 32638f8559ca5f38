#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Plays the PLCs of a line, until the user wants the end or the time is over. */
Command plcCommand(Context& context);

} // namespace velk
