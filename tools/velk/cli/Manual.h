#pragma once

#include "tools/velk/usage/Command.h"

#include <string>
#include <string_view>
#include <vector>

namespace velk {

/** @p text escaped for the manual's formatter. */
std::string manText(std::string_view text);

/** Flags as entries of a manual page. */
std::string manOptions(std::vector<Argument> const& flags);

/** All commands below another; flags that are among @p common are left out. */
std::string manCommands(Command const& root, std::vector<Argument> const& common);

/**
 * Fills a template: @COMMANDS@, @COMMON_OPTIONS@, @VERSION@ and the driver's own settings such as @BAUD@, each
 * wherever it occurs. Anything else between two "@" stays.
 */
std::string fillManual(std::string text, Command const& root, std::vector<Argument> const& common,
                       std::string const& version);

} // namespace velk
