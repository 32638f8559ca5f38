#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Reads variables repeatedly and shows how they change. */
Command watchCommand(Context& context);

} // namespace velk
