#include "host/ports/TerminalSettings.h"

#include "host/ports/LineSettings.h"
#include "tests/host/Pty.h"

#include <gtest/gtest.h>

namespace hosttest {
namespace {

/** A pseudo-terminal never accepts a parity, so it can act as a port with a line that does not support parity. */
class TerminalSettings : public testing::Test {
protected:
    base::Outcome apply(int parity, bool pseudoTerminal) const {
        auto const settings = host::lineSettings(19200, parity, 8, 1);
        termios current{};
        EXPECT_TRUE(settings.ok());
        EXPECT_EQ(tcgetattr(terminal.get(), &current), 0);
        return host::applyTermios(terminal.get(), pty.path(), host::rawTermios(current, settings.value()),
                                  pseudoTerminal);
    }

    Pty pty;
    base::FileDescriptor terminal{::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
};

TEST_F(TerminalSettings, APortWithoutParityIsToldEveryTime) {
    for (int time = 0; time < 3; ++time) {
        base::Outcome const outcome = apply(1, false);
        ASSERT_FALSE(outcome.ok()) << time;
        EXPECT_EQ(outcome.failure().text,
                  "the serial port " + pty.path() + " does not take over the parity that is configured");
    }
}

TEST_F(TerminalSettings, APseudoTerminalIsExcusedEveryTime) {
    for (int time = 0; time < 3; ++time) {
        base::Outcome const outcome = apply(1, true);
        EXPECT_TRUE(outcome.ok()) << time << ": " << outcome.failure().text;
    }
}

TEST_F(TerminalSettings, WhatIsNoTerminalIsTold) {
    terminal = base::FileDescriptor(::open("/dev/null", O_RDWR | O_CLOEXEC));
    base::Outcome const outcome = host::applyTermios(terminal.get(), "/dev/null", termios{}, false);
    ASSERT_FALSE(outcome.ok());
    EXPECT_EQ(outcome.failure().text, "the serial port /dev/null cannot be set up: Inappropriate ioctl for device");
}

} // namespace
} // namespace hosttest
