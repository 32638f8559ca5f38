#include "tools/velk/commands/simulate/SimulatedLine.h"

#include "plc/files/LineFile.h"
#include "tests/support/TempDir.h"
#include "tools/velk/context/CommandError.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using namespace std::chrono_literals;
using velk::PlcOptions;
using velk::simulation::Happening;
using velk::simulation::makePlan;
using velk::simulation::Plan;

/** Descriptions in a folder that goes with the test. */
class PlcPlan : public testing::Test {
protected:
    PlcPlan() {
        write("program.toml", "project_id = 7\n[[variable]]\nname = 'Level'\ntype = 'INT'\n");
        write("other.toml", "project_id = 99\n");
        write("line.toml", "framing = 'ABB_RS232_AC'\nbaud = 9600\n"
                           "[[station]]\nname = 'press'\nprogram = 'program.toml'\n"
                           "[[station]]\nname = 'oven'\nrouting_levels = 1\nfault = [{ kind = 'late' }]\n");
        options.project = path("line.toml");
    }

    void write(std::string const& name, std::string_view text) const { std::ofstream(folder / name) << text; }
    [[nodiscard]] std::string path(std::string const& name) const { return (folder / name).string(); }

    [[nodiscard]] std::string complaint() const {
        try {
            static_cast<void>(makePlan(options));
            return "";
        } catch (velk::CommandError const& error) {
            EXPECT_EQ(error.code(), velk::ExitCode::Usage);
            return error.what();
        } catch (base::FileError const& error) {
            return error.what();
        }
    }

    velktest::TempDir temporary;
    std::filesystem::path folder = temporary.Path();
    PlcOptions options;
};

std::vector<plc::FaultKind> KindsAt(Plan const& plan, std::size_t station) {
    std::vector<plc::FaultKind> kinds;
    for (plc::FaultRule const& rule : plan.line.stations[station].faults) {
        kinds.push_back(rule.kind);
    }
    return kinds;
}

TEST_F(PlcPlan, OfALineFileIsWhatItSays) {
    Plan const plan = makePlan(options);
    EXPECT_EQ(plan.line.framing, plc::Framing::kRouted);
    EXPECT_EQ(plan.line.bytesPerSecond, 960U);
    EXPECT_FALSE(plan.line.portPaces);
    ASSERT_EQ(plan.line.stations.size(), 2U);
    EXPECT_EQ(plan.line.stations[0].program.projectId, 7U);
    EXPECT_TRUE(plan.happenings.empty());
}

