#include "plc/files/LineFile.h"
#include "plc/files/ProgramFile.h"
#include "tests/plc/Panel.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace std::chrono_literals;

std::string ProgramComplaint(std::string_view text) {
    try {
        static_cast<void>(plc::readProgramText(text, "p.toml"));
        return "";
    } catch (base::FileError const& fault) {
        return fault.what();
    }
}

std::string LineComplaint(std::string_view text) {
    try {
        static_cast<void>(plc::readLineText(text, "l.toml"));
        return "";
    } catch (base::FileError const& fault) {
        return fault.what();
    }
}

TEST(ProgramFile, GivesWhatItSays) {
    plc::ProgramDescription const program = plc::readProgramText(R"toml(project_id = 0x12345678

[area_sizes]
M = 64
3 = 8

[symbol_file]
variant = 1
header_extra = 4
foreign_sections = true
placeholders = true
spaced_names = true

[[structure]]
name = "PUMP"
members = [["Speed", "INT"], ["Running", "BOOL"]]

[[variable]]
name = "PLC_PRG.Counter"
type = "INT"
value = 42

[[variable]]
name = "PLC_PRG.Text"
type = "STRING(10)"
area = "3"
offset = 2
# 2 + 11 bytes do not fit into 8: this one is only in the file
listed_only = true
flags = 0x6E

[[variable]]
name = "PLC_PRG.Ghost"
type = "BOOL"
area = 9
offset = 0xFFFFFFFF
listed_only = true
)toml",
                                                                 "p.toml");
    EXPECT_EQ(program.projectId, 0x12345678U);
    EXPECT_EQ(program.areaSizes, (std::array<std::uint32_t, 6>{64, 1024, 1024, 8, 1024, 1024}));
    EXPECT_EQ(program.symbolFile.variant, 1U);
    EXPECT_EQ(program.symbolFile.headerExtra, 4U);
    EXPECT_TRUE(program.symbolFile.foreignSections);
    EXPECT_TRUE(program.symbolFile.placeholders);
    EXPECT_TRUE(program.symbolFile.spacedNames);
    ASSERT_EQ(program.structures.size(), 1U);
    EXPECT_EQ(program.structures[0].name, "PUMP");
    EXPECT_EQ(program.structures[0].line, 14);
    ASSERT_EQ(program.structures[0].members.size(), 2U);
    EXPECT_EQ(program.structures[0].members[1].name, "Running");
    EXPECT_EQ(program.structures[0].members[1].type, "BOOL");
    ASSERT_EQ(program.variables.size(), 3U);
    EXPECT_EQ(program.variables[0].name, "PLC_PRG.Counter");
    EXPECT_EQ(program.variables[0].area, 0);
    EXPECT_FALSE(program.variables[0].offset);
    EXPECT_EQ(program.variables[0].value, plc::Value(std::int64_t{42}));
    EXPECT_EQ(program.variables[1].area, 3);
    EXPECT_EQ(program.variables[1].offset, 2U);
    EXPECT_EQ(program.variables[1].flags, 0x6E);
    EXPECT_TRUE(program.variables[1].listedOnly);
    EXPECT_EQ(program.variables[2].area, 9);
    EXPECT_EQ(program.variables[2].offset, 0xFFFFFFFFU);
}

TEST(ProgramFile, AnEmptyOneIsAProgramWithoutVariables) {
    plc::ProgramDescription const program = plc::readProgramText("", "p.toml");
    EXPECT_EQ(program.projectId, 1U);
    EXPECT_TRUE(program.variables.empty());
}

