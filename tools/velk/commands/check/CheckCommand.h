#pragma once

#include "tools/velk/usage/Command.h"

namespace velk {

struct Context;

/** Checks the line step by step, or finds the settings that the PLC answers to. */
Command checkCommand(Context& context);

} // namespace velk
