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

/** Takes NAME=VALUE apart at the first "=". Throws CommandError (usage). */
Assignment parseAssignment(std::string_view word);

/** Writes values, after a look at the old ones and a question, and reads back what the PLC has then. */
Command writeCommand(Context& context);

} // namespace velk
