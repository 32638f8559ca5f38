#include "host/serial/SerialPort.h"

#include "base/FileDescriptor.h"
#include "host/ports/PortLock.h"
#include "host/ports/PseudoTerminal.h"
#include "host/serial/DescriptorLine.h"
#include "host/serial/FrameReader.h"
#include "host/serial/PortReport.h"
#include "host/services/Clock.h"
#include "tests/host/FailureText.h"
#include "tests/host/Pty.h"
#include "tests/host/Unprivileged.h"

#include <gtest/gtest.h>

#include <array>
#include <future>
#include <memory>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>

namespace hosttest {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kLong = 60'000; ///< milliseconds; no test waits this long; one that did would be noticed

Bytes allBytes() {
    Bytes bytes(256);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(i);
    }
    return bytes;
}

class SerialPort : public testing::Test {
protected:
    int open(int baud = 115200, int parity = 0, int dataBits = 8, int stopBits = 1, int rs485 = 0) {
        return port.Open(baud, parity, dataBits, stopBits, rs485);
    }
    int read(int maximum, int firstByteMs, int interCharMs) {
        return port.Read(buffer.data(), maximum, firstByteMs, interCharMs, &count, 0);
    }
    Bytes received() const { return {buffer.begin(), buffer.begin() + count}; }

    Pty pty;
    host::SteadyClock clock;
    host::PortReport report;
    host::SerialPort port{pty.path(), report, clock};
    std::array<unsigned char, 1460> buffer{};
    int count = -1;
};

TEST_F(SerialPort, AllByteValuesComeThroughUnchanged) {
    ASSERT_NE(open(), 0) << textOf(report.lastError);
    pty.send(allBytes());
    ASSERT_NE(read(256, kLong, kLong), 0) << textOf(report.lastFault);
    EXPECT_EQ(received(), allBytes());
}

TEST_F(SerialPort, AllByteValuesGoOutUnchanged) {
    ASSERT_NE(open(), 0) << textOf(report.lastError);
    Bytes const bytes = allBytes();
    EXPECT_EQ(port.Write(bytes.data(), 256, 0), 256);
    EXPECT_EQ(pty.receive(256), bytes);
}

TEST_F(SerialPort, NothingIsEchoed) {
    ASSERT_NE(open(), 0);
    pty.send(Bytes{'a', '\r', 0x04});
    ASSERT_NE(read(3, kLong, kLong), 0);
    Bytes const answer{0x55};
    EXPECT_EQ(port.Write(answer.data(), 1, 0), 1);
    EXPECT_EQ(pty.receive(1), answer) << "the first byte that comes out is our own, not an echo";
}

