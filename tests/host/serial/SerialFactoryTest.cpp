#include "host/serial/SerialFactory.h"

#include "base/FileDescriptor.h"
#include "host/ports/PortNames.h"
#include "host/serial/TrafficMeter.h"
#include "host/services/Clock.h"
#include "tests/host/CurrentFolder.h"
#include "tests/host/FailureText.h"
#include "tests/host/Pty.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <sys/eventfd.h>

namespace hosttest {
namespace {

TEST(PortNames, ComNumbersCountFromOne) {
    host::PortNames const names;
    EXPECT_EQ(names.path("com1"), "/dev/ttyS0");
    EXPECT_EQ(names.path("COM16"), "/dev/ttyS15");
    EXPECT_EQ(names.path("com0"), std::nullopt);
    EXPECT_EQ(names.path("com17"), std::nullopt);
    EXPECT_EQ(names.path(""), std::nullopt);
    EXPECT_EQ(names.path("no-such-port"), std::nullopt);
}

TEST(PortNames, ANameCanStandForAnotherDevice) {
    host::PortNames names;
    names.set("com1", "/dev/ttyUSB3");
    names.set("Press", "/dev/serial/by-id/usb-press-if00");
    EXPECT_EQ(names.path("com1"), "/dev/ttyUSB3");
    EXPECT_EQ(names.path("press"), "/dev/serial/by-id/usb-press-if00");
    EXPECT_EQ(names.path("com2"), "/dev/ttyS1");
}

TEST(PortNames, APathStandsForItself) {
    host::PortNames const names;
    EXPECT_EQ(names.path("/dev/ttyUSB0"), "/dev/ttyUSB0");
    EXPECT_EQ(names.path("/dev/serial/by-id/A B"), "/dev/serial/by-id/A B");
    EXPECT_EQ(names.path("./port"), "./port");
}

TEST(PortNames, ANameWithoutAPathIsADeviceOfTheSystemOrElseOfTheCurrentFolder) {
    velktest::TempDir const temp;
    CurrentFolder const current(temp.Path());
    host::PortNames const names;
    std::filesystem::create_symlink("/dev/null", "here");
    std::filesystem::create_symlink("/dev/zero", "null");
    std::filesystem::create_symlink("/dev/zero", "com1");
    EXPECT_EQ(names.path("here"), "./here");
    EXPECT_EQ(names.path("null"), "/dev/null") << "what lies in a folder hides no device";
    EXPECT_EQ(names.path("com1"), "/dev/ttyS0");
}

TEST(PortNames, AnAdapterThatIsNotPluggedInKeepsItsName) {
    velktest::TempDir const temp;
    CurrentFolder const current(temp.Path());
    host::PortNames const names;
    EXPECT_EQ(names.path("ttyUSB77"), "/dev/ttyUSB77");
    std::filesystem::create_symlink("/dev/zero", "ttyUSB77");
    EXPECT_EQ(names.path("ttyUSB77"), "./ttyUSB77");
}

TEST(PortNames, WhatIsNoDeviceIsNotFoundByItsNameAlone) {
    velktest::TempDir const temp;
    CurrentFolder const current(temp.Path());
    host::PortNames const names;
    std::ofstream("notes") << "text";
    std::filesystem::create_symlink("/dev/pts/no-such-terminal", "gone");
    for (char const* const name : {"notes", "gone", "pts", "tty S7", "tty-", "", ".", ".."}) {
        EXPECT_EQ(names.path(name), std::nullopt) << name;
    }
}

class SerialFactory : public testing::Test {
protected:
    Pty pty;
    host::SteadyClock clock;
    host::SerialFactory factory{clock};
};

TEST_F(SerialFactory, CreatesAPortFromADevicePath) {
    ISerialPort* const port = factory.CreatePort(pty.path().c_str());
    ASSERT_NE(port, nullptr);
    EXPECT_NE(port->Open(19200, 0, 8, 1, 0), 0);
    EXPECT_EQ(textOf(factory.lastError()), "");
    factory.ReleasePort(port);
}

TEST_F(SerialFactory, CreatesAPortFromAMappedName) {
    host::PortNames names;
    names.set("com1", pty.path());
    host::SerialFactory mapped(clock, names);
    ISerialPort* const port = mapped.CreatePort("com1");
    ASSERT_NE(port, nullptr);
    EXPECT_NE(port->Open(19200, 0, 8, 1, 0), 0) << textOf(mapped.lastError());
}

TEST_F(SerialFactory, ReleasingClosesThePort) {
    ISerialPort* const first = factory.CreatePort(pty.path().c_str());
    ASSERT_NE(first->Open(19200, 0, 8, 1, 0), 0);
    factory.ReleasePort(first);
    ISerialPort* const second = factory.CreatePort(pty.path().c_str());
    EXPECT_NE(second->Open(19200, 0, 8, 1, 0), 0) << textOf(factory.lastError());
}

TEST_F(SerialFactory, AnInterruptionReachesEveryPort) {
    base::FileDescriptor const interruption(eventfd(1, EFD_CLOEXEC | EFD_NONBLOCK));
    host::SerialFactory interruptible(clock, {}, nullptr, interruption.get());
    ISerialPort* const port = interruptible.CreatePort(pty.path().c_str());
    ASSERT_NE(port->Open(19200, 0, 8, 1, 0), 0) << textOf(interruptible.lastError());
    unsigned char byte = 0;
    int count = 0;
    EXPECT_EQ(port->Read(&byte, 1, 60'000, 60'000, &count, 0), 0);
    EXPECT_EQ(textOf(interruptible.lastFault()), "interrupted");
    EXPECT_EQ(interruptible.lastFault()->kind, base::FailureKind::Interrupted);
}

TEST_F(SerialFactory, AnUnknownNameSaysWhatToGive) {
    EXPECT_EQ(factory.CreatePort("com17"), nullptr);
    EXPECT_EQ(textOf(factory.lastError()),
              "no serial port is called 'com17': give com1 to com16 or the path of a device "
              "such as /dev/ttyUSB0");
    EXPECT_EQ(factory.lastError()->kind, base::FailureKind::PortMissing);
    EXPECT_EQ(factory.CreatePort(nullptr), nullptr);
}

TEST_F(SerialFactory, AMissingDeviceIsNoPort) {
    EXPECT_EQ(factory.CreatePort("/dev/velk-no-such-port"), nullptr);
    EXPECT_EQ(textOf(factory.lastError()), "there is no serial port /dev/velk-no-such-port");
    EXPECT_EQ(factory.lastError()->kind, base::FailureKind::PortMissing);
}

TEST_F(SerialFactory, TheReasonOutlivesThePort) {
    ISerialPort* const port = factory.CreatePort(pty.path().c_str());
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->Open(4711, 0, 8, 1, 0), 0);
    factory.ReleasePort(port); // as the driver does
    EXPECT_NE(textOf(factory.lastError()).find("4711 bit/s"), std::string::npos) << textOf(factory.lastError());
    EXPECT_EQ(factory.lastError()->kind, base::FailureKind::PortSettings);
    ISerialPort* const again = factory.CreatePort(pty.path().c_str());
    EXPECT_EQ(textOf(factory.lastError()), "");
    EXPECT_NE(again->Open(9600, 0, 8, 1, 0), 0);
}

TEST_F(SerialFactory, AFaultIsToldAfterThePortWasReleased) {
    ISerialPort* const port = factory.CreatePort(pty.path().c_str());
    ASSERT_NE(port->Open(9600, 0, 8, 1, 0), 0);
    pty.hangUp();
    std::array<unsigned char, 8> buffer{};
    int count = 0;
    EXPECT_EQ(port->Read(buffer.data(), 8, 60'000, 20, &count, 0), 0);
    factory.ReleasePort(port);
    EXPECT_EQ(textOf(factory.lastFault()), "the serial port " + pty.path() + " has gone away (hang-up)");
    EXPECT_EQ(factory.lastFault()->kind, base::FailureKind::PortDied);
    ASSERT_NE(factory.report(pty.path()), nullptr);
    EXPECT_EQ(textOf(factory.report(pty.path())->lastFault), textOf(factory.lastFault()));
    EXPECT_EQ(factory.report("com9"), nullptr);
}

TEST_F(SerialFactory, ForeignPortsAreNotReleased) {
    host::SerialFactory other(clock);
    ISerialPort* const port = factory.CreatePort(pty.path().c_str());
    other.ReleasePort(port);
    other.ReleasePort(nullptr);
    EXPECT_NE(port->Open(9600, 0, 8, 1, 0), 0) << "it is still alive";
}

TEST_F(SerialFactory, AnObserverSeesEveryFrameOfEveryPort) {
    host::TrafficMeter meter;
    host::SerialFactory observed(clock, {}, &meter);
    ISerialPort* const port = observed.CreatePort(pty.path().c_str());
    ASSERT_NE(port, nullptr);
    ASSERT_NE(port->Open(9600, 0, 8, 1, 0), 0);
    std::array<unsigned char, 8> buffer{1, 2, 3};
    int count = 0;
    EXPECT_EQ(port->Write(buffer.data(), 3, 0), 3);
    pty.send(std::array<unsigned char, 2>{9, 8});
    EXPECT_NE(port->Read(buffer.data(), 2, 60'000, 60'000, &count, 0), 0);
    observed.ReleasePort(port);
    EXPECT_EQ(meter.traffic().bytesSent, 3U);
    EXPECT_EQ(meter.traffic().bytesReceived, 2U);
    EXPECT_EQ(meter.traffic().exchanges, 1U);
}

TEST_F(SerialFactory, IsWhatItSaysItIs) {
    EXPECT_EQ(factory.ConvertTo("ISerialFactory"), &factory);
    EXPECT_EQ(factory.ConvertTo("ISocketFactory"), nullptr);
    EXPECT_STREQ(factory.GetImpName(), "SerialFactory");
    EXPECT_EQ(factory.GetImpVersion(), 100);
}

} // namespace
} // namespace hosttest
