#include "tools/velk/project/ProjectFile.h"

#include "tests/support/TempDir.h"
#include "tools/velk/project/ProjectText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::ElementsAre;
using velk::Project;
using velk::readProjectText;

using Lines = std::vector<std::string>;

/** What is said about a file that is wrong; nothing about one that is right. */
Lines complaintsAbout(std::string const& text) {
    try {
        readProjectText(text, "velk.toml");
    } catch (base::FileError const& error) {
        return error.complaints();
    }
    return {};
}

TEST(ProjectFile, AnEmptyFileLeavesTheDriversOwnDefaults) {
    Project const project = readProjectText("", "velk.toml");
    EXPECT_EQ(project.config.baudrate, 19'200);
    EXPECT_EQ(project.config.protType, "ABB_RS232_AC");
    EXPECT_EQ(project.config.nodes.blockSize, 128);
    EXPECT_EQ(project.config.nodes.timeoutMs, 10'000);
    EXPECT_EQ(project.config.nodes.model, "Motorola");
    EXPECT_TRUE(project.stations.empty());
    EXPECT_TRUE(project.tags.empty());
    EXPECT_EQ(project.storage, std::nullopt);
}

TEST(ProjectFile, WithoutAPortThePortIsEmpty) {
    EXPECT_EQ(readProjectText("[line]\nbaud = 9600\n", "velk.toml").config.uart, "");
}

TEST(ProjectFile, TheLineIsReadAsTheDriversConfigurationHasIt) {
    Project const project = readProjectText(R"(
[line]
port = "/dev/ttyUSB0"
baud = 115200
parity = "even"
stopbits = 2
mode = "rs-485"
framing = "bare"
)",
                                            "velk.toml");
    EXPECT_EQ(project.config.uart, "/dev/ttyUSB0");
    EXPECT_EQ(project.config.baudrate, 115'200);
    EXPECT_EQ(project.config.parity, "even");
    EXPECT_EQ(project.config.stopbits, 2);
    EXPECT_EQ(project.config.mode, "RS-485") << "as the driver wants it, however it is written";
    EXPECT_EQ(project.config.protType, "Serial_RS232");
}

TEST(ProjectFile, TheConfigurationsOwnWordsAreTakenToo) {
    Project const project =
        readProjectText("[line]\nframing = \"ABB_RS232_AC\"\n[defaults]\nbyte_order = \"Intel\"\n", "velk.toml");
    EXPECT_EQ(project.config.protType, "ABB_RS232_AC");
    EXPECT_EQ(project.config.nodes.model, "Intel");
}

TEST(ProjectFile, AStationHasItsOwnSettingsOverTheDefaults) {
    Project const project = readProjectText(R"(
[defaults]
block_size = 256
timeout_ms = 700
repeat = 1
byte_order = "little"
station = "oven"

[[station]]
node = 3
name = "press"
block_size = 1460
routing_levels = 2
coupler1 = 4
channel1 = 19
address1 = "10.0.0.1"
coupler2 = 6
channel2 = 1
address2 = "10.0.0.2"

[[station]]
node = 7
name = "oven"
byte_order = "big"
)",
                                            "velk.toml");
    EXPECT_EQ(project.config.nodes.blockSize, 256);
    EXPECT_EQ(project.config.nodes.timeoutMs, 700);
    EXPECT_EQ(project.config.nodes.repeat, 1);
    EXPECT_EQ(project.config.nodes.model, "Intel");
    EXPECT_EQ(project.defaultNode, 7);
    ASSERT_EQ(project.stations.size(), 2U);
    EXPECT_EQ(project.stations[0].node, 3);
    EXPECT_EQ(project.stations[0].name, "press");
    ASSERT_EQ(project.config.nodeOverrides.size(), 2U);
    host::NodeOverrides const& press = project.config.nodeOverrides[0];
    EXPECT_EQ(press.node, 3);
    EXPECT_EQ(press.blockSize, 1460);
    EXPECT_EQ(press.timeoutMs, std::nullopt);
    EXPECT_EQ(press.routingLevels, 2);
    EXPECT_EQ(press.coupler1, "4");
    EXPECT_EQ(press.channel1, 19);
    EXPECT_EQ(press.address1, "10.0.0.1");
    EXPECT_EQ(press.coupler2, "6");
    EXPECT_EQ(press.channel2, 1);
    EXPECT_EQ(press.address2, "10.0.0.2");
    EXPECT_EQ(project.config.nodeOverrides[1].model, "Motorola");
}

TEST(ProjectFile, TagsNameVariables) {
    Project const project = readProjectText(R"(
[[station]]
node = 3
name = "press"

[[tag]]
name = "PLC_PRG.Speed"

[[tag]]
name = "serial"
variable = "PLC_PRG.Serial"
type = "unsignedShort"
conversions = ["swap2", "bcd"]
station = "press"

[[tag]]
name = "lamp"
variable = "Lamp"
type = "bit"
area = "QB"
offset = "12.3"
station = 3
)",
                                            "velk.toml");
    ASSERT_EQ(project.tags.size(), 3U);
    EXPECT_EQ(project.tags[0].variable, "PLC_PRG.Speed") << "the name is the variable unless another one is given";
    EXPECT_EQ(project.tags[0].type, "");
    EXPECT_EQ(project.tags[0].node, std::nullopt);
    EXPECT_EQ(project.tags[1].variable, "PLC_PRG.Serial");
    EXPECT_EQ(project.tags[1].type, "unsignedShort(swap2,bcd)");
    EXPECT_EQ(project.tags[1].node, 3);
    EXPECT_EQ(project.tags[2].type, "bit");
    EXPECT_EQ(project.tags[2].area, "QB");
    EXPECT_EQ(project.tags[2].offset, "12.3");
    EXPECT_EQ(project.tags[2].node, 3);
}