TEST_F(SerialPort, SilenceIsATimeOutAndNotAFault) {
    ASSERT_NE(open(), 0);
    EXPECT_NE(read(10, 2, 2), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(textOf(report.lastFault), "");
}

TEST_F(SerialPort, AFrameEndsWithTheSilence) {
    ASSERT_NE(open(), 0);
    pty.send(Bytes{1, 2, 3});
    pty.send(Bytes{4, 5});
    ASSERT_NE(read(100, kLong, 20), 0);
    EXPECT_EQ(received(), (Bytes{1, 2, 3, 4, 5}));
    EXPECT_GT(report.lastByteAt, 0);
    EXPECT_GE(report.lastByteAt, report.firstByteAt);
}

TEST_F(SerialPort, TakesNoMoreThanTheMaximum) {
    ASSERT_NE(open(), 0);
    pty.send(Bytes{1, 2, 3, 4, 5});
    ASSERT_NE(read(3, kLong, kLong), 0);
    EXPECT_EQ(received(), (Bytes{1, 2, 3}));
    ASSERT_NE(read(2, kLong, kLong), 0);
    EXPECT_EQ(received(), (Bytes{4, 5}));
}

TEST_F(SerialPort, AHangUpWhileWaitingIsAFault) {
    ASSERT_NE(open(), 0);
    std::thread puller([this] { pty.hangUp(); });
    EXPECT_EQ(read(10, kLong, kLong), 0);
    puller.join();
    EXPECT_EQ(count, 0);
    EXPECT_EQ(textOf(report.lastFault), "the serial port " + pty.path() + " has gone away (hang-up)");
}

TEST_F(SerialPort, AHangUpInTheMiddleOfAFrameIsAFault) {
    ASSERT_NE(open(), 0);
    pty.send(Bytes{0xAA, 0xAA});
    ASSERT_NE(read(1, kLong, kLong), 0);
    std::thread puller([this] { pty.hangUp(); });
    EXPECT_EQ(read(10, kLong, kLong), 0);
    puller.join();
    EXPECT_NE(textOf(report.lastFault), "");
}

TEST_F(SerialPort, ADeadPortAnswersFaultsAtOnceAndKeepsTheReason) {
    ASSERT_NE(open(), 0);
    pty.hangUp();
    EXPECT_EQ(read(10, kLong, kLong), 0);
    std::string const reason = textOf(report.lastFault);
    Bytes const bytes{1};
    EXPECT_EQ(read(10, kLong, kLong), 0);
    EXPECT_EQ(port.Write(bytes.data(), 1, 0), 0);
    EXPECT_EQ(port.Purge(buffer.data(), 0, 0), 0) << "emptying a dead port ends";
    EXPECT_NE(reason, "");
    EXPECT_EQ(textOf(report.lastFault), reason);
}

/** A user's request to stop: a descriptor that becomes readable. */
class Interruption {
public:
    Interruption() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) { EXPECT_TRUE(event_.isOpen()); }
    int descriptor() const { return event_.get(); }
    void request() const { ASSERT_EQ(eventfd_write(event_.get(), 1), 0); }

private:
    base::FileDescriptor event_;
};

