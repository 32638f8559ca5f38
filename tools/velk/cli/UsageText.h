#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace velk {

/** The names of the commands of a command. */
std::vector<std::string> commandsOf(CLI::App const& app);

/** What is wrong with the words of a command line that the parser did not take, and which help tells more. */
std::string usageText(CLI::App const& app, CLI::Error const& error);

} // namespace velk
