#pragma once

#include "base/Result.h"

#include <string>
#include <termios.h>

namespace host {

/**
 * Gives a terminal its settings, and makes sure that it took them all over; the failure names the first that it did
 * not.
 *
 * @param pseudoTerminal as for refusedSetting()
 */
base::Outcome applyTermios(int descriptor, std::string const& path, termios const& wanted, bool pseudoTerminal);

} // namespace host