TEST(ProgramFile, ValuesAreOfFourKinds) {
    plc::ProgramDescription const program = plc::readProgramText(
        "variable = [{name = 'a', type = 'BOOL', value = true}, {name = 'b', type = 'REAL', value = 1.5},\n"
        "{name = 'c', type = 'STRING', value = 'x'}]",
        "p.toml");
    EXPECT_EQ(program.variables[0].value, plc::Value(true));
    EXPECT_EQ(program.variables[1].value, plc::Value(1.5));
    EXPECT_EQ(program.variables[2].value, plc::Value("x"));
    EXPECT_EQ(program.variables[2].line, 2);
    EXPECT_EQ(ProgramComplaint("variable = [{name = 'a', type = 'BOOL', value = 2026-01-01}]"),
              "p.toml:1:49: a value is a number, true, false, a text, or a list or table of them");
}

TEST(ProgramFile, ComplaintsNameTheirPlace) {
    EXPECT_EQ(ProgramComplaint("project_id = 1\n\nprojekt = 2\n"), "p.toml:3:1: there is no 'projekt' in a program");
    EXPECT_EQ(ProgramComplaint("\nproject_id = -1"), "p.toml:2:14: 'project_id' is -1; it must be 0 to 4294967295");
    EXPECT_EQ(ProgramComplaint("project_id = 'x'"), "p.toml:1:14: 'project_id' must be a whole number, not a text");
    EXPECT_EQ(ProgramComplaint("area_sizes = 3"), "p.toml:1:14: 'area_sizes' must be a table, not a whole number");
    EXPECT_EQ(ProgramComplaint("[area_sizes]\nX = 3"),
              "p.toml:2:1: there is no 'X' in [area_sizes]; did you mean 3, 4 or 5?");
    EXPECT_EQ(ProgramComplaint("[symbol_file]\nvariant = 2"), "p.toml:2:11: 'variant' is 2; it must be 0 to 1");
    EXPECT_EQ(ProgramComplaint("[symbol_file]\nplaceholders = 1"),
              "p.toml:2:16: 'placeholders' must be true or false, not a whole number");
    EXPECT_EQ(ProgramComplaint("variable = 1"),
              "p.toml:1:12: every 'variable' must be a table of its own: [[variable]]");
    EXPECT_EQ(ProgramComplaint("variable = [\n1]"),
              "p.toml:1:12: every 'variable' must be a table of its own: [[variable]]");
    EXPECT_EQ(ProgramComplaint("[[variable]]\ntype = 'INT'"), "p.toml:1:1: 'name' is missing");
    EXPECT_EQ(ProgramComplaint("[[variable]]\nname = 1\ntype = 'INT'"),
              "p.toml:2:8: 'name' must be a text, not a whole number");
    EXPECT_EQ(ProgramComplaint("[[variable]]\nname = 'v'\ntype = 'INT'\narea = 'X'"),
              "p.toml:4:8: 'area' is 'X'; it must be M, I, Q, 3, 4 or 5");
    EXPECT_EQ(ProgramComplaint("[[variable]]\nname = 'v'\ntype = 'INT'\n[[variable]]\nname = 'w'\ntype = 'INTEGER'"),
              "p.toml:4: there is no type \"INTEGER\"");
    EXPECT_EQ(ProgramComplaint("\n[[variable]]\nname = 'v'\ntype = 'INT'\nvalue = 70000"),
              "p.toml:2: variable v: the value does not fit the type");
    EXPECT_EQ(ProgramComplaint("[[structure]]\nname = 'S'"),
              "p.toml:1:1: 'members' must be a list of [\"name\", \"type\"]");
    EXPECT_EQ(ProgramComplaint("[[structure]]\nname = 'S'\nmembers = [\n['a', 'INT'],\n['b']]"),
              "p.toml:5:1: a member is written as [\"name\", \"type\"]");
    EXPECT_EQ(
        ProgramComplaint("[[structure]]\nname = 'S'\nmembers = [['a', 'S']]\n[[variable]]\nname = 'v'\ntype = 'S'"),
        "p.toml:1: structure S contains itself");
}