TEST_F(PlcPlan, OfAProgramAloneIsALineOfTheDriversOwnDefaults) {
    options.project = path("program.toml");
    Plan const plan = makePlan(options);
    EXPECT_EQ(plan.line.framing, plc::Framing::kRouted);
    EXPECT_EQ(plan.line.speed.baud, 19'200U);
    EXPECT_EQ(plan.line.bytesPerSecond, 1'920U);
    ASSERT_EQ(plan.line.stations.size(), 1U);
    EXPECT_EQ(plan.line.stations[0].byteOrder, plc::ByteOrder::kBig);
    EXPECT_EQ(plan.line.stations[0].blockSize, 128U);
    EXPECT_EQ(plan.line.stations[0].route.levels, 0);
    EXPECT_EQ(plan.line.stations[0].program.projectId, 7U);
}

TEST_F(PlcPlan, FlagsCountMoreThanTheDescription) {
    options.project = path("program.toml");
    options.framing = "bare";
    options.byteOrder = "little";
    options.blockSize = 512;
    options.baud = 38'400;
    options.parity = "even";
    options.stopBits = 2;
    Plan const plan = makePlan(options);
    EXPECT_EQ(plan.line.framing, plc::Framing::kBare);
    EXPECT_EQ(plan.line.stations[0].byteOrder, plc::ByteOrder::kLittle);
    EXPECT_EQ(plan.line.stations[0].blockSize, 512U);
    EXPECT_EQ(plan.line.bytesPerSecond, 3'200U); // 12 bits a character
}

TEST_F(PlcPlan, ALineWithoutASpeedGetsOneForARealPort) {
    write("line.toml", "framing = 'Serial_RS232'\n[[station]]\n");
    EXPECT_EQ(makePlan(options).line.bytesPerSecond, 0U);
    options.port = "/dev/ttyUSB0";
    Plan const plan = makePlan(options);
    EXPECT_EQ(plan.line.speed.baud, 19'200U);
    EXPECT_EQ(plan.line.bytesPerSecond, 1'920U);
    EXPECT_TRUE(plan.line.portPaces);
}

TEST_F(PlcPlan, APseudoTerminalHasAnySpeedThatALineMayHave) {
    for (int const baud : {50, 12'345, 4'000'000}) {
        options.baud = baud;
        EXPECT_EQ(makePlan(options).line.speed.baud, static_cast<std::uint32_t>(baud));
    }
    for (int const baud : {-5, 0, 49, 4'000'001, 2'000'000'000}) {
        options.baud = baud;
        EXPECT_EQ(complaint(), "--baud: " + std::to_string(baud) + " is not a line speed from 50 to 4000000 bit/s");
    }
}

TEST_F(PlcPlan, ARealPortHasTheSpeedsThatSerialPortsKnow) {
    options.port = "/dev/ttyUSB0";
    options.baud = 4'000'000;
    EXPECT_EQ(makePlan(options).line.speed.baud, 4'000'000U);
    for (int const baud : {-5, 0, 12'345, 2'000'000'000}) {
        options.baud = baud;
        EXPECT_EQ(complaint(), "--baud: a serial line cannot run at " + std::to_string(baud) +
                                   " bit/s, only at a standard rate such as 9600, 19200, 38400, 57600 or 115200");
    }
}

TEST_F(PlcPlan, APaceInTheFileStaysUnlessASpeedIsGiven) {
    write("line.toml", "framing = 'Serial_RS232'\nbytes_per_second = 50\n[[station]]\n");
    EXPECT_EQ(makePlan(options).line.bytesPerSecond, 50U);
    options.baud = 9'600;
    EXPECT_EQ(makePlan(options).line.bytesPerSecond, 960U);
}

TEST_F(PlcPlan, SlowFramesDoNotEndAnExchange) {
    options.baud = 300; // 30 characters a second; two frames of 19 + 128 bytes take 9.8 s
    EXPECT_EQ(makePlan(options).line.stations[0].exchangeTimeout, 1s + 9'800ms);
}

TEST_F(PlcPlan, FaultsAreAddedAtEveryStation) {
    options.drop = 0.01;
    options.flip = 0.5;
    options.refuseLogin = true;
    options.silent = {{.from = 60s, .lasts = 5s, .every = 60s}};
    options.badQuality = {"Level"};
    options.faults = {"kind = 'late', nth = 3"};
    Plan const plan = makePlan(options);
    using enum plc::FaultKind;
    EXPECT_EQ(KindsAt(plan, 0), (std::vector{kSilent, kAckMissing, kBlockMissing, kClosingMissing, kFlippedBits,
                                             kStatusWord, kSilent, kBadQuality, kLate}));
    EXPECT_EQ(KindsAt(plan, 1).size(), 10U); // with its own
    auto const& faults = plan.line.stations[0].faults;
    EXPECT_DOUBLE_EQ(faults[1].when.probability.value(), 0.01);
    EXPECT_DOUBLE_EQ(faults[4].when.probability.value(), 0.5);
    EXPECT_EQ(faults[5].service, plc::ServiceKind::kLogin);
    EXPECT_EQ(faults[6].when.window->lasts, 5s);
    EXPECT_EQ(faults[7].variable, "Level");
    EXPECT_EQ(faults[8].when.first, 3U);
}

TEST_F(PlcPlan, FaultsCanBeForOneStation) {
    options.refuseLogin = true;
    options.station = "PRESS";
    Plan const plan = makePlan(options);
    EXPECT_EQ(KindsAt(plan, 0), std::vector{plc::FaultKind::kStatusWord});
    EXPECT_EQ(KindsAt(plan, 1), std::vector{plc::FaultKind::kLate});
}

TEST_F(PlcPlan, HappeningsComeInTheOrderOfTheirTimes) {
    options.replaceProgram = {{.after = 60s, .file = ""}, {.after = 30s, .file = path("other.toml")}};
    options.restart = {45s};
    options.station = "press";
    Plan const plan = makePlan(options);
    ASSERT_EQ(plan.happenings.size(), 3U);
    EXPECT_EQ(plan.happenings[0].at, 30s);
    EXPECT_EQ(plan.happenings[0].kind, Happening::Kind::ReplaceProgram);
    EXPECT_EQ(plan.happenings[0].program.projectId, 99U);
    EXPECT_EQ(plan.happenings[1].kind, Happening::Kind::Restart);
    EXPECT_EQ(plan.happenings[2].at, 60s);
    EXPECT_EQ(plan.happenings[2].program.projectId, 8U); // the one before it, downloaded again
}

TEST_F(PlcPlan, EveryStationGetsASeedOfItsOwn) {
    options.seed = 5;
    Plan const plan = makePlan(options);
    EXPECT_EQ(plan.line.stations[0].faultSeed, 5U);
    EXPECT_EQ(plan.line.stations[1].faultSeed, 6U);
}

TEST_F(PlcPlan, WhatIsWrongIsRefused) {
    EXPECT_EQ(complaint(), "");
    options.station = "pres";
    EXPECT_EQ(complaint(), "--only: there is no station 'pres'; there is press or oven");
    options.station.reset();
    options.badQuality = {"Pressure"};
    EXPECT_EQ(complaint(), "--bad-quality: there is no variable Pressure");
    options.badQuality.clear();
    options.faults = {"kind = 'x'"};
    EXPECT_TRUE(complaint().starts_with("--fault:1:8: 'kind' is 'x'; it must be silent, ")) << complaint();
    options.faults = {"kind = 'bad_quality', variable = 'Pressure'"};
    EXPECT_EQ(complaint(), "--fault: there is no variable Pressure");
    options.faults = {"kind = 'bad_quality', variable = 'Level'"};
    EXPECT_EQ(complaint(), "");
    options.station = "oven"; // where there is no Level
    EXPECT_EQ(complaint(), "--fault: there is no variable Level");
    options.station.reset();
    options.faults = {"kind = 'late', item = 1"};
    EXPECT_EQ(complaint(), "--fault:1:23: 'item' has no meaning for late, only for bad_quality");
    options.faults.clear();
    options.replaceProgram = {{.after = 1s, .file = path("none.toml")}};
    EXPECT_EQ(complaint(), "--replace-program: " + path("none.toml") + ": No such file or directory");
    options.replaceProgram.clear();
    options.framing = "bare";
    EXPECT_EQ(complaint(), "a line has one station, and only with the routed framing more");
    options.framing.reset();
    write("line.toml", "framing = 'Smoke'\n");
    EXPECT_EQ(complaint(), path("line.toml") + ":1:11: 'framing' is 'Smoke'; it must be Serial_RS232 or ABB_RS232_AC");
}

TEST_F(PlcPlan, IsToldInAFewLines) {
    options.refuseLogin = true;
    EXPECT_EQ(planText(makePlan(options), options),
              (std::vector<std::string>{
                  path("line.toml") + ": routed framing, 9600 bit/s, 960 bytes/s",
                  "  station press: little-endian, blocks of 128 bytes, 1 variables, project 00000007, 1 fault rule",
                  "  station oven: little-endian, blocks of 128 bytes, 0 variables, project 00000001, 2 fault rules"}));
}

TEST(ExamplePlant, HasThreeStationsThatMove) {
    PlcOptions options;
    options.project = VELK_PLANT "/line.toml";
    Plan const plan = makePlan(options);
    ASSERT_EQ(plan.line.stations.size(), 3U);
    plc::Line line(plan.line);
    line.advance(0s);
    line.advance(10s);
    EXPECT_EQ(line.station("press").get<unsigned>("PLC_PRG.Strokes"), 1'000'020U);
    EXPECT_NEAR(line.station("press").get<double>("PLC_PRG.Speed"), 1200 * 0.99, 10); // five times its lag
    EXPECT_EQ(line.station("press").get<std::string>("PLC_PRG.Pumps[2].Name"), "Spare pump");
    EXPECT_GT(line.station("oven").get<double>("PLC_PRG.Temperature"), 60);
    EXPECT_EQ(line.station("conveyor").get<int>("PLC_PRG.Pieces"), 12);
}

} // namespace
