#include "plc/station/Station.h"

#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace std::chrono_literals;
using namespace plctest;
using plc::ByteOrder;
using plc::Cause;

plc::ProgramDescription EveryType() {
    plc::ProgramDescription program;
    program.structures = {{.name = "PUMP", .members = {{"Speed", "INT"}, {"On", "BOOL"}}}};
    program.variables = {{.name = "bool", .type = "BOOL", .offset = 0},
                         {.name = "bit", .type = "BIT", .offset = 13},
                         {.name = "sint", .type = "SINT", .offset = 2},
                         {.name = "usint", .type = "USINT", .offset = 3},
                         {.name = "int", .type = "INT", .offset = 4},
                         {.name = "word", .type = "WORD", .offset = 6},
                         {.name = "dint", .type = "DINT", .offset = 8},
                         {.name = "udint", .type = "UDINT", .offset = 12},
                         {.name = "real", .type = "REAL", .offset = 16},
                         {.name = "lreal", .type = "LREAL", .offset = 20},
                         {.name = "lint", .type = "LINT", .offset = 28},
                         {.name = "ulint", .type = "ULINT", .offset = 36},
                         {.name = "time", .type = "TIME", .offset = 44},
                         {.name = "text", .type = "STRING(5)", .offset = 48},
                         {.name = "pumps", .type = "ARRAY [1..2] OF PUMP", .offset = 56},
                         {.name = "ghost", .type = "INT", .offset = 0, .listedOnly = true}};
    return program;
}

plc::LineDescription EveryTypeLine(ByteOrder order) {
    plc::StationDescription station;
    station.byteOrder = order;
    station.program = EveryType();
    return BareLine(station);
}