TEST(ProgramFile, EverythingThatIsWrongIsSaidAtOnce) {
    EXPECT_EQ(ProgramComplaint("project_id = 'x'\nprojekt = 2\n[[variable]]\nname = 1\ntype = 'INTEGER'\n"
                               "[[variable]]\nbehaviour = { kind = 'x', low = 1 }\n"),
              "p.toml:1:14: 'project_id' must be a whole number, not a text\n"
              "p.toml:2:1: there is no 'projekt' in a program\n"
              "p.toml:4:8: 'name' must be a text, not a whole number\n"
              "p.toml:6:1: 'name' is missing\n"
              "p.toml:6:1: 'type' is missing\n"
              "p.toml:7:22: 'kind' is 'x'; it must be constant, counter, ramp, sine, random_walk or follow")
        << "whether the program makes sense is looked at when all values can be read";
}

TEST(ProgramFile, WhatIsNoTomlIsSaidSoWithItsLine) {
    std::string const complaint = ProgramComplaint("project_id = 1\n\nvariable = = 2\n");
    EXPECT_EQ(complaint.substr(0, 13), "p.toml:3:12: ") << complaint;
    EXPECT_GT(complaint.size(), 13U);
}

TEST(LineFile, GivesWhatItSays) {
    plc::LineDescription const line = plc::readLineText(R"toml(framing = "ABB_RS232_AC"
bytes_per_second = 960
frame_silence_ms = 30

[[station]]
name = "press"
model = "Motorola"
block_size = 512
routing_levels = 2
coupler1 = 2
channel1 = 3
address1 = "10.0.0.1"
coupler2 = 0
channel2 = 19
address2 = "10.0.0.2"
file_piece_size = 100
mismatch_word = 0x33
ack_delay_ms = 1
answer_delay_ms = 2
exchange_timeout_ms = 3000
fault_seed = 7
fault = [
  { kind = "ack_missing", nth = 3 },
  { kind = "late", probability = 0.5, delay_ms = 250, service = "read_list" },
  { kind = "bad_quality", value = 2, variable = "PLC_PRG.Counter", nth = 2, count = 5 },
  { kind = "bad_quality", item = 1 },
]
[station.program]
project_id = 9
[[station.program.variable]]
name = "PLC_PRG.Counter"
type = "INT"

[[station]]
name = "oven"
)toml",
                                                        "l.toml");
    EXPECT_EQ(line.framing, plc::Framing::kRouted);
    EXPECT_EQ(line.bytesPerSecond, 960U);
    EXPECT_EQ(line.frameSilence, 30ms);
    ASSERT_EQ(line.stations.size(), 2U);
    plc::StationDescription const& press = line.stations[0];
    EXPECT_EQ(press.name, "press");
    EXPECT_EQ(press.byteOrder, plc::ByteOrder::kBig);
    EXPECT_EQ(press.blockSize, 512U);
    EXPECT_EQ(plctest::Show(encodeRoutingHeader(press.route, press.blockSize)),
              "4F 00 02 20 2B 0A 00 00 01 00 1D 0A 00 00 02 00 00 00 00");
    EXPECT_EQ(press.filePieceSize, 100U);
    EXPECT_EQ(press.mismatchWord, 0x33);
    EXPECT_EQ(press.ackDelay, 1ms);
    EXPECT_EQ(press.answerDelay, 2ms);
    EXPECT_EQ(press.exchangeTimeout, 3s);
    EXPECT_EQ(press.faultSeed, 7U);
    EXPECT_EQ(press.program.projectId, 9U);
    ASSERT_EQ(press.faults.size(), 4U);
    EXPECT_EQ(press.faults[0].kind, plc::FaultKind::kAckMissing);
    EXPECT_EQ(press.faults[0].when.first, 3U);
    EXPECT_EQ(press.faults[0].when.count, 1U);
    EXPECT_EQ(press.faults[1].when.probability, 0.5);
    EXPECT_EQ(press.faults[1].delay, 250ms);
    EXPECT_EQ(press.faults[1].service, plc::ServiceKind::kReadList);
    EXPECT_EQ(press.faults[2].value, 2U);
    EXPECT_EQ(press.faults[2].variable, "PLC_PRG.Counter");
    EXPECT_EQ(press.faults[2].when.first, 2U);
    EXPECT_EQ(press.faults[2].when.count, 5U);
    EXPECT_EQ(press.faults[3].item, 1U);
    EXPECT_EQ(line.stations[1].byteOrder, plc::ByteOrder::kLittle);
    EXPECT_EQ(line.stations[1].blockSize, 128U);
}

