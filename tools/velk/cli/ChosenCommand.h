#pragma once

#include "tools/velk/usage/Command.h"

#include <span>
#include <string>

namespace velk {

/** The command that a command line is for. */
struct ChosenCommand {
    Command const* command;
    std::string path;                   ///< how it is called: "velk config check"
    std::span<std::string const> words; ///< what stands behind it
};

/** Throws CommandError (usage) when there is no such command, and when a flag stands in front of its command. */
ChosenCommand chooseCommand(Command const& root, std::span<std::string const> words);

/** "--node" of "--node=2", "-n" of "-n2". */
std::string flagName(std::string const& word);

} // namespace velk
