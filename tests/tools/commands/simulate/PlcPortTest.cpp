#include "tools/velk/commands/simulate/PlcPort.h"

#include "base/FileDescriptor.h"
#include "tests/support/TempDir.h"
#include "tools/velk/context/CommandError.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <termios.h>

namespace {

using velk::PlcOptions;
using velk::simulation::PlcPort;

class PlcPorts : public testing::Test {
protected:
    [[nodiscard]] velk::ExitCode codeOf(PlcOptions const& asked) {
        try {
            PlcPort const port(asked, {.baud = 9'600});
            return velk::ExitCode::Good;
        } catch (velk::CommandError const& error) {
            complaint = error.what();
            return error.code();
        }
    }

    /** Whether a link to @p target is complained about and stays. */
    void expectToStay(std::filesystem::path const& target, std::string const& why) {
        std::filesystem::path const link = folder / "plc";
        std::filesystem::create_symlink(target, link);
        options.link = link.string();
        EXPECT_EQ(codeOf(options), velk::ExitCode::Usage);
        EXPECT_EQ(complaint, "the link " + link.string() + " cannot be made: " + why);
        EXPECT_EQ(std::filesystem::read_symlink(link), target);
    }

    velktest::TempDir temporary;
    std::filesystem::path folder = temporary.Path();
    PlcOptions options;
    std::string complaint;
};

TEST_F(PlcPorts, APseudoTerminalHasTheSpeedOfTheLine) {
    PlcPort const port(options, {.baud = 9'600});
    EXPECT_TRUE(port.isPseudoTerminal());
    base::FileDescriptor const slave =
        base::openedOrThrow(::open(port.name().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), port.name());
    termios settings{};
    ASSERT_EQ(::tcgetattr(slave.get(), &settings), 0);
    EXPECT_EQ(::cfgetospeed(&settings), static_cast<speed_t>(B9600));
}

TEST_F(PlcPorts, ALinkGoesWithThePort) {
    std::filesystem::path const link = folder / "plc";
    options.link = link.string();
    {
        PlcPort const port(options, {});
        EXPECT_EQ(std::filesystem::read_symlink(link), port.name());
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link)));
}

TEST_F(PlcPorts, ALinkIsToldAsAPortIsGiven) {
    EXPECT_TRUE(PlcPort(options, {}).wayToIt().starts_with("/dev/pts/"));
    options.link = (folder / "plc").string();
    EXPECT_EQ(PlcPort(options, {}).wayToIt(), folder.string() + "/plc");
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    options.link = "com1";
    EXPECT_EQ(PlcPort(options, {}).wayToIt(), "./com1");
    std::filesystem::current_path(before);
}

TEST_F(PlcPorts, ALinkThatWasLeftBehindMakesRoom) {
    std::filesystem::path const link = folder / "plc";
    std::filesystem::create_symlink("/dev/pts/99999", link);
    options.link = link.string();
    PlcPort const port(options, {});
    EXPECT_EQ(std::filesystem::read_symlink(link), port.name());
}

TEST_F(PlcPorts, ALinkToNothingMakesRoom) {
    std::filesystem::path const link = folder / "plc";
    std::filesystem::create_symlink("nowhere", link);
    options.link = link.string();
    PlcPort const port(options, {});
    EXPECT_EQ(std::filesystem::read_symlink(link), port.name());
}

TEST_F(PlcPorts, ALinkToAPseudoTerminalThatIsThereStays) {
    plc::PseudoTerminal const other;
    expectToStay(other.slaveName(), "there is a link of that name to " + other.slaveName() +
                                        ", which is in use, by another simulated PLC perhaps");
}

TEST_F(PlcPorts, ALinkToAFileStays) {
    std::ofstream(folder / "file") << "mine";
    expectToStay("file", "there is a link of that name to file, which is there");
}

TEST_F(PlcPorts, ALinkToItselfStays) {
    expectToStay("plc", "there is a link of that name to plc, which cannot be examined");
}

TEST_F(PlcPorts, ALinkToAFolderStays) {
    expectToStay(folder, "there is a link of that name to " + folder.string() + ", which is there");
}

TEST_F(PlcPorts, ALinkThatSomebodyElseMadeAnewStays) {
    std::filesystem::path const link = folder / "plc";
    options.link = link.string();
    {
        PlcPort const port(options, {});
        std::filesystem::remove(link);
        std::filesystem::create_symlink("/dev/null", link);
    }
    EXPECT_EQ(std::filesystem::read_symlink(link), "/dev/null");
}

TEST_F(PlcPorts, AFileInTheWayStaysAndIsComplainedAbout) {
    std::filesystem::path const file = folder / "plc";
    std::ofstream(file) << "mine";
    options.link = file.string();
    EXPECT_EQ(codeOf(options), velk::ExitCode::Usage);
    EXPECT_EQ(complaint, "the link " + file.string() + " cannot be made: there is a file of that name");
    EXPECT_TRUE(std::filesystem::is_regular_file(file));
}

TEST_F(PlcPorts, ASerialPortIsOpenedWithItsSettingsAndHeld) {
    plc::PseudoTerminal const line; // its slave stands for a serial port
    options.port = line.slaveName();
    PlcPort const port(options, {.baud = 19'200, .parity = plc::Parity::kNone, .stopBits = 2});
    EXPECT_FALSE(port.isPseudoTerminal());
    EXPECT_EQ(port.name(), line.slaveName());
    termios settings{};
    ASSERT_EQ(::tcgetattr(port.descriptor(), &settings), 0);
    EXPECT_EQ(::cfgetospeed(&settings), static_cast<speed_t>(B19200));
    EXPECT_NE(settings.c_cflag & CSTOPB, 0U);
    EXPECT_EQ(codeOf(options), velk::ExitCode::Port); // it is taken
}

TEST_F(PlcPorts, PortsThatCannotBeHadArePortTrouble) {
    options.port = (folder / "none").string();
    EXPECT_EQ(codeOf(options), velk::ExitCode::Port);
    options.port = "nowhere";
    EXPECT_EQ(codeOf(options), velk::ExitCode::Port);
    std::ofstream(folder / "file") << "no terminal";
    options.port = (folder / "file").string();
    EXPECT_EQ(codeOf(options), velk::ExitCode::Port);
}

} // namespace
