#pragma once

#include "host/Result.h"

#include <string>
#include <termios.h>

namespace host {

/**
 * Gives a terminal its settings, and makes sure that it took them all over; the failure names the first that it did
 * not.
 *
 * @param pseudoTerminal as for refusedSetting()
 */
Outcome applyTermios(int descriptor, std::string const& path, termios const& wanted, bool pseudoTerminal);

} // namespace host
