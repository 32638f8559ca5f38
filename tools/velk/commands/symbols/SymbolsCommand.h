#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Lists the variables of a PLC's program. */
Command symbolsCommand(Context& context);

} // namespace velk
