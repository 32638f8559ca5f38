#pragma once

#include "tools/velk/usage/Command.h"

#include <span>
#include <string>

namespace velk {

/** The command that a command line names. */
struct ChosenCommand {
    Command const* command;
    std::string path;                   ///< how it is called: "velk config check"
    std::span<std::string const> words; ///< what follows it
};

/** Throws CommandError (usage) when there is no such command, and when a flag is before its command. */
ChosenCommand chooseCommand(Command const& root, std::span<std::string const> words);

/** "--node" of "--node=2", "-n" of "-n2". */
std::string flagName(std::string const& word);

} // namespace velk
