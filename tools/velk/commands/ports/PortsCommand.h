#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Lists the serial ports of this machine. */
Command portsCommand(Context& context);

} // namespace velk