TEST(LineFile, ComplaintsNameTheirPlace) {
    EXPECT_EQ(LineComplaint("[[station]]"), "l.toml:1:1: 'framing' is missing");
    EXPECT_EQ(LineComplaint("framing = 'x'"), "l.toml:1:11: 'framing' is 'x'; it must be Serial_RS232 or ABB_RS232_AC");
    EXPECT_EQ(LineComplaint("framing = 'Serial_RS232'"),
              "l.toml: a line has one station, and only with the routed framing more");
    EXPECT_EQ(LineComplaint("framing = 'Serial_RS232'\nframe_silence_ms = 0\n[[station]]"),
              "l.toml: the silence that ends a frame must be above 0");
    auto const station = [](std::string const& text) {
        return LineComplaint("framing = 'Serial_RS232'\n[[station]]\n" + text);
    };
    EXPECT_EQ(station(""), "");
    EXPECT_EQ(station("model = 'intel'"), "l.toml:3:9: 'model' is 'intel'; it must be Intel or Motorola");
    EXPECT_EQ(station("block_size = 1461"), "l.toml:3:14: 'block_size' is 1461; it must be 128 to 1460");
    EXPECT_EQ(station("blocksize = 128"),
              "l.toml:3:1: there is no 'blocksize' in [[station]]; did you mean block_size?");
    EXPECT_EQ(station("mismatch_word = 0x34"), "l.toml:2:1: station plc: the mismatch word must be 0x48 or 0x33");
    EXPECT_EQ(station("address1 = '1.2.3'"),
              "l.toml:3:12: 'address1' is '1.2.3'; it must be four numbers from 0 to 255 with dots between them");
    EXPECT_TRUE(station("fault = [{kind = 'x'}]").starts_with("l.toml:3:18: 'kind' is 'x'; it must be silent, "));
    EXPECT_EQ(station("fault = [{kind = 'late', service = 'x'}]"),
              "l.toml:3:36: 'service' is 'x'; it must be login, logout, read_list, file_open, file_next, write_list, "
              "link_check or unknown");
    EXPECT_EQ(station("fault = [{kind = 'late', probability = 1.5}]"),
              "l.toml:3:40: 'probability' must be a number from 0 to 1");
    EXPECT_EQ(station("fault = [{kind = 'late', nth = 0}]"),
              "l.toml:3:32: 'nth' is 0; it must be 1 to 9223372036854775807");
    EXPECT_EQ(station("fault = [{kind = 'late', item = 1}]"),
              "l.toml:3:33: 'item' has no meaning for late, only for bad_quality");
    EXPECT_EQ(station("fault = [{kind = 'silent', variable = 'x'}]"),
              "l.toml:3:39: 'variable' has no meaning for silent, only for bad_quality");
    EXPECT_EQ(station("fault = [{kind = 'bad_quality', service = 'write_list'}]"),
              "l.toml:3:43: bad_quality cannot happen at the service write_list");
    EXPECT_EQ(station("fault = [{kind = 'file_endless', service = 'login'}]"),
              "l.toml:3:44: file_endless cannot happen at the service login");
    EXPECT_EQ(station("fault = [{kind = 'file_data_count', service = 'file_next'}]"), "");
    EXPECT_EQ(
        station("fault = [{kind = 'bad_quality', service = 'read_list'},\n{kind = 'bad_quality', variable = 'x'}]"),
        "l.toml:4:35: the program has no variable x");
    EXPECT_EQ(station("fault = [{kind = 'bad_quality', variable = 'A[2].b'}]\n[station.program]\n"
                      "structure = [{name = 'S', members = [['B', 'INT']]}]\n"
                      "variable = [{name = 'a', type = 'ARRAY [1..2] OF S'}]"),
              "");
    EXPECT_EQ(station("program = 1"), "l.toml:3:11: 'program' must be a table, not a whole number");
    EXPECT_EQ(station("[station.program]\nproject = 1"), "l.toml:4:1: there is no 'project' in [program]");
}

