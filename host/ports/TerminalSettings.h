#pragma once

#include "base/Result.h"

#include <string>
#include <termios.h>

namespace host {

/**
 * Configures a terminal and checks that it accepted all settings; the failure names the first that it did not.
 *
 * @param pseudoTerminal as for refusedSetting()
 */
base::Outcome applyTermios(int descriptor, std::string const& path, termios const& wanted, bool pseudoTerminal);

} // namespace host
