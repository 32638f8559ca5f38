#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using plc::Cause;
using namespace plctest;

using Causes = std::vector<Cause>;

TEST(Link, OneExchangeInBareLittleEndianFraming) {
    Recorder recorder;
    plc::Line line(BareLine(), &recorder);
    Panel panel(line);
    EXPECT_EQ(panel.say(kLinkCheck), "55 55 0A 00 01 00");
    EXPECT_EQ(panel.say("55 55 0A 00 00 00"), "AA AA 02 00 01 00 58 01 00 00");
    EXPECT_EQ(panel.say("55 55 0A 00 01 00"), "55 55 0A 00 00 00");
    EXPECT_EQ(recorder.causes(), (Causes{Cause::kLinkChecked, Cause::kExchangeDone}));
    EXPECT_EQ(recorder.lastText(), "a request of 9 bytes, a response of 2");
    EXPECT_FALSE(line.nextDeadline());
}

TEST(Link, OneExchangeInBareBigEndianFraming) {
    plc::Line line(BareLine(OneStation(plc::ByteOrder::kBig)));
    Panel panel(line);
    EXPECT_EQ(panel.say("AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05"), "55 55 00 0A 00 01");
    EXPECT_EQ(panel.say("55 55 00 0A 00 00"), "AA AA 00 02 00 01 58 01 00 00");
    EXPECT_EQ(panel.say("55 55 00 0A 00 01"), "55 55 00 0A 00 00");
    EXPECT_EQ(line.counters().complaints(), 0U);
}

TEST(Link, RoutedFramingPutsTheHeaderInFrontOfEveryFrame) {
    plc::StationDescription station = OneStation(plc::ByteOrder::kBig);
    station.route.levels = 2;
    station.route.level[0] = {.coupler = 0, .channel = 3, .address = {10, 0, 0, 1}};
    station.route.level[1] = {.coupler = 4, .channel = 0, .address = {10, 0, 0, 2}};
    plc::Line line({.framing = plc::Framing::kRouted, .stations = {station}});
    Panel panel(line);
    std::string const header = "4F 80 00 20 0D 0A 00 00 01 00 50 0A 00 00 02 00 00 00 00 ";
    EXPECT_EQ(panel.say(header + "AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05"), header + "55 55 00 0A 00 01");
    EXPECT_EQ(panel.say(header + "55 55 00 0A 00 00"), header + "AA AA 00 02 00 01 58 01 00 00");
    EXPECT_EQ(panel.say(header + "55 55 00 0A 00 01"), header + "55 55 00 0A 00 00");
    EXPECT_EQ(line.counters().complaints(), 0U);
}

TEST(Link, RequestAndResponseOfSeveralBlocks) {
    Recorder recorder;
    plc::Line line(BareLine(), &recorder);
    Panel panel(line);
    ASSERT_EQ(Exchange(panel, kLogin), kLoginAccepted);
    // An unknown service, 121 bytes: 120 in the first block, AA + AA + 78 + 01 + 7F = 24C, and one in the second.
    EXPECT_EQ(panel.say(Hex("AA AA 78 00 01 00 4C 00 7F") + Zeros(119)), kAck1);
    EXPECT_EQ(panel.say("AA AA 01 00 02 00 58 01 00"), "55 55 0A 00 02 00");
    EXPECT_EQ(panel.say(kAck0), "AA AA 02 00 01 00 5C 01 04 00");
    EXPECT_EQ(panel.say(kAck1), kAck0);
    EXPECT_EQ(recorder.lastText(), "a request of 121 bytes, a response of 2");
    // 114 bytes of area 0: 6 + 1 + 114 = 121 bytes of response.
    EXPECT_EQ(panel.say("AA AA 14 00 01 00 0C 01 2E 00 01 00 00 00 00 00 00 00 00 00 72 00 00 00 01 00 00 00"), kAck1);
    EXPECT_EQ(panel.say(kAck0), Show(Hex("AA AA 78 00 01 00 CE 00 00 00 00 00 00 00 01") + Zeros(113)));
    EXPECT_EQ(panel.say(kAck1), "AA AA 01 00 02 00 58 01 00");
    EXPECT_EQ(panel.say("55 55 0A 00 02 00"), kAck0);
    EXPECT_EQ(recorder.lastText(), "a request of 20 bytes, a response of 121");
}

