#include "tools/velk/line/TagRequest.h"

#include "tools/velk/commands/write/WriteCommand.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/LineOptions.h"
#include "tools/velk/line/Readings.h"
#include "tools/velk/project/Settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using velk::CommandError;
using velk::parseTagRequest;
using velk::Settings;
using velk::TagRequest;

velk::Project twoStations() {
    return velk::readProjectText(R"toml(
[line]
port = "/dev/ttyUSB0"
baud = 38400

[defaults]
timeout_ms = 500

[[station]]
node = 3
name = "press"

[[station]]
node = 7
name = "oven"
byte_order = "little"
timeout_ms = 800

[[tag]]
name = "speed"
variable = "PLC_PRG.Motor.Speed"
station = "oven"

[[tag]]
name = "serial"
variable = "PLC_PRG.Serial"
type = "unsignedShort(bcd)"
area = "I"
offset = 12
)toml",
                                 "velk.toml");
}

class TagRequestWords : public testing::Test {
protected:
    [[nodiscard]] TagRequest parse(std::string const& word) const { return parseTagRequest(word, settings); }
    [[nodiscard]] std::string refusal(std::string const& word) const {
        try {
            parseTagRequest(word, settings);
        } catch (CommandError const& error) {
            EXPECT_EQ(error.code(), velk::ExitCode::Usage);
            return error.what();
        }
        return "taken";
    }

    Settings settings = velk::mergeSettings(twoStations(), {});
};

TEST_F(TagRequestWords, ANameIsAVariableOfTheFirstStation) {
    TagRequest const request = parse("PLC_PRG.Counter");
    EXPECT_EQ(request.shown, "PLC_PRG.Counter");
    EXPECT_EQ(request.node, 3);
    EXPECT_EQ(request.variable, "PLC_PRG.Counter");
    EXPECT_EQ(request.type, "");
    EXPECT_FALSE(request.isPattern);
}

TEST_F(TagRequestWords, AStationStandsInFront) {
    EXPECT_EQ(parse("oven:PLC_PRG.Counter").node, 7);
    EXPECT_EQ(parse("OVEN:PLC_PRG.Counter").node, 7);
    EXPECT_EQ(parse("3:PLC_PRG.Counter").node, 3);
    EXPECT_EQ(parse("oven:PLC_PRG.Counter").variable, "PLC_PRG.Counter");
}

TEST_F(TagRequestWords, ATypeStandsBehind) {
    TagRequest const request = parse("PLC_PRG.Serial:unsignedShort(bcd,swap2)");
    EXPECT_EQ(request.variable, "PLC_PRG.Serial");
    EXPECT_EQ(request.type, "unsignedShort(bcd,swap2)");
    EXPECT_EQ(request.node, 3);
    TagRequest const all = parse("oven:Door:bit");
    EXPECT_EQ(all.node, 7);
    EXPECT_EQ(all.variable, "Door");
    EXPECT_EQ(all.type, "bit");
}

TEST_F(TagRequestWords, ATagOfTheProjectFileStandsForItsVariable) {
    TagRequest const request = parse("Speed");
    EXPECT_EQ(request.shown, "Speed");
    EXPECT_EQ(request.variable, "PLC_PRG.Motor.Speed");
    EXPECT_EQ(request.node, 7);
    TagRequest const serial = parse("serial");
    EXPECT_EQ(serial.type, "unsignedShort(bcd)");
    EXPECT_EQ(serial.area, "I");
    EXPECT_EQ(serial.offset, "12");
    EXPECT_EQ(serial.node, 3);
}

TEST_F(TagRequestWords, WhatStandsBesideATagCountsMore) {
    EXPECT_EQ(parse("press:speed").node, 3);
    EXPECT_EQ(parse("serial:short").type, "short");
}

TEST_F(TagRequestWords, PatternsAreTold) {
    EXPECT_TRUE(parse("PLC_PRG.*").isPattern);
    EXPECT_TRUE(parse("oven:Hall?.X").isPattern);
    EXPECT_EQ(parse("oven:Hall?.X").node, 7);
}

