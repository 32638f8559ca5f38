#pragma once

#include "tools/velk/usage/Command.h"

#include <string>
#include <string_view>
#include <vector>

namespace velk {

/** @p text so that the manual's formatter takes no sign of it for its own. */
std::string manText(std::string_view text);

/** Flags as entries of a manual page. */
std::string manOptions(std::vector<Argument> const& flags);

/** All commands below another; those of their flags that are among @p common are explained elsewhere. */
std::string manCommands(Command const& root, std::vector<Argument> const& common);

/**
 * Fills a template: @COMMANDS@, @COMMON_OPTIONS@, @VERSION@ and the driver's own settings such as @BAUD@, each
 * wherever it stands. Anything else between two "@" stays.
 */
std::string fillManual(std::string text, Command const& root, std::vector<Argument> const& common,
                       std::string const& version);

} // namespace velk