TEST(Link, LargestBlockCarriesItsWholePayload) {
    plc::StationDescription station = OneStation();
    station.blockSize = 1460;
    plc::Line line(BareLine(station));
    Panel panel(line);
    // 1452 bytes: AA + AA + AC + 05 + 01 + 01 + 7F = 286.
    EXPECT_EQ(panel.say(Hex("AA AA AC 05 01 00 86 01 7F") + Zeros(1451)), kAck1);
    EXPECT_EQ(line.counters().complaints(), 0U);
}

TEST(Link, WrongBlockNumberIsNotAnswered) {
    Recorder recorder;
    plc::Line line(BareLine(), &recorder);
    Panel panel(line);
    EXPECT_EQ(panel.say("AA AA 01 00 02 00 5A 01 02"), "");
    EXPECT_EQ(recorder.lastText(), "block 2 came without a request");
    EXPECT_EQ(panel.say(Hex("AA AA 78 00 01 00 4C 00 7F") + Zeros(119)), kAck1);
    EXPECT_EQ(panel.say("AA AA 01 00 03 00 59 01 00"), "");
    EXPECT_EQ(recorder.lastText(), "block 3 came instead of block 2");
    EXPECT_EQ(panel.say("AA AA 01 00 02 00 58 01 00"), kAck2);
    EXPECT_EQ(panel.say("AA AA 01 00 02 00 58 01 00"), "");
    EXPECT_EQ(line.counters().of(Cause::kBlockNumber), 3U);
}

TEST(Link, WrongAcknowledgeNumberIsNotAnswered) {
    Recorder recorder;
    plc::Line line(BareLine(), &recorder);
    Panel panel(line);
    ASSERT_EQ(panel.say(kLinkCheck), kAck1);
    EXPECT_EQ(panel.say(kAck1), "");
    EXPECT_EQ(recorder.lastText(), "an acknowledge of block 1 came instead of one of 0");
    EXPECT_EQ(panel.say(kAck0), kStatusDone);
    EXPECT_EQ(panel.say(kAck2), "");
    EXPECT_EQ(panel.say(kAck1), kAck0);
    EXPECT_EQ(line.counters().of(Cause::kAckNumber), 2U);
}

TEST(Link, TurnaroundWithoutARequestIsNotAnswered) {
    plc::Line line(BareLine());
    Panel panel(line);
    EXPECT_EQ(panel.say(kAck0), "");
    EXPECT_EQ(line.counters().of(Cause::kUnexpectedAck), 1U);
    // Nor is an acknowledge in the middle of a request.
    ASSERT_EQ(panel.say(Hex("AA AA 78 00 01 00 4C 00 7F") + Zeros(119)), kAck1);
    EXPECT_EQ(panel.say(kAck0), "");
    EXPECT_EQ(line.counters().of(Cause::kUnexpectedAck), 2U);
}

TEST(Link, BlockOneBeginsANewRequestAtAnyTime) {
    plc::Line line(BareLine());
    Panel panel(line);
    ASSERT_EQ(panel.say(Hex("AA AA 78 00 01 00 4C 00 7F") + Zeros(119)), kAck1);
    EXPECT_EQ(panel.say(kLinkCheck), kAck1);
    EXPECT_EQ(panel.say(kLinkCheck), kAck1);
    ASSERT_EQ(panel.say(kAck0), kStatusDone);
    EXPECT_EQ(Exchange(panel, kLinkCheck), kStatusDone);
    EXPECT_EQ(line.counters().of(Cause::kExchangeAbandoned), 3U);
}

