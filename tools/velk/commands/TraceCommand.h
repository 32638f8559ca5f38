#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Shows the frames of another command. */
Command traceCommand(Context& context);

} // namespace velk