TEST(ProjectFile, TheStorageIsSeenFromTheFoldersPlace) {
    Project const project = readProjectText("[storage]\ndirectory = \"symbols\"\n", "velk.toml", "/machine/press");
    EXPECT_EQ(project.storage, "/machine/press/symbols");
    EXPECT_EQ(readProjectText("[storage]\ndirectory = \"/srv/symbols\"\n", "velk.toml", "/machine").storage,
              "/srv/symbols");
}

TEST(ProjectFile, AComplaintHasFileLineAndColumn) {
    EXPECT_THAT(complaintsAbout("[line]\n  baud = \"fast\"\n"),
                ElementsAre("velk.toml:2:10: 'baud' must be a whole number, not a text"));
}

TEST(ProjectFile, EverythingThatIsWrongIsSaidInTheOrderOfTheFile) {
    EXPECT_THAT(complaintsAbout(R"([line]
port = 5
bauds = 9600
parity = "strange"
stopbits = 3

[defaults]
block_size = 127
timeout_ms = 20001
)"),
                ElementsAre("velk.toml:2:8: 'port' must be a text, not a whole number",
                            "velk.toml:3:1: there is no 'bauds' in [line]; did you mean baud?",
                            "velk.toml:4:10: 'parity' is 'strange'; it must be none, even, odd or mark",
                            "velk.toml:5:12: 'stopbits' is 3; it must be 1 to 2",
                            "velk.toml:8:14: 'block_size' is 127; it must be 128 to 1460",
                            "velk.toml:9:14: 'timeout_ms' is 20001; it must be 100 to 20000"));
}

TEST(ProjectFile, TheLimitsThemselvesAreRight) {
    EXPECT_THAT(complaintsAbout("[defaults]\nblock_size = 128\ntimeout_ms = 100\nrepeat = 1\n"), ElementsAre());
    EXPECT_THAT(complaintsAbout("[defaults]\nblock_size = 1460\ntimeout_ms = 20000\nrepeat = 100\n"), ElementsAre());
    EXPECT_THAT(complaintsAbout("[[station]]\nnode = 0\n[[station]]\nnode = 256\n"), ElementsAre());
}

