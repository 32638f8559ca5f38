#include "tools/velk/commands/simulate/EventPrinter.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using plc::Cause;
using velk::simulation::eventJson;
using velk::simulation::EventPrinter;
using velk::simulation::EventQueue;
using velk::simulation::EventStyle;
using velk::simulation::eventText;

std::vector<std::string> const kStations{"press", "oven"};

TEST(PlcEvents, AreALineEach) {
    EXPECT_EQ(
        eventText({.time = 12'345'678us, .station = 1, .cause = Cause::kListRead, .text = "1 item read: A"}, kStations),
        "      12.346  oven   list read: 1 item read: A");
    EXPECT_EQ(
        eventText({.time = 0us, .station = plc::kNoStation, .cause = Cause::kGarbage, .text = "3 bytes"}, kStations),
        "       0.000  -      ! garbage: 3 bytes");
}

TEST(PlcEvents, AreNotSaidTwice) {
    EXPECT_EQ(eventText({.time = 0us, .station = 0, .cause = Cause::kLoggedIn, .text = "logged in"}, kStations),
              "       0.000  press  logged in");
}

TEST(PlcEvents, DoNothingToATerminal) {
    EXPECT_EQ(eventText({.time = 0us, .station = 0, .cause = Cause::kNoSuchFile, .text = "there is no file \x1b[2J"},
                        kStations),
              "       0.000  press  ! no such file: there is no file \\x1B[2J");
}

TEST(PlcEvents, AreJsonObjects) {
    EXPECT_EQ(eventJson({.time = 1'500'000us, .station = 0, .cause = Cause::kLoggedIn, .text = "logged in"}, kStations),
              R"({"time":1.5,"station":"press","event":"logged in","complaint":false,"text":"logged in"})");
    EXPECT_EQ(
        eventJson({.time = 0us, .station = plc::kNoStation, .cause = Cause::kNoSuchFile, .text = "\xFF"}, kStations),
        "{\"time\":0.0,\"event\":\"no such file\",\"complaint\":true,\"text\":\"\xC3\xBF\"}");
}

TEST(PlcEvents, AreCountedAtTheEnd) {
    plc::EventCounters counters;
    EXPECT_EQ(velk::simulation::endText(counters, 61'300ms),
              "      61.300  end: 0 exchanges, 0 lists read, 0 lists written; 0 complaints");
    counters.count(Cause::kExchangeDone);
    counters.count(Cause::kListRead);
    counters.count(Cause::kListWritten);
    counters.count(Cause::kGarbage);
    counters.count(Cause::kGarbage);
    counters.count(Cause::kLoggedIn);
    EXPECT_EQ(velk::simulation::endText(counters, 0ms),
              "       0.000  end: 1 exchange, 1 list read, 1 list written, 1 x logged in, 2 x garbage; 2 complaints");
    EXPECT_EQ(velk::simulation::endJson(counters, 500ms),
              R"({"time":0.5,"event":"end","counts":{"exchange done":1,"logged in":1,"list read":1,"list written":1,)"
              R"("garbage":2},"complaints":2})");
}

TEST(PlcEvents, ThatNobodyReadAreCounted) {
    EXPECT_EQ(velk::simulation::leftOutText(1'234, 2'500ms),
              "       2.500  left out: 1,234 events that nobody read in time");
    EXPECT_EQ(velk::simulation::leftOutJson(1, 2'500ms), R"({"time":2.5,"event":"left out","count":1})");
}

/** A printer and what it has printed. */
class PlcEventPrinter : public testing::Test {
protected:
    EventQueue queue{10'000, [](std::size_t /*count*/, plc::Micros /*time*/) { return ""; }};
};

TEST_F(PlcEventPrinter, LeavesFinishedExchangesOutUnlessTheyAreWanted) {
    for (bool const wanted : {false, true}) {
        EventPrinter printer(EventStyle::Text, wanted, kStations, queue);
        printer.onEvent({.station = 0, .cause = Cause::kExchangeDone, .text = "x"});
        EXPECT_EQ(!queue.take().empty(), wanted);
        printer.onEvent({.station = 0, .cause = Cause::kLoggedIn, .text = "x"});
        EXPECT_EQ(queue.take(), "       0.000  press  logged in: x\n");
    }
}

TEST_F(PlcEventPrinter, PrintsNothingWhenItIsToldSo) {
    EventPrinter printer(EventStyle::None, true, kStations, queue);
    printer.onEvent({.station = 0, .cause = Cause::kLoggedIn, .text = "x"});
    EXPECT_EQ(queue.take(), "");
}

} // namespace
