#include "plc/line/Line.h"

#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using namespace plctest;
using plc::Cause;

std::string ComplaintAboutLine(plc::LineDescription const& description) {
    try {
        plc::Line const line(description);
        return "";
    } catch (plc::DescriptionError const& fault) {
        return fault.what();
    }
}

/** Two stations: "near" without a coupler, little-endian, and "far" behind one, big-endian with blocks of 256. */
plc::LineDescription TwoStations() {
    plc::StationDescription near = OneStation();
    near.name = "near";
    plc::StationDescription far = OneStation(plc::ByteOrder::kBig);
    far.name = "far";
    far.blockSize = 256;
    far.route.levels = 1;
    far.route.level[0] = {.coupler = 1, .channel = 0, .address = {1, 2, 3, 4}};
    return {.framing = plc::Framing::kRouted, .stations = {near, far}};
}

constexpr std::string_view kNear = "4F 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ";
constexpr std::string_view kFar = "4F 00 01 10 14 01 02 03 04 00 00 00 00 00 00 00 00 00 00 ";

std::string To(std::string_view header, std::string_view frame) {
    return std::string(header) + std::string(frame);
}

TEST(SeveralStations, AreToldApartByTheirHeaders) {
    Recorder recorder;
    plc::Line line(TwoStations(), &recorder);
    Panel panel(line);
    ASSERT_EQ(panel.say(To(kNear, kLogin)), To(kNear, kAck1));
    ASSERT_EQ(panel.say(To(kNear, kAck0)), To(kNear, kLoginAccepted));
    ASSERT_EQ(panel.say(To(kNear, kAck1)), To(kNear, kAck0));
    EXPECT_TRUE(line.station("near").loggedIn());
    EXPECT_FALSE(line.station("far").loggedIn());
    ASSERT_EQ(panel.say(To(kFar, "AA AA 00 0E 00 01 6D 01 01 00 00 00 02 00 00 00 06 00 00 00 00 00")),
              To(kFar, "55 55 00 0A 00 01"));
    ASSERT_EQ(panel.say(To(kFar, "55 55 00 0A 00 00")), To(kFar, "AA AA 00 02 00 01 43 01 03 E8"));
    ASSERT_EQ(panel.say(To(kFar, "55 55 00 0A 00 01")), To(kFar, "55 55 00 0A 00 00"));
    EXPECT_TRUE(line.station(1).loggedIn());
    EXPECT_EQ(line.counters().complaints(), 0U);
    EXPECT_EQ(line.counters(0).of(Cause::kExchangeDone), 1U);
    EXPECT_EQ(line.counters(1).of(Cause::kExchangeDone), 1U);
    EXPECT_EQ(recorder.events[0].station, 0);
    EXPECT_EQ(recorder.events.back().station, 1);
}

TEST(SeveralStations, EachHasItsOwnExchangeAndMemory) {
    plc::Line line(TwoStations());
    Panel panel(line);
    ASSERT_EQ(panel.say(To(kNear, kLinkCheck)), To(kNear, kAck1));
    ASSERT_EQ(panel.say(To(kFar, "AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05")), To(kFar, "55 55 00 0A 00 01"));
    EXPECT_EQ(panel.say(To(kNear, kAck0)), To(kNear, kStatusDone));
    EXPECT_EQ(panel.say(To(kFar, "55 55 00 0A 00 00")), To(kFar, "AA AA 00 02 00 01 58 01 00 00"));
    line.station("far").setValue("PLC_PRG.Counter", 3);
    EXPECT_EQ(line.station("near").get<int>("PLC_PRG.Counter"), 0);
    EXPECT_EQ(Show(line.station("far").memory().area(0).first(2)), "00 03");
}

TEST(SeveralStations, WrongHeadersAreCountedWhereTheyBelong) {
    plc::Line line(TwoStations());
    Panel panel(line);
    // The far station with the near one's block size.
    EXPECT_EQ(panel.say(To("4F 80 00 10 14 01 02 03 04 00 00 00 00 00 00 00 00 00 00", kLinkCheck)), "");
    // An address of no station.
    panel.now += 1s;
    EXPECT_EQ(panel.say(To("4F 00 01 10 14 01 02 03 05 00 00 00 00 00 00 00 00 00 00", kLinkCheck)), "");
    panel.hearAfter(1s);
    EXPECT_EQ(line.counters(1).of(Cause::kRoutingBlockSize), 1U);
    EXPECT_EQ(line.counters().of(Cause::kUnknownStation), 1U);
    EXPECT_EQ(line.counters(0).complaints() + line.counters(1).complaints(), 1U);
}

TEST(Line, TimeDoesNotRunBackwards) {
    plc::Line line(BareLine());
    line.advance(10s);
    line.receive(Hex(kLinkCheck), 1s);
    EXPECT_EQ(Show(line.takeOutput(2s)), kAck1);
    EXPECT_EQ(line.nextDeadline(), 11s);
}

