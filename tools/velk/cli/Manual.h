#pragma once

#include "tools/velk/cli/CommandTree.h"

#include <string>
#include <string_view>

namespace velk {

/** @p text so that the manual's formatter takes no sign of it for its own. */
std::string manText(std::string_view text);

/** The sections COMMANDS and OPTIONS of a manual page, made from the command tree. */
std::string manCommands(CommandInfo const& tree);
std::string manCommonOptions(CommandInfo const& tree);

/**
 * Fills a template: @COMMANDS@, @COMMON_OPTIONS@, @VERSION@ and the driver's own settings such as @BAUD@, each
 * wherever it stands. Anything else between two "@" stays.
 */
std::string fillManual(std::string text, CommandInfo const& tree, std::string const& version);

} // namespace velk
