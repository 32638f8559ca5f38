#include "plc/TerminalSpeed.h"

#include "plc/Descriptor.h"

#include <array>
// The kernel's own terminal settings have the speed as a number. They do not go together with <termios.h>.
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace plc {
namespace {

struct SpeedCode {
    std::uint32_t baud;
    tcflag_t code;
};

/** The speeds that have a name; a program which knows the names only shall see them. */
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

tcflag_t speedCode(std::uint32_t baud) {
    for (SpeedCode const& each : kSpeedCodes) {
        if (each.baud == baud) {
            return each.code;
        }
    }
    return BOTHER; // the number says it
}

} // namespace

std::optional<std::uint32_t> speedOf(int terminal) {
    termios2 settings{};
    if (::ioctl(terminal, TCGETS2, &settings) != 0) {
        return std::nullopt;
    }
    return settings.c_ospeed;
}

void setSpeed(int terminal, std::uint32_t baud) {
    termios2 settings{};
    if (::ioctl(terminal, TCGETS2, &settings) != 0) {
        throwSystemError("terminal speed");
    }
    constexpr unsigned kInputShift = 16;
    settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CBAUD << kInputShift);
    settings.c_cflag |= speedCode(baud) | speedCode(baud) << kInputShift;
    settings.c_ispeed = baud;
    settings.c_ospeed = baud;
    if (::ioctl(terminal, TCSETS2, &settings) != 0) {
        throwSystemError("terminal speed");
    }
}

} // namespace plc