TEST_F(TagRequestWords, WordsThatCannotBeMeantAreRefused) {
    EXPECT_THAT(refusal(""), HasSubstr("[STATION:]NAME[:TYPE]"));
    EXPECT_THAT(refusal(":X"), HasSubstr("[STATION:]NAME[:TYPE]"));
    EXPECT_THAT(refusal("X:"), HasSubstr("[STATION:]NAME[:TYPE]"));
    EXPECT_THAT(refusal("a:b:c:d"), HasSubstr("[STATION:]NAME[:TYPE]"));
    EXPECT_EQ(refusal("mill:X:int"), "'mill:X:int': there is no station 'mill'; there is press or oven");
    EXPECT_EQ(refusal("mill:speed"), "'mill:speed': there is no station 'mill'; there is press or oven");
    EXPECT_EQ(refusal("200:X.Y"), "'200:X.Y': there is no station '200'; there is press or oven");
    EXPECT_EQ(refusal("200:X"), "'200:X': there is no station '200'; there is press or oven");
    EXPECT_THAT(refusal("X:INT"), HasSubstr("'INT' is not a data type; did you mean int?"));
}

TEST_F(TagRequestWords, WithoutStationsInTheFileAnyNumberIsOne) {
    settings = velk::mergeSettings({}, {});
    EXPECT_EQ(parse("200:X").node, 200);
    EXPECT_THAT(refusal("257:X"), HasSubstr("there is no station '257'"));
}

TEST_F(TagRequestWords, WithoutAWordAllTagsAreMeant) {
    std::vector<TagRequest> const requests = velk::parseRequests({}, settings);
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].variable, "PLC_PRG.Motor.Speed");
    EXPECT_EQ(requests[1].variable, "PLC_PRG.Serial");
    settings.tags.clear();
    EXPECT_THROW(velk::parseRequests({}, settings), CommandError);
}

// ---- settings

TEST(Settings, FlagsCountMoreThanTheFile) {
    velk::LineOptions options;
    options.port = "/dev/ttyS1";
    options.baud = 9600;
    options.parity = "odd";
    options.framing = "bare";
    options.byteOrder = "little";
    options.timeoutMs = 100;
    Settings const settings = velk::mergeSettings(twoStations(), options);
    EXPECT_EQ(settings.config.uart, "/dev/ttyS1");
    EXPECT_EQ(settings.config.baudrate, 9600);
    EXPECT_EQ(settings.config.parity, "odd");
    EXPECT_EQ(settings.config.protType, "Serial_RS232");
    EXPECT_EQ(settings.nodeSettings(3).timeoutMs, 100);
    EXPECT_EQ(settings.nodeSettings(7).timeoutMs, 100) << "a flag counts for stations with a setting of their own too";
    EXPECT_EQ(settings.nodeSettings(3).model, "Intel");
}

TEST(Settings, WithoutFlagsTheFileCounts) {
    Settings const settings = velk::mergeSettings(twoStations(), {});
    EXPECT_EQ(settings.config.uart, "/dev/ttyUSB0");
    EXPECT_EQ(settings.node, 3) << "the first station";
    EXPECT_EQ(settings.nodeSettings(3).timeoutMs, 500);
    EXPECT_EQ(settings.nodeSettings(7).timeoutMs, 800);
    EXPECT_EQ(settings.nodeSettings(7).model, "Intel");
    EXPECT_EQ(settings.nodeSettings(99).timeoutMs, 500);
    EXPECT_EQ(settings.stationName(7), "oven");
    EXPECT_EQ(settings.stationName(9), "9");
}

TEST(Settings, TheStationIsChosenByNameOrNumber) {
    velk::LineOptions options;
    options.station = "OVEN";
    EXPECT_EQ(velk::mergeSettings(twoStations(), options).node, 7);
    options.station = "7";
    EXPECT_EQ(velk::mergeSettings(twoStations(), options).node, 7);
    for (char const* const wrong : {"mill", "12", "07", "257", "-1", "3x", ""}) {
        options.station = wrong;
        EXPECT_THROW(velk::mergeSettings(twoStations(), options), CommandError) << wrong;
    }
}