TEST(ProjectFile, ARateThatNoPortKnowsIsRefused) {
    Lines const lines = complaintsAbout("[line]\nbaud = 12345\n");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], testing::StartsWith("velk.toml:2:8: a serial line cannot run at 12345 bit/s"));
}

TEST(ProjectFile, EveryKindIsCalledByAName) {
    EXPECT_THAT(complaintsAbout("[line]\nport = true\nbaud = 9600.5\nparity = [1]\nmode = 2020-01-01\n"),
                ElementsAre("velk.toml:2:8: 'port' must be a text, not true or false",
                            "velk.toml:3:8: 'baud' must be a whole number, not a number with a fraction",
                            "velk.toml:4:10: 'parity' must be a text, not a list",
                            "velk.toml:5:8: 'mode' must be a text, not a date or a time"));
}

TEST(ProjectFile, AStationNeedsANodeAndIsNamedOnce) {
    EXPECT_THAT(complaintsAbout(R"([[station]]
name = "press"

[[station]]
node = 257

[[station]]
node = 1
name = "12"

[[station]]
node = 1

[[station]]
node = 2
name = "a:b"

[[station]]
node = 3
name = "oven"

[[station]]
node = 4
name = "OVEN"
)"),
                ElementsAre("velk.toml:1:1: the station has no 'node', the number that it has on the line",
                            "velk.toml:5:8: 'node' is 257; it must be 0 to 256",
                            "velk.toml:9:8: the name of a station must not be a number or contain ':' or '='",
                            "velk.toml:12:8: there is another station with node 1",
                            "velk.toml:16:8: the name of a station must not be a number or contain ':' or '='",
                            "velk.toml:24:8: there is another station called 'OVEN'"));
}

TEST(ProjectFile, RoutingIsChecked) {
    EXPECT_THAT(complaintsAbout("[defaults]\nrouting_levels = 3\ncoupler1 = 7\nchannel2 = 20\naddress1 = \"1.2.3\"\n"
                                "address2 = \"1.2.3.256\"\n"),
                ElementsAre("velk.toml:2:18: 'routing_levels' is 3; it must be 0 to 2",
                            "velk.toml:3:12: 'coupler1' is 7; it must be 0 to 6",
                            "velk.toml:4:12: 'channel2' is 20; it must be 0 to 19",
                            "velk.toml:5:12: '1.2.3' is not an address such as 192.168.0.1",
                            "velk.toml:6:12: '1.2.3.256' is not an address such as 192.168.0.1"));
}

TEST(ProjectFile, BareFramingHasNoCouplers) {
    EXPECT_THAT(complaintsAbout("[defaults]\nrouting_levels = 1\n[[station]]\nnode = 1\nrouting_levels = 2\n"
                                "[[station]]\nnode = 2\nrouting_levels = 0\n[line]\nframing = \"bare\"\n"),
                ElementsAre("velk.toml:2:18: couplers need the framing routed, and it is bare",
                            "velk.toml:5:18: couplers need the framing routed, and it is bare"));
    EXPECT_THAT(complaintsAbout("[line]\nframing = \"routed\"\n[defaults]\nrouting_levels = 1\n"), ElementsAre());
}

