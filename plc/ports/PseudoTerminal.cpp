#include "plc/ports/PseudoTerminal.h"

#include "base/SystemError.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>

namespace plc {

namespace {

std::string unlockedSlave(int master) {
    std::array<char, 128> name{};
    if (::grantpt(master) != 0 || ::unlockpt(master) != 0 || ::ptsname_r(master, name.data(), name.size()) != 0) {
        base::throwSystemError("pseudo-terminal");
    }
    return name.data();
}

} // namespace

PseudoTerminal::PseudoTerminal()
    : master_(base::openedOrThrow(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "pseudo-terminal")),
      slaveName_(unlockedSlave(master_.get())) {
    // The settings remain after this slave is closed, because they belong to the pair.
    base::FileDescriptor const slave =
        base::openedOrThrow(::open(slaveName_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), slaveName_);
    makeRaw(slave.get());
}

void makeRaw(int terminal) {
    termios settings{};
    if (::tcgetattr(terminal, &settings) != 0) {
        base::throwSystemError("terminal settings");
    }
    ::cfmakeraw(&settings);
    settings.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY);
    settings.c_cflag |= CLOCAL | CREAD;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    if (::tcsetattr(terminal, TCSANOW, &settings) != 0) {
        base::throwSystemError("terminal settings");
    }
}

} // namespace plc
