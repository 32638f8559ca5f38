#pragma once

#include "base/Result.h"

#include <linux/serial.h>
#include <string>

namespace host {

/**
 * @p current with the kernel's RS-485 mode on or off.
 *
 * The delays and the polarity of the direction signal belong to the port and are kept; a port without a polarity is set
 * to drive its signal while it sends. Sent bytes are not received back.
 */
serial_rs485 rs485Settings(serial_rs485 current, bool on);

/**
 * Makes the kernel switch the direction of an RS-485 line, or turns that off.
 *
 * Turning it on fails when the port has no such mode. Turning it off works on every port.
 */
base::Outcome applyRs485(int descriptor, std::string const& path, bool on);

} // namespace host