TEST_F(SerialPort, AnInterruptionEndsAWaitAtOnce) {
    Interruption const interruption;
    host::SerialPort interruptible(pty.path(), report, clock, interruption.descriptor());
    ASSERT_NE(interruptible.Open(115200, 0, 8, 1, 0), 0) << textOf(report.lastError);
    auto reader =
        std::async(std::launch::async, [&] { return interruptible.Read(buffer.data(), 10, kLong, kLong, &count, 0); });
    interruption.request();
    EXPECT_EQ(reader.get(), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(textOf(report.lastFault), "interrupted");
}

TEST_F(SerialPort, AnInterruptionEndsEveryLaterOperationAndLetsGoOfTheDevice) {
    Interruption const interruption;
    interruption.request();
    host::SerialPort interruptible(pty.path(), report, clock, interruption.descriptor());
    ASSERT_NE(interruptible.Open(115200, 0, 8, 1, 0), 0) << textOf(report.lastError);
    pty.send(Bytes{1, 2, 3});
    EXPECT_EQ(interruptible.Read(buffer.data(), 10, kLong, kLong, &count, 0), 0) << "bytes do not go before the end";
    EXPECT_EQ(interruptible.Write(buffer.data(), 5, 0), 0);
    EXPECT_EQ(interruptible.Purge(buffer.data(), 0, 0), 0);
    EXPECT_NE(open(), 0) << "the device is free: " << textOf(report.lastError);
}

TEST_F(SerialPort, WithoutAnInterruptionWaitingGoesOnAsEver) {
    Interruption const interruption;
    host::SerialPort interruptible(pty.path(), report, clock, interruption.descriptor());
    ASSERT_NE(interruptible.Open(115200, 0, 8, 1, 0), 0) << textOf(report.lastError);
    pty.send(Bytes{7});
    EXPECT_NE(interruptible.Read(buffer.data(), 1, kLong, kLong, &count, 0), 0);
    EXPECT_EQ(received(), Bytes{7});
}

TEST_F(SerialPort, WritingToADeadPortIsAFault) {
    ASSERT_NE(open(), 0);
    pty.hangUp();
    Bytes const bytes{1, 2, 3};
    EXPECT_EQ(port.Write(bytes.data(), 3, 0), 0);
    EXPECT_NE(textOf(report.lastFault).find("has gone away"), std::string::npos) << textOf(report.lastFault);
}

TEST_F(SerialPort, EmptyingADeadPortNoticesTheFault) {
    ASSERT_NE(open(), 0);
    pty.hangUp();
    EXPECT_EQ(port.Purge(buffer.data(), 0, 0), 0);
    EXPECT_NE(textOf(report.lastFault), "");
}

TEST_F(SerialPort, PurgeTakesOutWhatIsThereAndEnds) {
    ASSERT_NE(open(), 0);
    pty.send(Bytes(2000, 0x11));
    ASSERT_NE(read(1, kLong, kLong), 0);
    int removed = 0;
    int calls = 0;
    // The kernel passes the bytes on in pieces of its choice: wait until all were seen, but not for ever.
    while (removed < 1999 && calls < 1'000'000) {
        int const now = port.Purge(buffer.data(), 0, 0);
        EXPECT_LE(now, 1460);
        removed += now;
        ++calls;
    }
    EXPECT_EQ(removed, 1999);
    EXPECT_EQ(port.Purge(buffer.data(), 0, 0), 0);
    EXPECT_EQ(textOf(report.lastFault), "");
}

TEST_F(SerialPort, WrongArgumentsTouchNothing) {
    ASSERT_NE(open(), 0);
    pty.send(Bytes{1});
    EXPECT_NE(port.Read(nullptr, 10, 0, 0, &count, 0), 0);
    EXPECT_EQ(count, 0);
    EXPECT_NE(port.Read(buffer.data(), -5, 0, 0, &count, 0), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(port.Write(nullptr, 3, 0), 0);
    EXPECT_EQ(port.Write(buffer.data(), -1, 0), 0);
    EXPECT_EQ(port.Purge(nullptr, 0, 0), 0);
    EXPECT_NE(port.Read(buffer.data(), 1, kLong, -1, nullptr, 0), 0);
    EXPECT_EQ(buffer[0], 1);
}

TEST_F(SerialPort, AClosedPortReadsAndWritesNothing) {
    EXPECT_EQ(read(10, kLong, kLong), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(port.Write(buffer.data(), 1, 0), 0);
    EXPECT_EQ(port.Purge(buffer.data(), 0, 0), 0);
}

TEST_F(SerialPort, WhatCameInBeforeOpeningIsDropped) {
    base::FileDescriptor const other(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(other.isOpen());
    termios raw{};
    ASSERT_EQ(tcgetattr(other.get(), &raw), 0);
    cfmakeraw(&raw);
    ASSERT_EQ(tcsetattr(other.get(), TCSANOW, &raw), 0);
    pty.send(Bytes{1, 2, 3});
    pollfd line{other.get(), POLLIN, 0};
    ASSERT_EQ(poll(&line, 1, 10'000), 1);
    ASSERT_NE(open(), 0) << textOf(report.lastError);
    pty.send(Bytes{9});
    ASSERT_NE(read(1, kLong, kLong), 0);
    EXPECT_EQ(received(), (Bytes{9}));
}

TEST_F(SerialPort, ASecondPortOnTheSameDeviceIsRefused) {
    host::PortReport otherReport;
    host::SerialPort other(pty.path(), otherReport, clock);
    ASSERT_NE(open(), 0);
    EXPECT_EQ(other.Open(115200, 0, 8, 1, 0), 0);
    EXPECT_EQ(textOf(otherReport.lastError), "the serial port " + pty.path() +
                                                 " is in use by this program itself (process " +
                                                 std::to_string(getpid()) + ")");
    port.Close();
    EXPECT_NE(other.Open(115200, 0, 8, 1, 0), 0) << "closing frees it";
    EXPECT_EQ(textOf(otherReport.lastError), "");
}

TEST_F(SerialPort, ADeviceThatAnotherProgramLockedIsRefused) {
    base::FileDescriptor const other(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_EQ(flock(other.get(), LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(open(), 0);
    EXPECT_NE(textOf(report.lastError).find("is in use"), std::string::npos) << textOf(report.lastError);
}

TEST_F(SerialPort, TheOtherProgramIsNamed) {
    std::array<int, 2> toChild{};
    std::array<int, 2> toParent{};
    ASSERT_EQ(pipe2(toChild.data(), O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(toParent.data(), O_CLOEXEC), 0);
    pid_t const child = fork();
    ASSERT_GE(child, 0);
    char byte = 0;
    if (child == 0) { // another program: holds the port until its pipe is closed
        ::close(toChild[1]);
        int const terminal = ::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        byte = flock(terminal, LOCK_EX | LOCK_NB) == 0 ? '+' : '-';
        bool const told = ::write(toParent[1], &byte, 1) == 1;
        _exit(told && ::read(toChild[0], &byte, 1) == 0 ? 0 : 1);
    }
    ASSERT_EQ(::read(toParent[0], &byte, 1), 1);
    EXPECT_EQ(byte, '+');
    EXPECT_EQ(open(), 0);
    EXPECT_NE(textOf(report.lastError).find("' (process " + std::to_string(child) + ")"), std::string::npos)
        << textOf(report.lastError);
    for (int const end : {toChild[1], toChild[0], toParent[0], toParent[1]}) {
        ::close(end);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_NE(open(), 0) << textOf(report.lastError);
}

TEST_F(SerialPort, OpeningAgainWithOtherSettingsWorks) {
    ASSERT_NE(open(9600, 0, 8, 1), 0);
    ASSERT_NE(open(19200, 1, 7, 2), 0) << textOf(report.lastError);
    base::FileDescriptor const other(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios actual{};
    ASSERT_EQ(tcgetattr(other.get(), &actual), 0);
    EXPECT_EQ(cfgetospeed(&actual), speed_t{B19200});
    EXPECT_NE(actual.c_cflag & CSTOPB, 0U);
}

TEST_F(SerialPort, OpeningAgainWithAParityWorksOnAPseudoTerminalThatHasNone) {
    ASSERT_NE(open(19200, 1), 0) << textOf(report.lastError);
    port.Close();
    EXPECT_NE(open(19200, 1), 0) << textOf(report.lastError);
}

TEST_F(SerialPort, AnUnknownRateIsAnErrorAndNotAnotherRate) {
    EXPECT_EQ(open(12345), 0);
    EXPECT_EQ(textOf(report.lastError),
              "the serial port " + pty.path() +
                  " is not opened: a serial line cannot run at 12345 bit/s, only at a standard rate "
                  "such as 9600, 19200, 38400, 57600 or 115200");
}

TEST_F(SerialPort, Rs485NeedsAPortThatHasIt) {
    EXPECT_EQ(open(19200, 0, 8, 1, 1), 0);
    EXPECT_EQ(textOf(report.lastError),
              "the serial port " + pty.path() +
                  " has no RS-485 mode in the kernel; with a converter that switches the direction "
                  "by itself choose the mode RS-232");
    EXPECT_NE(open(19200, 0, 8, 1, 0), 0) << "the refused port is free again";
}

TEST_F(SerialPort, NoPermissionNamesTheOneWhoMay) {
    ASSERT_EQ(chmod(pty.path().c_str(), 0), 0);
    Unprivileged const nobody;
    EXPECT_EQ(open(), 0);
    EXPECT_NE(
        textOf(report.lastError).find("no permission to use the serial port " + pty.path() + ": only its owner '"),
        std::string::npos)
        << textOf(report.lastError);
}

TEST_F(SerialPort, NoPermissionNamesTheGroupThatMay) {
    ASSERT_EQ(chmod(pty.path().c_str(), 0060), 0);
    Unprivileged const nobody;
    EXPECT_EQ(open(), 0);
    EXPECT_NE(textOf(report.lastError)
                  .find("no permission to use the serial port " + pty.path() + ": it belongs to the group '"),
              std::string::npos)
        << textOf(report.lastError);
    EXPECT_NE(textOf(report.lastError).find("sudo usermod -aG "), std::string::npos);
}

TEST_F(SerialPort, IsWhatItSaysItIs) {
    EXPECT_EQ(port.ConvertTo("ISerialPort"), &port);
    EXPECT_EQ(port.ConvertTo("IMultiTask2"), nullptr);
    EXPECT_EQ(port.ConvertTo(nullptr), nullptr);
    EXPECT_STREQ(port.GetImpName(), "SerialPort");
    EXPECT_EQ(port.path(), pty.path());
}

std::string reasonNotToOpen(std::string const& path) {
    host::SteadyClock clock;
    host::PortReport report;
    host::SerialPort port(path, report, clock);
    EXPECT_EQ(port.Open(9600, 0, 8, 1, 0), 0);
    return textOf(report.lastError);
}

TEST(SerialPortErrors, AMissingDeviceIsNamed) {
    EXPECT_EQ(reasonNotToOpen("/dev/velk-no-such-port"), "there is no serial port /dev/velk-no-such-port");
    EXPECT_EQ(reasonNotToOpen(""), "there is no serial port ");
}

TEST(SerialPortErrors, AFileThatIsNoTerminalIsNamed) {
    EXPECT_EQ(reasonNotToOpen("/dev/null"), "/dev/null is not a serial port");
    EXPECT_EQ(reasonNotToOpen("/"), "/ is not a serial port");
}

TEST(PortLock, KeepsTheTerminalExclusiveAsLongAsItLives) {
    Pty const pty;
    base::FileDescriptor const terminal(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    int exclusive = -1;
    if (ioctl(terminal.get(), TIOCGEXCL, &exclusive) != 0) {
        GTEST_SKIP() << "the exclusive mode cannot be asked for here";
    }
    EXPECT_EQ(exclusive, 0);
    {
        auto const lock = host::PortLock::take(terminal.get(), true);
        ASSERT_TRUE(lock.has_value());
        ASSERT_EQ(ioctl(terminal.get(), TIOCGEXCL, &exclusive), 0);
        EXPECT_NE(exclusive, 0);
    }
    ASSERT_EQ(ioctl(terminal.get(), TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 0);
}

TEST(PortLock, ExclusiveModeKeepsOrdinaryUsersFromOpening) {
    Pty const pty;
    base::FileDescriptor const terminal(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_EQ(chmod(pty.path().c_str(), 0666), 0);
    auto const lock = host::PortLock::take(terminal.get(), true);
    ASSERT_TRUE(lock.has_value());
    Unprivileged const nobody;
    base::FileDescriptor const other(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    int const error = errno;
    EXPECT_FALSE(other.isOpen());
    EXPECT_EQ(error, EBUSY);
}

TEST(PseudoTerminal, IsToldFromEverythingElse) {
    Pty const pty;
    base::FileDescriptor const terminal(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    base::FileDescriptor const null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    EXPECT_TRUE(host::isPseudoTerminal(terminal.get()));
    EXPECT_FALSE(host::isPseudoTerminal(null.get()));
    EXPECT_FALSE(host::isPseudoTerminal(-1));
}

/** Reports when the reader has begun to wait. */
class WatchedLine final : public host::DescriptorLine {
public:
    using DescriptorLine::DescriptorLine;
    host::Wait waitForInput(std::int64_t microseconds) override {
        if (!told_) {
            told_ = true;
            waiting.set_value();
        }
        return DescriptorLine::waitForInput(microseconds);
    }
    std::promise<void> waiting;

private:
    bool told_ = false;
};

TEST(DescriptorLine, ALineThatIsCutWhileTheReaderWaitsIsAFault) {
    Pty pty;
    base::FileDescriptor const terminal(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    WatchedLine line(terminal.get());
    host::SteadyClock clock;
    std::array<unsigned char, 16> room{};
    std::thread puller([&] {
        line.waiting.get_future().wait();
        pty.hangUp();
    });
    auto const frame = host::readFrame(line, clock, room, {60'000'000, 60'000'000});
    puller.join();
    EXPECT_TRUE(frame.fault);
    EXPECT_EQ(line.faultText(), "hang-up");
}

TEST(DescriptorLine, ABadDescriptorIsAFault) {
    host::DescriptorLine line(-1);
    std::array<unsigned char, 4> room{};
    EXPECT_TRUE(line.receive(room).fault);
    EXPECT_TRUE(line.send(room).fault);
    EXPECT_FALSE(line.drain());
    EXPECT_NE(line.faultText(), "");
    EXPECT_EQ(line.unsent(), 0U);
}

} // namespace
} // namespace hosttest