TEST(Settings, WithoutStationsInTheFileAnyNumberIsOne) {
    velk::LineOptions options;
    options.station = "12";
    Settings const settings = velk::mergeSettings({}, options);
    EXPECT_EQ(settings.node, 12);
    ASSERT_EQ(settings.stations.size(), 1U);
    EXPECT_EQ(settings.stations[0].node, 12);
    for (char const* const wrong : {"mill", "257", "-1", "3x", ""}) {
        options.station = wrong;
        EXPECT_THROW(velk::mergeSettings({}, options), CommandError) << wrong;
    }
}

TEST(Settings, BareFramingHasNoCouplers) {
    velk::LineOptions options;
    options.framing = "bare";
    EXPECT_NO_THROW(velk::mergeSettings(twoStations(), options));
    options.routingLevels = 1;
    EXPECT_THROW(velk::mergeSettings(twoStations(), options), CommandError);
    options.framing = "routed";
    EXPECT_NO_THROW(velk::mergeSettings(twoStations(), options));

    velk::Project project = twoStations();
    project.config.nodeOverrides.at(1).routingLevels = 1;
    velk::LineOptions bare;
    bare.framing = "bare";
    EXPECT_THROW(velk::mergeSettings(project, bare), CommandError) << "the second station is behind a coupler";
    bare.routingLevels = 0;
    EXPECT_NO_THROW(velk::mergeSettings(project, bare));
}

TEST(Settings, FlagsOfTheCouplersCountForEveryStation) {
    velk::Project project = twoStations();
    project.config.nodeOverrides.at(1).coupler1 = "2";
    velk::LineOptions options;
    options.routingLevels = 2;
    options.couplers[0] = {6, 19, "10.0.0.1"};
    options.couplers[1] = {5, 18, "10.0.0.2"};
    host::NodeSettings const node = velk::mergeSettings(project, options).nodeSettings(7);
    EXPECT_EQ(node.routingLevels, 2);
    EXPECT_EQ(node.coupler1, "6");
    EXPECT_EQ(node.channel1, 19);
    EXPECT_EQ(node.address1, "10.0.0.1");
    EXPECT_EQ(node.coupler2, "5");
    EXPECT_EQ(node.channel2, 18);
    EXPECT_EQ(node.address2, "10.0.0.2");
}

TEST(Settings, WithoutAProjectThereIsOneStation) {
    Settings const settings = velk::mergeSettings({}, {});
    ASSERT_EQ(settings.stations.size(), 1U);
    EXPECT_EQ(settings.stations[0].node, 0);
    EXPECT_EQ(settings.node, 0);
}

TEST(Settings, AreEchoedInPlainWords) {
    std::vector<std::string> const lines = velk::settingsText(velk::mergeSettings(twoStations(), {}));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "/dev/ttyUSB0: 38400 bit/s, parity none, 1 stop bit, RS-232, routed framing");
    EXPECT_EQ(lines[2], "  station 7 \"oven\": little-endian, blocks of 128 bytes, time-out 800 ms, 2 attempts");
}

// ---- assignments

TEST(Assignment, IsCutAtTheFirstSign) {
    velk::Assignment const assignment = velk::parseAssignment("oven:PLC_PRG.Text:string-20=a=b");
    EXPECT_EQ(assignment.name, "oven:PLC_PRG.Text:string-20");
    EXPECT_EQ(assignment.value, "a=b");
    EXPECT_EQ(velk::parseAssignment("X=").value, "");
}

TEST(Assignment, NeedsANameAndASign) {
    EXPECT_THROW(velk::parseAssignment("X"), CommandError);
    EXPECT_THROW(velk::parseAssignment("=5"), CommandError);
}

} // namespace