TEST(ProjectFile, TagsAreChecked) {
    EXPECT_THAT(
        complaintsAbout(R"([[station]]
node = 1
name = "press"

[[tag]]
name = "a"
station = "oven"

[[tag]]
name = "A"

[[tag]]
variable = "X"

[[tag]]
name = "b:c"

[[tag]]
name = "d"
type = "Int"

[[tag]]
name = "e"
type = "int"
conversions = ["swap2", "bdc"]

[[tag]]
name = "f"
conversions = "bcd"

[[tag]]
name = "g"
area = "X"

[[tag]]
name = "h"
offset = 5

[[tag]]
name = "i"
area = "PROJ_ID"
)"),
        ElementsAre("velk.toml:7:11: there is no station 'oven'; there is press",
                    "velk.toml:10:8: there is another tag called 'A'",
                    "velk.toml:12:1: a tag needs a 'name' without ':', '=', '*', '?' and '['",
                    "velk.toml:16:8: a tag needs a 'name' without ':', '=', '*', '?' and '['",
                    testing::StartsWith("velk.toml:20:8: 'Int' is not a data type; did you mean int?"),
                    "velk.toml:25:15: 'bdc' is not a conversion: use swap2, swap4, swap8, swapnibble, bcd, "
                    "inv or neg",
                    "velk.toml:29:15: 'conversions' need a 'type' of the driver",
                    "velk.toml:33:8: 'area' is 'X'; it must be M, MB, I, IB, Q, QB, 3, 4, 5 or PROJ_ID",
                    "velk.toml:37:10: 'offset' needs an 'area'",
                    "velk.toml:41:8: the offset of a PROJ_ID tag is the project identifier, and it is missing"));
}

TEST(ProjectFile, ATagsNameDoesNothingToATerminal) {
    EXPECT_THAT(complaintsAbout("[[tag]]\nname = \"a\\u001B[2J\"\nvariable = \"X\"\n"),
                ElementsAre("velk.toml:2:8: a tag needs a 'name' without ':', '=', '*', '?' and '['",
                            "velk.toml:2:8: the name of a tag must not contain control characters"));
}

TEST(ProjectFile, ASectionHasToBeOne) {
    EXPECT_THAT(complaintsAbout("line = 5\nstation = 1\n"),
                ElementsAre("velk.toml:1:8: 'line' must be a table, not a whole number",
                            "velk.toml:2:11: every 'station' must be a table of its own: [[station]]"));
    EXPECT_THAT(complaintsAbout("[station]\nnode = 1\n"),
                ElementsAre("velk.toml:1:1: every 'station' must be a table of its own: [[station]]"));
}

TEST(ProjectFile, ATextThatIsNoTomlIsToldWithItsPlace) {
    Lines const lines = complaintsAbout("[line]\nbaud = = 5\n");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], testing::StartsWith("velk.toml:2:8: "));
}

/** What is said about a file on the disk. */
Lines complaintsAboutFile(std::string const& file) {
    try {
        velk::readProjectFile(file);
    } catch (base::FileError const& error) {
        return error.complaints();
    }
    return {};
}

TEST(ProjectFile, WhyAFileCannotBeReadIsTold) {
    velktest::TempDir const folder;
    EXPECT_THAT(complaintsAboutFile(folder.Path("velk.toml")),
                ElementsAre(folder.Path("velk.toml") + ": the project file cannot be read: No such file or directory"));
    EXPECT_THAT(complaintsAboutFile(folder.Path()),
                ElementsAre(folder.Path() + ": the project file cannot be read: it is a directory"));
    EXPECT_THAT(complaintsAboutFile("/dev/zero"),
                ElementsAre("/dev/zero: the project file cannot be read: it is a device, not a file"));
    std::ofstream(folder.Path("large.toml")) << "# nothing\n";
    constexpr std::uintmax_t kMost = 16U * 1024 * 1024;
    std::filesystem::resize_file(folder.Path("large.toml"), kMost + 1);
    EXPECT_THAT(complaintsAboutFile(folder.Path("large.toml")),
                ElementsAre(folder.Path("large.toml") + ": the project file cannot be read: it is larger than 16 MiB"));
}

TEST(ProjectFile, PathsInAFileAreSeenFromItsFolder) {
    velktest::TempDir const folder;
    std::ofstream(folder.Path("velk.toml")) << "[storage]\ndirectory = \"symbols\"\n";
    EXPECT_EQ(velk::readProjectFile(folder.Path("velk.toml")).storage, folder.Path("symbols"));
}