std::string MemoryAfterSetting(ByteOrder order) {
    plc::Line line(EveryTypeLine(order));
    plc::Station& station = line.station();
    station.setValue("bool", true);
    station.setValue("bit", true);
    station.setValue("sint", -2);
    station.setValue("usint", 254);
    station.setValue("int", -2);
    station.setValue("word", 0x1234);
    station.setValue("dint", -2);
    station.setValue("udint", 0x12345678U);
    station.setValue("real", 1.5);
    station.setValue("lreal", -2);
    station.setValue("lint", -2);
    station.setValue("ulint", 0x0123456789ABCDEFU);
    station.setValue("time", 60'000);
    station.setValue("text", "abc");
    station.setValue("pumps[2].speed", 258);
    station.setValue("pumps[2].on", 1);
    return Show(station.memory().area(0).first(64));
}

TEST(StationValues, LieInMemoryLeastSignificantByteFirst) {
    EXPECT_EQ(MemoryAfterSetting(ByteOrder::kLittle), "01 20 FE FE FE FF 34 12 FE FF FF FF 78 56 34 12 "
                                                      "00 00 C0 3F 00 00 00 00 00 00 00 C0 FE FF FF FF "
                                                      "FF FF FF FF EF CD AB 89 67 45 23 01 60 EA 00 00 "
                                                      "61 62 63 00 00 00 00 00 00 00 00 00 02 01 01 00");
}

TEST(StationValues, LieInMemoryMostSignificantByteFirst) {
    EXPECT_EQ(MemoryAfterSetting(ByteOrder::kBig), "01 20 FE FE FF FE 12 34 FF FF FF FE 12 34 56 78 "
                                                   "3F C0 00 00 C0 00 00 00 00 00 00 00 FF FF FF FF "
                                                   "FF FF FF FE 01 23 45 67 89 AB CD EF 00 00 EA 60 "
                                                   "61 62 63 00 00 00 00 00 00 00 00 00 01 02 01 00");
}

class StationValue : public testing::TestWithParam<ByteOrder> {
protected:
    plc::Line line{EveryTypeLine(GetParam())};
    plc::Station& station{line.station()};
};

INSTANTIATE_TEST_SUITE_P(BothOrders, StationValue, testing::Values(ByteOrder::kLittle, ByteOrder::kBig));

TEST_P(StationValue, ComesBackAsItWasSet) {
    station.setValue("SINT", -128);
    EXPECT_EQ(station.get<int>("sint"), -128);
    station.setValue("word", 65535);
    EXPECT_EQ(station.get<unsigned>("word"), 65535U);
    station.setValue("lint", INT64_MIN);
    EXPECT_EQ(station.get<std::int64_t>("lint"), INT64_MIN);
    station.setValue("ulint", UINT64_MAX);
    EXPECT_EQ(station.get<std::uint64_t>("ulint"), UINT64_MAX);
    station.setValue("real", 0.1F);
    EXPECT_EQ(station.get<float>("real"), 0.1F);
    station.setValue("real", INFINITY);
    EXPECT_TRUE(std::isinf(station.get<float>("real")));
    station.setValue("lreal", 0.1);
    EXPECT_EQ(station.get<double>("lreal"), 0.1);
    station.setValue("text", "abcde");
    EXPECT_EQ(station.get<std::string>("text"), "abcde");
    station.setValue("text", "");
    EXPECT_EQ(station.get<std::string>("text"), "");
    station.setValue("bit", true);
    EXPECT_TRUE(station.get<bool>("bit"));
    station.setValue("bit", false);
    EXPECT_FALSE(station.get<bool>("bit"));
    station.setValue("pumps[1].on", true);
    EXPECT_EQ(station.getValue("pumps[1].on"), plc::Value(true));
}

TEST_P(StationValue, SettingABitLeavesItsNeighbours) {
    station.memory().area(0)[1] = 0xFF;
    station.setValue("bit", 0);
    EXPECT_EQ(station.memory().area(0)[1], 0xDF);
    station.memory().area(0)[1] = 0x00;
    station.setValue("bit", 1);
    EXPECT_EQ(station.memory().area(0)[1], 0x20);
}

TEST_P(StationValue, ThatDoesNotFitIsRefusedAndChangesNothing) {
    for (char const* const name : {"bool", "bit", "sint", "usint", "int", "word"}) {
        EXPECT_THROW(station.setValue(name, 70'000), std::invalid_argument) << name;
        EXPECT_THROW(station.setValue(name, -70'000), std::invalid_argument) << name;
        EXPECT_THROW(station.setValue(name, 1.5), std::invalid_argument) << name;
        EXPECT_THROW(station.setValue(name, "1"), std::invalid_argument) << name;
        EXPECT_EQ(station.get<int>(name), 0) << name;
    }
    EXPECT_THROW(station.setValue("usint", -1), std::invalid_argument);
    EXPECT_THROW(station.setValue("ulint", -1), std::invalid_argument);
    EXPECT_THROW(station.setValue("lint", UINT64_MAX), std::invalid_argument);
    EXPECT_THROW(station.setValue("bool", 2), std::invalid_argument);
    EXPECT_THROW(station.setValue("real", 1e39), std::invalid_argument);
    EXPECT_THROW(station.setValue("real", "x"), std::invalid_argument);
    EXPECT_THROW(station.setValue("text", "abcdef"), std::invalid_argument);
    EXPECT_THROW(station.setValue("text", 1), std::invalid_argument);
}

TEST_P(StationValue, OfNoElementaryVariableIsRefused) {
    for (char const* const name : {"pumps", "pumps[1]", "ghost", "nothing"}) {
        EXPECT_THROW(station.setValue(name, 1), std::invalid_argument) << name;
        EXPECT_THROW(static_cast<void>(station.getValue(name)), std::invalid_argument) << name;
    }
    EXPECT_THROW(static_cast<void>(station.get<int>("text")), std::invalid_argument);
}

TEST(StationProgram, StartsWithItsInitialValues) {
    plc::StationDescription description = OneStation(ByteOrder::kBig);
    description.program.variables[0].value = 0x0102;
    plc::Line line(BareLine(description));
    EXPECT_EQ(Show(line.station().memory().area(0).first(2)), "01 02");
    description.program.variables[0].value = 40'000;
    description.program.variables[0].line = 5;
    try {
        plc::Line const wrong(BareLine(description));
        FAIL() << "the value does not fit";
    } catch (plc::DescriptionError const& fault) {
        EXPECT_STREQ(fault.what(), "variable PLC_PRG.Counter: the value does not fit the type");
        EXPECT_EQ(fault.line(), 5);
    }
}

TEST(StationProgram, AReplacedProgramRefusesListsOfTheOldOne) {
    Recorder recorder;
    plc::Line line(BareLine(), &recorder);
    Panel panel(line);
    ASSERT_EQ(Exchange(panel, kLogin), kLoginAccepted);
    ASSERT_EQ(Exchange(panel, kEmptyRead), kEmptyReadReply);
    plc::ProgramDescription next;
    next.projectId = 2;
    next.variables = {{.name = "PLC_PRG.Other", .type = "DINT", .value = 7}};
    line.station().replaceProgram(next);
    EXPECT_TRUE(line.station().loggedIn());
    EXPECT_EQ(line.station().get<int>("PLC_PRG.Other"), 7);
    EXPECT_THROW(static_cast<void>(line.station().getValue("PLC_PRG.Counter")), std::invalid_argument);
    EXPECT_EQ(Exchange(panel, kEmptyRead), "AA AA 02 00 01 00 A0 01 48 00");
    // Identifier 2: the sum is one higher.
    EXPECT_EQ(Exchange(panel, "AA AA 0A 00 01 00 90 01 2E 00 00 00 00 00 02 00 00 00"), kEmptyReadReply);
    EXPECT_EQ(line.counters().complaints(), 0U);
    EXPECT_EQ(line.counters().of(Cause::kProgramChanged), 1U);
}

TEST(StationProgram, AProgramThatMakesNoSenseDoesNotReplaceTheOldOne) {
    plc::Line line(BareLine());
    plc::ProgramDescription next;
    next.variables = {{.name = "v", .type = "NOTHING"}};
    EXPECT_THROW(line.station().replaceProgram(next), plc::DescriptionError);
    EXPECT_EQ(line.station().get<int>("PLC_PRG.Counter"), 0);
}

TEST(StationProgram, ReplacingTheProgramEndsAFileTransfer) {
    plc::StationDescription description = OneStation();
    description.filePieceSize = 1;
    plc::Line line(BareLine(description));
    Panel panel(line);
    ASSERT_EQ(Exchange(panel, kLogin), kLoginAccepted);
    // 31 00 0D 00 and the name, whose sum is 35F: AA + AA + 11 + 01 + 01 + 31 + 0D + 35F = 504.
    std::string const open = "AA AA 11 00 01 00 04 01 31 00 0D 00 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00";
    // The first byte of the file is 1: AA + AA + 07 + 01 + 01 + 01 + 01 + 01.
    EXPECT_EQ(Exchange(panel, open), "AA AA 07 00 01 00 60 01 00 00 01 00 01 00 01");
    line.station().replaceProgram({});
    EXPECT_EQ(Exchange(panel, "AA AA 01 00 01 00 89 01 32"), "AA AA 06 00 01 00 63 01 07 00 00 00 00 00");
}

TEST(StationProgram, RestartLosesTheLoginAndKeepsTheValues) {
    plc::Line line(BareLine());
    Panel panel(line);
    ASSERT_EQ(Exchange(panel, kLogin), kLoginAccepted);
    line.station().setValue("PLC_PRG.Counter", 5);
    line.station().restart();
    EXPECT_EQ(Exchange(panel, kEmptyRead), "AA AA 02 00 01 00 5A 01 02 00");
    EXPECT_EQ(line.station().get<int>("PLC_PRG.Counter"), 5);
    EXPECT_EQ(line.counters().of(Cause::kRestarted), 1U);
}

/** Counts its ticks in the program's counter. */
class Counting : public plc::Behaviour {
public:
    explicit Counting(std::vector<plc::Micros>& times) : times_(times) {}
    void onTick(plc::Station& station, plc::Micros now) override {
        station.setValue("PLC_PRG.Counter", station.get<int>("PLC_PRG.Counter") + 1);
        times_.push_back(now);
    }

private:
    std::vector<plc::Micros>& times_;
};

TEST(StationBehaviour, TicksAtItsIntervalInTheLinesTime) {
    plc::Line line(BareLine());
    std::vector<plc::Micros> times;
    line.station().setBehaviour(std::make_unique<Counting>(times), 100ms);
    line.advance(1s);
    EXPECT_EQ(line.nextDeadline(), 1100ms);
    line.advance(1099ms);
    EXPECT_TRUE(times.empty());
    line.advance(1350ms);
    EXPECT_EQ(times, (std::vector<plc::Micros>{1100ms, 1200ms, 1300ms}));
    EXPECT_EQ(line.station().get<int>("PLC_PRG.Counter"), 3);
    line.station().setBehaviour(nullptr, 1ms);
    EXPECT_FALSE(line.nextDeadline());
    EXPECT_THROW(line.station().setBehaviour(nullptr, 0ms), std::invalid_argument);
}

} // namespace
