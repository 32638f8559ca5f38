#include "host/ports/Rs485.h"

#include <cerrno>
#include <sys/ioctl.h>

namespace host {

namespace {

bool isOn(serial_rs485 const& settings) {
    return (settings.flags & SER_RS485_ENABLED) != 0;
}

bool set(int descriptor, serial_rs485 wanted) {
    return ioctl(descriptor, TIOCSRS485, &wanted) == 0;
}

/** Whether the port is really in this mode now: a driver may accept a request without carrying it out. */
bool followed(int descriptor, bool on) {
    serial_rs485 actual{};
    return ioctl(descriptor, TIOCGRS485, &actual) == 0 && isOn(actual) == on;
}

} // namespace

serial_rs485 rs485Settings(serial_rs485 current, bool on) {
    constexpr auto kPolarity = decltype(current.flags){SER_RS485_RTS_ON_SEND | SER_RS485_RTS_AFTER_SEND};
    if (!on) {
        current.flags &= ~decltype(current.flags){SER_RS485_ENABLED};
        return current;
    }
    if ((current.flags & kPolarity) == 0) {
        current.flags |= SER_RS485_RTS_ON_SEND;
    }
    current.flags |= SER_RS485_ENABLED;
    current.flags &= ~decltype(current.flags){SER_RS485_RX_DURING_TX};
    return current;
}

base::Outcome applyRs485(int descriptor, std::string const& path, bool on) {
    serial_rs485 current{};
    bool const known = ioctl(descriptor, TIOCGRS485, &current) == 0;
    if (!on && (!known || !isOn(current))) {
        return {};
    }
    if (known && set(descriptor, rs485Settings(current, on)) && followed(descriptor, on)) {
        return {};
    }
    if (!on) {
        return base::Failure{base::FailureKind::PortSettings,
                             "the RS-485 mode of the serial port " + path + " cannot be switched off"};
    }
    return base::Failure{
        base::FailureKind::PortSettings,
        "the serial port " + path +
            " has no RS-485 mode in the kernel; with a converter that switches the direction by itself "
            "choose the mode RS-232"};
}

} // namespace host