TEST(Line, NextDeadlineIsAlwaysLaterThanWhatWasTaken) {
    plc::StationDescription station = OneStation();
    station.ackDelay = 2ms;
    station.answerDelay = 5ms;
    plc::LineDescription description = BareLine(station);
    description.bytesPerSecond = 960;
    plc::Line line(description);
    plc::Micros now{0};
    plc::Bytes heard;
    int steps = 0;
    line.receive(Hex("FF 00"), now);
    for (std::string_view const frame : {kLinkCheck, kAck0, kAck1}) {
        line.receive(Hex(frame), now += 100ms);
        for (;;) {
            plc::Bytes const got = line.takeOutput(now);
            heard.insert(heard.end(), got.begin(), got.end());
            auto const next = line.nextDeadline();
            if (!next || *next > now + 50ms) {
                break;
            }
            ASSERT_GT(*next, now);
            now = *next;
            ASSERT_LT(++steps, 1000);
        }
    }
    EXPECT_EQ(Show(heard), "55 55 0A 00 01 00 AA AA 02 00 01 00 58 01 00 00 55 55 0A 00 00 00");
    EXPECT_EQ(steps, 22);
}

TEST(Line, ObserverSeesTheBytesInBothDirections) {
    Recorder recorder;
    plc::Line line(BareLine(), &recorder);
    Panel panel(line);
    panel.say("55 55");
    panel.say("0A 00 00 00");
    panel.say(kLogout);
    EXPECT_EQ(recorder.traffic, "> 55 55\n> 0A 00 00 00\n> AA AA 01 00 01 00 59 01 02\n< 55 55 0A 00 01 00\n");
    EXPECT_EQ(recorder.events[0].cause, Cause::kUnexpectedAck);
}

TEST(Line, NoticesAPanelThatDoesNotWaitForTheAnswer) {
    plc::StationDescription station = OneStation();
    station.ackDelay = 5ms;
    plc::LineDescription description = BareLine(station);
    description.bytesPerSecond = 1000;
    plc::Line line(description);
    line.receive(Hex(kLinkCheck), 0ms);
    line.receive(Hex(kLinkCheck), 4ms);
    EXPECT_EQ(line.counters().of(Cause::kSpokeTooEarly), 0U); // the acknowledge is due at 5 ms
    EXPECT_EQ(line.takeOutput(10ms).size(), 5U);
    line.receive(Hex(kAck0), 10ms);
    EXPECT_EQ(line.counters().of(Cause::kSpokeTooEarly), 1U);
    EXPECT_EQ(line.takeOutput(1s).size(), 17U);
    EXPECT_EQ(line.counters().of(Cause::kSpokeTooEarly), 1U);
}

TEST(Line, StationsAreFoundByNameAndNumber) {
    plc::Line line(TwoStations());
    EXPECT_EQ(line.stationCount(), 2U);
    EXPECT_EQ(line.station("far").name(), "far");
    EXPECT_EQ(&line.station(0), &line.station("near"));
    EXPECT_THROW(static_cast<void>(line.station(2)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(line.station("nobody")), std::out_of_range);
}

TEST(Line, RefusesDescriptionsThatMakeNoSense) {
    EXPECT_EQ(ComplaintAboutLine({}), "a line has one station, and only with the routed framing more");
    plc::LineDescription two = TwoStations();
    EXPECT_EQ(ComplaintAboutLine(two), "");
    two.framing = plc::Framing::kBare;
    EXPECT_EQ(ComplaintAboutLine(two), "a line has one station, and only with the routed framing more");
    two = TwoStations();
    two.stations[1].route = two.stations[0].route;
    EXPECT_EQ(ComplaintAboutLine(two), "stations near and far have the same route");
    two = TwoStations();
    two.stations[1].name = "near";
    EXPECT_EQ(ComplaintAboutLine(two), "two stations are named near");
    two = TwoStations();
    two.frameSilence = 0ms;
    EXPECT_EQ(ComplaintAboutLine(two), "the silence that ends a frame must be above 0");
}

TEST(Line, RefusesStationsThatMakeNoSense) {
    auto const complaint = [](auto change) {
        plc::StationDescription station = OneStation();
        change(station);
        return ComplaintAboutLine(BareLine(station));
    };
    EXPECT_EQ(complaint([](auto& s) { s.blockSize = 127; }), "station plc: the block size must be 128 to 1460");
    EXPECT_EQ(complaint([](auto& s) { s.blockSize = 1461; }), "station plc: the block size must be 128 to 1460");
    EXPECT_EQ(complaint([](auto& s) { s.route.levels = 3; }), "station plc: the routing levels must be 0 to 2");
    EXPECT_EQ(complaint([](auto& s) { s.route.level[1].channel = 20; }), "station plc: a channel must be 0 to 19");
    EXPECT_EQ(complaint([](auto& s) { s.route.level[0].coupler = -1; }), "station plc: a coupler must not be negative");
    EXPECT_EQ(complaint([](auto& s) { s.filePieceSize = 0; }), "station plc: the file piece size must be 1 to 65535");
    EXPECT_EQ(complaint([](auto& s) { s.filePieceSize = 65536; }),
              "station plc: the file piece size must be 1 to 65535");
    EXPECT_EQ(complaint([](auto& s) { s.mismatchWord = 0; }), "station plc: the mismatch word must be 0x48 or 0x33");
    EXPECT_EQ(complaint([](auto& s) { s.exchangeTimeout = 0ms; }),
              "station plc: the exchange time-out must be above 0");
    EXPECT_EQ(complaint([](auto& s) { s.ackDelay = -1ms; }), "station plc: a delay must not be negative");
    EXPECT_EQ(complaint([](auto& s) { s.program.variables[0].type = "X"; }), "there is no type \"X\"");
    EXPECT_EQ(complaint([](auto&) {}), "");
}

} // namespace
