#include "tools/velk/plc/EventPrinter.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace std::chrono_literals;
using plc::Cause;
using velk::simulation::eventJson;
using velk::simulation::EventPrinter;
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

TEST(PlcEventPrinter, LeavesFinishedExchangesOutUnlessTheyAreWanted) {
    for (bool const wanted : {false, true}) {
        std::string printed;
        EventPrinter printer(
            EventStyle::Text, wanted, kStations, [&](std::string_view line) { printed += line; }, [] {});
        printer.onEvent({.station = 0, .cause = Cause::kExchangeDone, .text = "x"});
        EXPECT_EQ(!printed.empty(), wanted);
        printer.onEvent({.station = 0, .cause = Cause::kLoggedIn, .text = "x"});
        EXPECT_NE(printed.find("logged in: x\n"), std::string::npos);
    }
}

TEST(PlcEventPrinter, PrintsNothingWhenItIsToldSo) {
    EventPrinter printer(
        EventStyle::None, true, kStations, [](std::string_view line) { ADD_FAILURE() << line; }, [] {});
    printer.onEvent({.station = 0, .cause = Cause::kLoggedIn, .text = "x"});
    printer.check();
}

TEST(PlcEventPrinter, KeepsWhatPrintingThrewAndSaysSo) {
    int prints = 0;
    int failures = 0;
    EventPrinter printer(
        EventStyle::Json, false, kStations,
        [&](std::string_view /*line*/) {
            ++prints;
            throw std::runtime_error("broken pipe");
        },
        [&] { ++failures; });
    printer.onEvent({.station = 0, .cause = Cause::kLoggedIn, .text = "x"});
    printer.onEvent({.station = 0, .cause = Cause::kLoggedOut, .text = "x"});
    EXPECT_EQ(prints, 1);
    EXPECT_EQ(failures, 1);
    EXPECT_THROW(printer.check(), std::runtime_error);
}

} // namespace
