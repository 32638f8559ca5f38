#pragma once

#include "base/Result.h"

#include <cstdint>
#include <string>
#include <termios.h>

namespace host {

/** The settings of a serial line, in the kernel's terms. */
struct LineSettings {
    int baud = 0;             ///< bit/s
    speed_t speed = B0;       ///< the same as the kernel's constant
    tcflag_t characters = 0;  ///< data bits, parity and stop bits as bits of termios::c_cflag
    int bitsPerCharacter = 0; ///< on the wire: start, data, parity and stop bits

    [[nodiscard]] std::int64_t nanosecondsPerByte() const;
};

/**
 * The settings from ISerialPort::Open()'s numbers.
 *
 * @param baud a rate that the kernel has a constant for, 50 to 4,000,000; any other is refused
 * @param parity 0 none, 1 even, 2 odd, 3 mark
 * @param dataBits 7 or 8
 * @param stopBits 1 or 2
 */
base::Result<LineSettings> lineSettings(int baud, int parity, int dataBits, int stopBits);

/** @p current with the settings applied and every translation, echo and flow control off: 8-bit clean. */
termios rawTermios(termios current, LineSettings const& settings);

/**
 * The first setting that a terminal did not accept: tcsetattr() succeeds if at least one setting was accepted. Empty
 * when all were.
 *
 * @param pseudoTerminal the terminal is a pseudo-terminal, which has no line, so the kernel always sets 8 data bits
 * without parity
 */
std::string refusedSetting(termios const& wanted, termios const& actual, bool pseudoTerminal);

} // namespace host