TEST(ProjectText, WhatIsWrittenIsReadAsItWasMeant) {
    velk::NewProject wanted;
    wanted.config.uart = "/dev/serial/by-id/usb-\"odd\\name\"";
    wanted.config.baudrate = 57'600;
    wanted.config.parity = "odd";
    wanted.config.stopbits = 2;
    wanted.config.mode = "RS-485";
    wanted.config.protType = "Serial_RS232";
    wanted.config.nodes.model = "Intel";
    wanted.config.nodes.blockSize = 1024;
    wanted.config.nodes.timeoutMs = 300;
    wanted.config.nodes.repeat = 4;
    wanted.node = 12;
    wanted.stationName = "press";
    Project const project = readProjectText(velk::projectText(wanted), "velk.toml");
    EXPECT_EQ(project.config.uart, wanted.config.uart);
    EXPECT_EQ(project.config.baudrate, 57'600);
    EXPECT_EQ(project.config.parity, "odd");
    EXPECT_EQ(project.config.stopbits, 2);
    EXPECT_EQ(project.config.mode, "RS-485");
    EXPECT_EQ(project.config.protType, "Serial_RS232");
    EXPECT_EQ(project.config.nodes.model, "Intel");
    EXPECT_EQ(project.config.nodes.blockSize, 1024);
    EXPECT_EQ(project.config.nodes.timeoutMs, 300);
    EXPECT_EQ(project.config.nodes.repeat, 4);
    ASSERT_EQ(project.stations.size(), 1U);
    EXPECT_EQ(project.stations[0].node, 12);
    EXPECT_EQ(project.stations[0].name, "press");
}

TEST(ProjectText, AStationMayHaveNoName) {
    Project const project = readProjectText(velk::projectText({}), "velk.toml");
    ASSERT_EQ(project.stations.size(), 1U);
    EXPECT_EQ(project.stations[0].name, "");
}

TEST(ProjectText, CouplersAreThoseOfTheStation) {
    velk::NewProject wanted;
    wanted.config.nodes.routingLevels = 1;
    wanted.config.nodes.coupler1 = "6";
    wanted.config.nodes.channel1 = 19;
    wanted.config.nodes.address1 = "10.0.0.1";
    wanted.config.nodes.coupler2 = "5";
    Project const one = readProjectText(velk::projectText(wanted), "velk.toml");
    ASSERT_EQ(one.config.nodeOverrides.size(), 1U);
    EXPECT_EQ(one.config.nodeOverrides[0].routingLevels, 1);
    EXPECT_EQ(one.config.nodeOverrides[0].coupler1, "6");
    EXPECT_EQ(one.config.nodeOverrides[0].channel1, 19);
    EXPECT_EQ(one.config.nodeOverrides[0].address1, "10.0.0.1");
    EXPECT_EQ(one.config.nodeOverrides[0].coupler2, std::nullopt) << "there is no such level";
    wanted.config.nodes.routingLevels = 2;
    wanted.config.nodes.channel2 = 7;
    wanted.config.nodes.address2 = "10.0.0.2";
    Project const two = readProjectText(velk::projectText(wanted), "velk.toml");
    EXPECT_EQ(two.config.nodeOverrides.at(0).routingLevels, 2);
    EXPECT_EQ(two.config.nodeOverrides.at(0).coupler2, "5");
    EXPECT_EQ(two.config.nodeOverrides.at(0).channel2, 7);
    EXPECT_EQ(two.config.nodeOverrides.at(0).address2, "10.0.0.2");
    EXPECT_EQ(readProjectText(velk::projectText({}), "velk.toml").config.nodeOverrides.at(0).routingLevels,
              std::nullopt);
}

TEST(ProjectText, AStorageIsNamedWhenThereIsOne) {
    EXPECT_EQ(readProjectText(velk::projectText({}), "velk.toml", "/machine").storage, std::nullopt);
    velk::NewProject wanted;
    wanted.storage = "the \"symbols\"";
    EXPECT_EQ(readProjectText(velk::projectText(wanted), "velk.toml", "/machine").storage, "/machine/the \"symbols\"");
}

TEST(ProjectText, AnyNameIsRightInItsCommentToo) {
    velk::NewProject wanted;
    wanted.stationName = "x  # y's";
    std::string const text = velk::projectText(wanted);
    EXPECT_THAT(text, testing::HasSubstr("\nname = \"x  # y's\"       # its name, as in: velk read "
                                         "'x  # y'\\''s:PLC_PRG.Counter'\n"));
    EXPECT_EQ(readProjectText(text, "velk.toml").stations.at(0).name, "x  # y's");
    wanted.stationName = "press-2";
    EXPECT_THAT(
        velk::projectText(wanted),
        testing::HasSubstr("\nname = \"press-2\"        # its name, as in: velk read press-2:PLC_PRG.Counter\n"));
}

TEST(ProjectText, CommentsStandInTheirColumnWhateverTheLetters) {
    velk::NewProject wanted;
    wanted.stationName = "\xC3\x96lpumpe";
    std::string const text = velk::projectText(wanted);
    EXPECT_THAT(text, testing::HasSubstr("\nname = \"\xC3\x96lpumpe\"        # its name, as in: velk read"));
    EXPECT_THAT(text, testing::HasSubstr("\nnode = 0                # the number"));
}

TEST(ProjectFile, APortIsAPathOrAKnownNameWhetherItIsThereOrNot) {
    for (char const* const port :
         {"/dev/ttyUSB77", "ttyUSB77", "/dev/serial/by-id/usb-none", "./plc", "com16", "COM1"}) {
        EXPECT_EQ(velk::portFault(port), "") << port;
    }
    for (char const* const port : {"", "com17", "usb", "a b"}) {
        EXPECT_NE(velk::portFault(port), "") << port;
    }
    EXPECT_THAT(complaintsAbout("[line]\nport = \"usb\"\n"),
                ElementsAre("velk.toml:2:8: no serial port is called 'usb': give the path of a device such as "
                            "/dev/ttyUSB0, or com1 to com16"));
}

TEST(ProjectFile, AnUnknownTypeWithConversionsIsToldOnce) {
    Lines const lines = complaintsAbout("[[tag]]\nname = \"a\"\ntype = \"strange\"\nconversions = [\"bcd\"]\n");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines.front(), testing::StartsWith("velk.toml:3:8: 'strange' is not a data type"));
}