TEST(Link, ExchangeIsGivenUpWhenThePanelFallsSilent) {
    Recorder recorder;
    plc::Line line(BareLine(), &recorder);
    Panel panel(line);
    ASSERT_EQ(panel.say(kLinkCheck), kAck1);
    EXPECT_EQ(line.nextDeadline(), 1s);
    EXPECT_EQ(panel.hearAfter(999'999us), "");
    EXPECT_TRUE(recorder.events.empty());
    EXPECT_EQ(panel.hearAfter(1us), "");
    EXPECT_EQ(recorder.causes(), Causes{Cause::kExchangeTimeout});
    EXPECT_EQ(recorder.events[0].time, 1s);
    EXPECT_FALSE(line.nextDeadline());
    EXPECT_EQ(panel.say(kAck0), "");
    EXPECT_EQ(Exchange(panel, kLinkCheck), kStatusDone);
}

TEST(Link, RequestOverSeventyFiveThousandBytesIsDropped) {
    plc::StationDescription station = OneStation();
    station.blockSize = 1458; // 1450 bytes of payload: 51 blocks carry 73,950, the 52nd makes 75,400
    plc::Line line(BareLine(station));
    Panel panel(line);
    for (unsigned number = 1; number <= 51; ++number) {
        // AA + AA + AA + 05 = 203, and the number
        plc::Bytes frame = Hex("AA AA AA 05 00 00 00 00") + Zeros(1450);
        frame[4] = static_cast<std::uint8_t>(number);
        frame[6] = static_cast<std::uint8_t>(0x203 + number);
        ASSERT_NE(panel.say(frame), "") << number;
    }
    EXPECT_EQ(panel.say(Hex("AA AA AA 05 34 00 37 00") + Zeros(1450)), "");
    EXPECT_EQ(line.counters().of(Cause::kRequestTooLong), 1U);
    EXPECT_EQ(panel.say(kLinkCheck), kAck1);
}

TEST(Link, AcknowledgesAndAnswersAfterTheirDelays) {
    plc::StationDescription station = OneStation();
    station.ackDelay = 3ms;
    station.answerDelay = 7ms;
    plc::Line line(BareLine(station));
    Panel panel(line);
    EXPECT_EQ(panel.say(kLinkCheck), "");
    EXPECT_EQ(line.nextDeadline(), 3ms);
    EXPECT_EQ(panel.hearAfter(3ms), kAck1);
    EXPECT_EQ(panel.say(kAck0), "");
    EXPECT_EQ(panel.hearAfter(6'999us), "");
    EXPECT_EQ(panel.hearAfter(1us), kStatusDone);
}

TEST(Link, WaitsFromTheEndOfItsOwnFrameOn) {
    plc::StationDescription station = OneStation();
    station.exchangeTimeout = 10ms;
    plc::LineDescription description = BareLine(station);
    description.bytesPerSecond = 1000;
    plc::Line line(description);
    Panel panel(line);
    EXPECT_EQ(panel.say(kLinkCheck), "");
    EXPECT_EQ(panel.hearAfter(6ms), kAck1);
    // The acknowledge was sent after 6 ms; the panel has until 16 ms.
    EXPECT_EQ(panel.hearAfter(9'999us), "");
    EXPECT_EQ(line.counters().of(Cause::kExchangeTimeout), 0U);
    EXPECT_EQ(panel.hearAfter(1us), "");
    EXPECT_EQ(line.counters().of(Cause::kExchangeTimeout), 1U);
}

TEST(Link, RestartForgetsTheExchange) {
    plc::Line line(BareLine());
    Panel panel(line);
    ASSERT_EQ(panel.say(kLinkCheck), kAck1);
    line.station().restart();
    EXPECT_EQ(panel.say(kAck0), "");
    EXPECT_EQ(line.counters().of(Cause::kUnexpectedAck), 1U);
}

} // namespace
