#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Walks the line step by step, or seeks the settings that the PLC answers to. */
Command checkCommand(Context& context);

} // namespace velk
