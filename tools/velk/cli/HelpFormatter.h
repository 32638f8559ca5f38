#pragma once

#include "tools/velk/cli/CommandTree.h"

#include <CLI/CLI.hpp>

#include <string>

namespace velk {

/** Help of a command: usage, words, flags by group, commands; 80 columns. */
std::string helpText(CommandInfo const& command, std::string const& path);

/** Lets the parser show that. */
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_help(CLI::App const* app, std::string name, CLI::AppFormatMode mode) const override;
};

} // namespace velk