TEST(ProjectFile, ANameThatATerminalCannotShowIsRefused) {
    for (char const* const name : {"a\nb", "a\x7F", "a\xC2\x85", "\xFF"}) {
        EXPECT_EQ(velk::stationNameFault(name), "the name of a station must be UTF-8 without control characters");
    }
    EXPECT_EQ(velk::stationNameFault("P\xC3\xBCnktchen 2"), "");
    EXPECT_THAT(complaintsAbout("[[station]]\nnode = 1\nname = \"a\\u0007\"\n"),
                ElementsAre("velk.toml:3:8: the name of a station must be UTF-8 without control characters"));
}

TEST(ProjectText, ItsCommentedPartsAreRightToo) {
    std::string text;
    std::istringstream lines(velk::projectText({}));
    for (std::string line; std::getline(lines, line);) {
        bool const hidden = line.starts_with("# ") && line.find(" = ") != std::string::npos;
        bool const section = line.starts_with("# [") && line.ends_with("]");
        text += (hidden || section ? line.substr(2) : line) + "\n";
    }
    EXPECT_THAT(complaintsAbout(text), ElementsAre()) << text;
    EXPECT_EQ(readProjectText(text, "velk.toml").tags.size(), 2U);
}

TEST(ProjectText, ATextOfTomlKeepsEveryCharacter) {
    EXPECT_EQ(velk::tomlText("a\"b\\c\n\x7F"), "\"a\\\"b\\\\c\\u000A\\u007F\"");
}

} // namespace
