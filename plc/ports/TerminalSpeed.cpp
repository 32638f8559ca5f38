#include "plc/ports/TerminalSpeed.h"

#include "base/SystemError.h"

#include <array>
// The kernel's own terminal settings have the speed as a number. They cannot be used together with <termios.h>.
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace plc {
namespace {

struct SpeedCode {
    std::uint32_t baud;
    tcflag_t code;
};

/** The speeds that have a name, for programs that know only the names. */
constexpr std::array<SpeedCode, 10> kSpeedCodes{{{300, B300},
                                                 {600, B600},
                                                 {1'200, B1200},
                                                 {2'400, B2400},
                                                 {4'800, B4800},
                                                 {9'600, B9600},
                                                 {19'200, B19200},
                                                 {38'400, B38400},
                                                 {57'600, B57600},
                                                 {115'200, B115200}}};

std::optional<tcflag_t> speedCode(std::uint32_t baud) {
    for (SpeedCode const& each : kSpeedCodes) {
        if (each.baud == baud) {
            return each.code;
        }
    }
    return std::nullopt;
}

std::optional<std::uint32_t> speedNamed(tcflag_t code) {
    for (SpeedCode const& each : kSpeedCodes) {
        if (each.code == code) {
            return each.baud;
        }
    }
    return std::nullopt;
}

/** The flags with a speed for both directions. */
tcflag_t withSpeed(tcflag_t flags, tcflag_t code) {
    constexpr unsigned kInputShift = 16;
    flags &= ~static_cast<tcflag_t>(CBAUD | CBAUD << kInputShift);
    return flags | code | code << kInputShift;
}

bool setNumber(int terminal, std::uint32_t baud) {
    termios2 settings{};
    if (::ioctl(terminal, TCGETS2, &settings) != 0) {
        return false;
    }
    settings.c_cflag = withSpeed(settings.c_cflag, speedCode(baud).value_or(BOTHER)); // BOTHER: see c_ospeed
    settings.c_ispeed = baud;
    settings.c_ospeed = baud;
    return ::ioctl(terminal, TCSETS2, &settings) == 0;
}

/** For emulated systems, which know only the named speeds. */
bool setName(int terminal, std::uint32_t baud) {
    std::optional<tcflag_t> const code = speedCode(baud);
    termios settings{};
    if (!code || ::ioctl(terminal, TCGETS, &settings) != 0) {
        return false;
    }
    settings.c_cflag = withSpeed(settings.c_cflag, *code);
    return ::ioctl(terminal, TCSETS, &settings) == 0;
}

} // namespace

std::optional<std::uint32_t> speedOf(int terminal) {
    termios2 settings{};
    if (::ioctl(terminal, TCGETS2, &settings) == 0) {
        return settings.c_ospeed;
    }
    termios named{};
    return ::ioctl(terminal, TCGETS, &named) == 0 ? speedNamed(named.c_cflag & CBAUD) : std::nullopt;
}

void setSpeed(int terminal, std::uint32_t baud) {
    if (!setNumber(terminal, baud) && !setName(terminal, baud)) {
        base::throwSystemError("terminal speed");
    }
}

} // namespace plc
