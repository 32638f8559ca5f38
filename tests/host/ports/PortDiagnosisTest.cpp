#include "host/ports/PortDiagnosis.h"

#include "base/FileDescriptor.h"
#include "host/ports/PortHolder.h"
#include "tests/host/Pty.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace hosttest {
namespace {

TEST(PortDiagnosis, NoPermissionSaysHowToGetIt) {
    EXPECT_EQ(host::noPermission("/dev/ttyUSB0", {"root", "dialout", true, false}).text,
              "no permission to use the serial port /dev/ttyUSB0: it belongs to the group 'dialout', so run 'sudo "
              "usermod -aG dialout $USER' and log in again");
    EXPECT_EQ(host::noPermission("/dev/ttyUSB0", {"root", "dialout", false, false}).text,
              "no permission to use the serial port /dev/ttyUSB0: only its owner 'root' may use it");
    EXPECT_EQ(host::noPermission("/dev/ttyUSB0", {"root", "dialout", true, true}).text,
              "no permission to use the serial port /dev/ttyUSB0 although the permissions of the file allow it");
}

TEST(PortDiagnosis, EveryWayADeviceIsMissingReadsAlike) {
    for (int const error : {ENOENT, ENODEV, ENXIO, ENOTDIR}) {
        EXPECT_EQ(host::openFailure("/dev/ttyS9", error).text, "there is no serial port /dev/ttyS9");
    }
}

TEST(PortDiagnosis, APortWithoutHardwareIsNotAMissingOne) {
    EXPECT_EQ(host::settingFailure("/dev/ttyS9", EIO).text, "there is no serial hardware at /dev/ttyS9");
}

TEST(PortDiagnosis, OtherErrorsKeepTheSystemsWords) {
    EXPECT_EQ(host::openFailure("/dev/ttyS9", EMFILE).text,
              "the serial port /dev/ttyS9 cannot be opened: Too many open files");
    EXPECT_EQ(host::settingFailure("/dev/ttyS9", EINVAL).text,
              "the serial port /dev/ttyS9 cannot be set up: Invalid argument");
    EXPECT_EQ(host::openFailure("/dev/velk-no-such-port", EACCES).text,
              "the serial port /dev/velk-no-such-port cannot be opened: Permission denied");
}

TEST(PortDiagnosis, ABusyPortWithoutAKnownHolderIsStillBusy) {
    EXPECT_EQ(host::openFailure("/dev/velk-no-such-port", EBUSY).text,
              "the serial port /dev/velk-no-such-port is in use by another program");
}

TEST(PortDiagnosis, TheKindComesFromTheErrorNumber) {
    using base::FailureKind;
    std::string const path = "/dev/velk-no-such-port";
    EXPECT_EQ(host::openFailure(path, ENOENT).kind, FailureKind::PortMissing);
    EXPECT_EQ(host::openFailure(path, EACCES).kind, FailureKind::PortDenied);
    EXPECT_EQ(host::openFailure("/dev/null", EACCES).kind, FailureKind::PortDenied) << "with its access rights known";
    EXPECT_EQ(host::openFailure(path, EBUSY).kind, FailureKind::PortBusy);
    EXPECT_EQ(host::openFailure(path, EISDIR).kind, FailureKind::NotAPort);
    EXPECT_EQ(host::openFailure(path, EMFILE).kind, FailureKind::PortFault);
    EXPECT_EQ(host::settingFailure(path, EIO).kind, FailureKind::PortNoHardware);
    EXPECT_EQ(host::settingFailure(path, EBUSY).kind, FailureKind::PortBusy);
    EXPECT_EQ(host::settingFailure(path, ENODEV).kind, FailureKind::PortMissing);
    EXPECT_EQ(host::settingFailure(path, EINVAL).kind, FailureKind::PortFault);
    EXPECT_EQ(host::notATerminal(path).kind, FailureKind::NotAPort);
    EXPECT_EQ(host::noPermission(path, {}).kind, FailureKind::PortDenied);
}

TEST(PortHolder, FindsTheProcessThatHasTheDeviceOpen) {
    Pty const pty;
    Pty const neighbour;
    base::FileDescriptor const other(::open(neighbour.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(other.isOpen());
    EXPECT_FALSE(host::findHolder(pty.path()).has_value()) << "another device does not count";
    base::FileDescriptor const terminal(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    auto const holder = host::findHolder(pty.path());
    ASSERT_TRUE(holder.has_value());
    EXPECT_EQ(holder->process, getpid());
    EXPECT_NE(holder->program, "");
}

TEST(PortHolder, ReadsTheProgramsNameFromTheProcessList) {
    Pty const pty;
    velktest::TempDir const processes;
    std::filesystem::create_directories(processes.Path("4711/fd"));
    std::filesystem::create_directories(processes.Path("tty"));
    std::filesystem::create_symlink(pty.path(), processes.Path("4711/fd/5"));
    std::ofstream(processes.Path("4711/comm")) << "minicom\n";
    auto const holder = host::findHolder(pty.path(), processes.Path());
    ASSERT_TRUE(holder.has_value());
    EXPECT_EQ(holder->process, 4711);
    EXPECT_EQ(holder->program, "minicom");
}

TEST(PortHolder, FindsNobodyWhereThereIsNothingToSee) {
    EXPECT_FALSE(host::findHolder("/dev/velk-no-such-port").has_value());
    EXPECT_FALSE(host::findHolder("/").has_value());
    Pty const pty;
    EXPECT_FALSE(host::findHolder(pty.path(), "/velk-no-such-directory").has_value());
}

} // namespace
} // namespace hosttest
