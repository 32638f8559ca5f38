#pragma once

#include "tools/velk/usage/Command.h"

#include <memory>

namespace velk {

struct Context;

/** velk itself with every command. The commands store their options in @p context, which must outlive them. */
std::unique_ptr<Command const> makeCommandTree(Context& context);

} // namespace velk
