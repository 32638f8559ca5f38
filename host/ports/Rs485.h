#pragma once

#include "base/Result.h"

#include <linux/serial.h>
#include <string>

namespace host {

/**
 * @p current with the kernel's RS-485 mode on or off.
 *
 * The delays and the polarity of the direction signal are the port's own and stay; a port that has no polarity yet
 * drives its signal while it sends. Our own bytes are not received back.
 */
serial_rs485 rs485Settings(serial_rs485 current, bool on);

/**
 * Lets the kernel switch the direction of an RS-485 line, or no longer.
 *
 * On is refused when the port has no such mode. Off is fine on every port.
 */
base::Outcome applyRs485(int descriptor, std::string const& path, bool on);

} // namespace host
