#pragma once

#include "tools/velk/context/ExitCode.h"

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace velk {

struct Context;

struct WriteOptions {
    std::vector<std::string> assignments; ///< NAME=VALUE
    bool yes = false;
    bool json = false;
};

/** NAME and VALUE of a word of the command line. */
struct Assignment {
    std::string name;
    std::string value;
};

/** Takes NAME=VALUE apart at the first "=". Throws CommandError (usage). */
Assignment parseAssignment(std::string_view word);

/** Writes values, after a look at the old ones and a question, and reads back what the PLC has then. */
ExitCode runWrite(WriteOptions const& options, Context& context);

void addWriteCommand(CLI::App& app, Context& context);

} // namespace velk