/** A folder that is removed with the test. */
class InFolder : public testing::Test {
protected:
    void write(std::string const& name, std::string_view text) const { std::ofstream(folder / name) << text; }

    [[nodiscard]] static std::string complaintAbout(std::filesystem::path const& line) {
        try {
            static_cast<void>(plc::readLineFile(line));
            return "";
        } catch (base::FileError const& fault) {
            return fault.what();
        }
    }

    velktest::TempDir temporary;
    std::filesystem::path folder = temporary.Path();
};

TEST_F(InFolder, AProgramInAFileOfItsOwnIsSoughtBesideTheLinesFile) {
    write("press.toml", "project_id = 77");
    write("line.toml", "framing = 'Serial_RS232'\n[[station]]\nprogram = 'press.toml'");
    EXPECT_EQ(plc::readLineFile(folder / "line.toml").stations[0].program.projectId, 77U);
    EXPECT_EQ(plc::readProgramFile(folder / "press.toml").projectId, 77U);
}

TEST_F(InFolder, ComplaintsAboutAProgramFileNameThatFile) {
    write("press.toml", "\nprojekt = 77");
    write("line.toml", "framing = 'Serial_RS232'\n[[station]]\nprogram = 'press.toml'");
    try {
        static_cast<void>(plc::readLineFile(folder / "line.toml"));
        FAIL() << "the program has an unknown key";
    } catch (base::FileError const& fault) {
        EXPECT_EQ(fault.what(), (folder / "press.toml").string() + ":2:1: there is no 'projekt' in a program");
    }
}

TEST_F(InFolder, AMissingFileIsSaidToBeMissing) {
    try {
        static_cast<void>(plc::readProgramFile(folder / "none.toml"));
        FAIL() << "there is no such file";
    } catch (base::FileError const& fault) {
        EXPECT_EQ(fault.what(), (folder / "none.toml").string() + ": No such file or directory");
    }
}

TEST_F(InFolder, WhatMayHaveNoEndIsNotRead) {
    EXPECT_EQ(complaintAbout("/dev/zero"), "/dev/zero: it is a device, not a file");
    EXPECT_EQ(complaintAbout(folder), folder.string() + ": it is a directory");
    write("line.toml", "framing = 'Serial_RS232'\n[[station]]\nprogram = '/dev/zero'");
    EXPECT_EQ(complaintAbout(folder / "line.toml"), "/dev/zero: it is a device, not a file");
}

TEST_F(InFolder, ALargeFileIsNoDescription) {
    std::string text(16 * 1024 * 1024, '\n');
    text.replace(0, 26, "framing = 'Serial_RS232' #");
    text.replace(text.size() - 12, 12, "\n[[station]]");
    write("line.toml", text);
    EXPECT_EQ(complaintAbout(folder / "line.toml"), "");
    write("line.toml", text + "\n");
    EXPECT_EQ(complaintAbout(folder / "line.toml"), (folder / "line.toml").string() + ": it is larger than 16 MiB");
}

TEST_F(InFolder, ADescriptionMayComeThroughAPipe) {
    std::filesystem::path const pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::jthread const writer([&] { write("pipe", "project_id = 77"); });
    EXPECT_EQ(plc::readProgramFile(pipe).projectId, 77U);
}

} // namespace
