#pragma once

#include "tools/velk/usage/Command.h"

#include <string>
#include <string_view>

namespace velk {

struct Context;

/** NAME and VALUE of a word of the command line. */
struct Assignment {
    std::string name;
    std::string value;
};

/** Splits NAME=VALUE at the first "=". Throws CommandError (usage). */
Assignment parseAssignment(std::string_view word);

/** Shows the old values, asks, writes the new ones and reads them back. */
Command writeCommand(Context& context);

} // namespace velk
