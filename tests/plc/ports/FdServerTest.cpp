#include "plc/ports/FdServer.h"

#include "base/FileDescriptor.h"
#include "plc/ports/PseudoTerminal.h"
#include "plc/ports/TerminalSpeed.h"
#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <future>
#include <poll.h>
#include <system_error>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using namespace plctest;

/** The panel's side of a pseudo-terminal. */
class Client {
public:
    explicit Client(std::string const& name)
        : port_(base::openedOrThrow(::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), name)) {}

    void write(plc::Bytes const& bytes) const {
        ASSERT_EQ(::write(port_.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    /** Waits until this many bytes have arrived; gives up after more time than a working server needs. */
    [[nodiscard]] std::string read(std::size_t count) const {
        plc::Bytes heard;
        pollfd port{.fd = port_.get(), .events = POLLIN, .revents = 0};
        while (heard.size() < count && ::poll(&port, 1, 30'000) == 1) {
            std::array<std::uint8_t, 256> bytes{};
            ssize_t const got = ::read(port_.get(), bytes.data(), std::min(bytes.size(), count - heard.size()));
            if (got <= 0) {
                break;
            }
            heard.insert(heard.end(), bytes.begin(), bytes.begin() + got);
        }
        return Show(heard);
    }

    [[nodiscard]] std::string say(std::string_view hex, std::size_t answer) const {
        write(Hex(hex));
        return read(answer);
    }

    [[nodiscard]] int descriptor() const { return port_.get(); }

private:
    base::FileDescriptor port_;
};

/** A line whose timers never matter in a test. */
plc::LineDescription PatientLine() {
    plc::LineDescription line = BareLine();
    line.frameSilence = 1h;
    line.stations[0].exchangeTimeout = 1h;
    return line;
}

void ExpectLinkCheck(Client const& client) {
    EXPECT_EQ(client.say(kLinkCheck, 6), kAck1);
    EXPECT_EQ(client.say(kAck0, 10), kStatusDone);
    EXPECT_EQ(client.say(kAck1, 6), kAck0);
}

/** A pseudo-terminal with a PLC at its other end. */
class Served : public testing::Test {
protected:
    explicit Served(plc::LineDescription const& description = PatientLine())
        : line(description), server(line, terminal.master()),
          thread([this](std::stop_token const& stop) { end = server.run(stop); }) {}

    void stop() {
        thread.request_stop();
        thread.join();
    }

    plc::PseudoTerminal terminal;
    plc::Line line;
    plc::FdServer server;
    std::optional<plc::FdServer::End> end;
    std::jthread thread;
};

TEST_F(Served, AnswersAndStopsWhenAsked) {
    Client const client(terminal.slaveName());
    ExpectLinkCheck(client);
    stop();
    EXPECT_EQ(end, plc::FdServer::End::kStopped);
    EXPECT_EQ(line.counters().complaints(), 0U);
}

TEST_F(Served, ServesTheNextClientWhenOneHasClosed) {
    for (int i = 0; i < 3; ++i) {
        Client const client(terminal.slaveName());
        ExpectLinkCheck(client);
    }
    stop();
    EXPECT_EQ(end, plc::FdServer::End::kStopped);
    EXPECT_EQ(line.counters().of(plc::Cause::kExchangeDone), 3U);
}

TEST_F(Served, PassesEveryByteAsItIs) {
    Client const client(terminal.slaveName());
    server.locked([](plc::Line& locked) {
        auto const area = locked.station().memory().area(0);
        for (std::size_t i = 0; i < 256; ++i) {
            area[i] = static_cast<std::uint8_t>(i);
        }
    });
    client.write(Hex(kLogin));
    ASSERT_EQ(client.read(6), kAck1);
    ASSERT_EQ(client.say(kAck0, 10), kLoginAccepted);
    ASSERT_EQ(client.say(kAck1, 6), kAck0);
    // 256 bytes of area 0: AA + AA + 14 + 01 + 01 + 2E + 01 + 01 + 01 = 19B; blocks of 120, 120 and 23 bytes.
    EXPECT_EQ(client.say("AA AA 14 00 01 00 9B 01 2E 00 01 00 00 00 00 00 00 00 00 00 00 01 00 00 01 00 00 00", 6),
              kAck1);
    // Three characters a byte: 8 bytes of header before each block, and 7 of the reply in the first.
    std::string values = client.say(kAck0, 128).substr(45) + " ";
    values += client.say(kAck1, 128).substr(24) + " ";
    values += client.say(kAck2, 31).substr(24);
    EXPECT_EQ(values, Show(velktest::Counting(256)));
}

TEST(PseudoTerminal, IsRaw) {
    plc::PseudoTerminal const terminal;
    Client const client(terminal.slaveName());
    termios settings{};
    ASSERT_EQ(::tcgetattr(client.descriptor(), &settings), 0);
    EXPECT_EQ(settings.c_lflag & (ECHO | ICANON | ISIG | IEXTEN), 0U);
    EXPECT_EQ(settings.c_iflag & (INLCR | IGNCR | ICRNL | IXON | IXOFF | IXANY | ISTRIP), 0U);
    EXPECT_EQ(settings.c_oflag & OPOST, 0U);
    EXPECT_EQ(settings.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
}

TEST(FdServer, AHungUpPortThatIsNoPseudoTerminalMasterIsGone) {
    plc::Line line(PatientLine());
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    base::FileDescriptor const readEnd(pipe[0]);
    ASSERT_EQ(::close(pipe[1]), 0);
    plc::FdServer server(line, readEnd.get());
    EXPECT_EQ(server.run({}), plc::FdServer::End::kPortGone);
}

TEST(FdServer, NoDescriptorIsAnError) {
    plc::Line line(PatientLine());
    EXPECT_THROW(plc::FdServer(line, -1), std::system_error);
    EXPECT_THROW(plc::makeRaw(-1), std::system_error);
}

/** Silence and time-outs end by the clock alone, without bytes from the panel. */
class Impatient : public Served {
protected:
    Impatient() : Served(Description()) {}
    static plc::LineDescription Description() {
        plc::LineDescription description = BareLine();
        description.stations[0].ackDelay = 1ms;
        description.bytesPerSecond = 100'000;
        return description;
    }
};

TEST_F(Impatient, TimersAndPaceRunByTheClock) {
    Client const client(terminal.slaveName());
    // The frame after the garbage is found when the line has been silent; its acknowledge is delayed and paced.
    EXPECT_EQ(client.say("00 AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05", 6), kAck1);
}

/** Waits for the first complaint about the panel. */
class FirstComplaint final : public plc::LineObserver {
public:
    void onEvent(plc::LineEvent const& event) override {
        if (plc::isComplaint(event.cause) && !told_) {
            told_ = true;
            cause_.set_value(event.cause);
        }
    }
    [[nodiscard]] plc::Cause wait() {
        auto cause = cause_.get_future();
        return cause.wait_for(30s) == std::future_status::ready ? cause.get() : plc::Cause::kCount;
    }

private:
    bool told_ = false;
    std::promise<plc::Cause> cause_;
};

void SetClientSpeed(Client const& client, speed_t speed) {
    termios settings{};
    ASSERT_EQ(::tcgetattr(client.descriptor(), &settings), 0);
    ::cfsetspeed(&settings, speed);
    ASSERT_EQ(::tcsetattr(client.descriptor(), TCSANOW, &settings), 0);
}

TEST(FdServerAsAWire, APanelAtAnotherSpeedIsNotUnderstood) {
    plc::PseudoTerminal terminal;
    FirstComplaint complaint;
    plc::Line line(BareLine(), &complaint);
    plc::FdServer server(line, terminal.master(), {.baud = 9'600});
    std::jthread const thread([&](std::stop_token const& stop) { server.run(stop); });
    Client const client(terminal.slaveName());
    SetClientSpeed(client, B19200);
    client.write(Hex(kLinkCheck));
    EXPECT_EQ(complaint.wait(), plc::Cause::kGarbage);
    SetClientSpeed(client, B9600);
    ExpectLinkCheck(client);
}

TEST(FdServerAsAWire, TheAnswerIsNotUnderstoodEither) {
    plc::PseudoTerminal terminal;
    plc::LineDescription description = PatientLine();
    description.stations[0].ackDelay = 500ms;
    plc::Line line(description);
    plc::FdServer server(line, terminal.master(), {.baud = 9'600});
    std::jthread const thread([&](std::stop_token const& stop) { server.run(stop); });
    Client const client(terminal.slaveName());
    SetClientSpeed(client, B9600);
    client.write(Hex(kLinkCheck));
    while (server.locked([](plc::Line& locked) { return !locked.nextDeadline(); })) {
        std::this_thread::yield(); // until the acknowledge is being sent
    }
    SetClientSpeed(client, B19200);
    std::string const heard = client.read(1);
    EXPECT_NE(heard, "");
    EXPECT_NE(heard, "55"); // the first byte of the acknowledge
}

TEST(FdServerAsAWire, BytesFromThePanelTakeTheirTime) {
    plc::PseudoTerminal terminal;
    plc::Line line(PatientLine());
    plc::FdServer server(line, terminal.master(), {.bytesPerSecond = 100});
    std::jthread const thread([&](std::stop_token const& stop) { server.run(stop); });
    Client const client(terminal.slaveName());
    auto const begun = std::chrono::steady_clock::now();
    ExpectLinkCheck(client);
    EXPECT_GE(std::chrono::steady_clock::now() - begun, 290ms); // 17, 6 and 6 bytes
}

TEST(TerminalSpeed, OfTheSlaveIsToldByTheMaster) {
    plc::PseudoTerminal terminal;
    Client const client(terminal.slaveName());
    plc::setSpeed(client.descriptor(), 9'600);
    EXPECT_EQ(plc::speedOf(terminal.master()), 9'600U);
    SetClientSpeed(client, B115200);
    EXPECT_EQ(plc::speedOf(terminal.master()), 115'200U);
    EXPECT_EQ(plc::speedOf(-1), std::nullopt);
    EXPECT_THROW(plc::setSpeed(-1, 9'600), std::system_error);
}

TEST(TerminalSpeed, MayBeOneWithoutAName) {
    plc::PseudoTerminal const terminal;
    Client const client(terminal.slaveName());
    try {
        plc::setSpeed(client.descriptor(), 12'345);
    } catch (std::system_error const& error) {
        ASSERT_EQ(error.code().value(), ENOSYS);
        GTEST_SKIP() << "this emulated system knows speeds by their names only";
    }
    EXPECT_EQ(plc::speedOf(terminal.master()), 12'345U);
}

} // namespace
