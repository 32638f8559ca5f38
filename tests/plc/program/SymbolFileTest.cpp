#include "plc/program/SymbolFileWriter.h"
#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using plctest::Hex;
using plctest::Show;
using plctest::operator+;
using velktest::Text;

plc::Bytes Name(std::string_view name) {
    return Text(name) + Hex("00");
}

plc::ProgramDescription OneCounter() {
    plc::ProgramDescription description;
    description.projectId = 0x12345678;
    description.variables = {{.name = "PLC_PRG.Counter", .type = "INT", .area = 3, .offset = 0x102, .flags = 0xBBAA}};
    return description;
}

plc::Bytes FileOf(plc::ProgramDescription const& description) {
    return writeSymbolFile(plc::Program(description), description.symbolFile);
}

TEST(SymbolFile, OneVariable) {
    plc::Bytes const expected = Hex("01 00 00 00 10 00 00 00 00 00 00 00 78 56 34 12"
                                    // data types: 16 + 22 bytes, one record
                                    "02 00 00 00 26 00 00 00 00 00 00 00 01 00 00 00"
                                    "04 00 00 00 16 00 00 00 02 00 00 00 02 00 00 00 04 00 49 4E 54 00"
                                    // variables: 16 + 42 bytes, one record
                                    "03 00 00 00 3A 00 00 00 00 00 00 00 01 00 00 00"
                                    "05 00 00 00 2A 00 00 00 00 00 00 00 00 00 00 00 AA BB 03 00 02 01 00 00 10 00") +
                                Name("PLC_PRG.Counter");
    EXPECT_EQ(Show(FileOf(OneCounter())), Show(expected));
}

TEST(SymbolFile, StructureAndArray) {
    plc::ProgramDescription description;
    description.projectId = 1;
    description.structures = {{.name = "PUMP", .members = {{"Speed", "INT"}, {"Running", "BOOL"}}}};
    description.variables = {{.name = "PLC_PRG.Counter", .type = "INT"},
                             {.name = "PLC_PRG.Pump", .type = "PUMP"},
                             {.name = "PLC_PRG.Data", .type = "ARRAY [1..3] OF INT"}};
    plc::Bytes const types = Hex("04 00 00 00 16 00 00 00 02 00 00 00 02 00 00 00 04 00") + Name("INT") +
                             Hex("04 00 00 00 17 00 00 00 00 00 00 00 01 00 00 00 05 00") + Name("BOOL") +
                             // class 11, 4 bytes, after the name the number of members
                             Hex("04 00 00 00 1B 00 00 00 0B 00 00 00 04 00 00 00 05 00") + Name("PUMP") +
                             Hex("02 00 00 00") +
                             // class 9, 6 bytes, after the name: element type 0, one dimension, 1 to 3
                             Hex("04 00 00 00 36 00 00 00 09 00 00 00 06 00 00 00 14 00") +
                             Name("ARRAY [1..3] OF INT") + Hex("00 00 00 00 01 00 00 00 01 00 00 00 03 00 00 00");
    plc::Bytes const variables =
        Hex("05 00 00 00 2A 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 10 00") + Name("PLC_PRG.Counter") +
        Hex("05 00 00 00 27 00 00 00 02 00 00 00 00 00 00 00 00 00 00 00 02 00 00 00 0D 00") + Name("PLC_PRG.Pump") +
        Hex("05 00 00 00 2D 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 02 00 00 00 13 00") +
        Name("PLC_PRG.Pump.Speed") +
        Hex("05 00 00 00 2F 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00 04 00 00 00 15 00") +
        Name("PLC_PRG.Pump.Running") +
        Hex("05 00 00 00 27 00 00 00 03 00 00 00 00 00 00 00 00 00 00 00 06 00 00 00 0D 00") + Name("PLC_PRG.Data");
    // 16 + 22 + 23 + 27 + 54 = 142 = 0x8E; 16 + 42 + 39 + 45 + 47 + 39 = 228 = 0xE4
    plc::Bytes const expected = Hex("01 00 00 00 10 00 00 00 00 00 00 00 01 00 00 00") +
                                Hex("02 00 00 00 8E 00 00 00 00 00 00 00 04 00 00 00") + types +
                                Hex("03 00 00 00 E4 00 00 00 00 00 00 00 05 00 00 00") + variables;
    EXPECT_EQ(Show(FileOf(description)), Show(expected));
}

TEST(SymbolFile, OddFormsOfTheSameContent) {
    plc::ProgramDescription description = OneCounter();
    description.variables[0].flags = 0;
    description.symbolFile = {
        .variant = 1, .headerExtra = 3, .foreignSections = true, .placeholders = true, .spacedNames = true};
    plc::Bytes const foreign = Hex("07 00 00 00 15 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00 00");
    plc::Bytes const expected =
        Hex("01 00 00 00 13 00 00 00 01 00 00 00 78 56 34 12 00 00 00") + foreign +
        Hex("02 00 00 00 3C 00 00 00 00 00 00 00 02 00 00 00"
            // a placeholder: 18 bytes, and the length counts what follows them
            "06 00 00 00 04 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
            "04 00 00 00 16 00 00 00 02 00 00 00 02 00 00 00 04 00 49 4E 54 00") +
        foreign +
        Hex("03 00 00 00 5C 00 00 00 00 00 00 00 02 00 00 00"
            // a placeholder: the length counts from its start
            "06 00 00 00 1E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
            // type 1 now, and two bytes on both sides of the name
            "05 00 00 00 2E 00 00 00 01 00 00 00 00 00 00 00 00 00 03 00 02 01 00 00 10 00 00 00") +
        Name("PLC_PRG.Counter") + Hex("00 00");
    EXPECT_EQ(Show(FileOf(description)), Show(expected));
}

TEST(SymbolFile, PlaceholdersShiftTheElementTypeToo) {
    plc::ProgramDescription description;
    description.variables = {{.name = "v", .type = "ARRAY [0..1] OF INT"}};
    description.symbolFile.placeholders = true;
    plc::Bytes const file = FileOf(description);
    // 16 + 16 + 22 (placeholder) + 22 (INT) + 18 + 20 (name) bytes come before the element type.
    EXPECT_EQ(Show(plc::ByteView(file).subspan(114, 4)), "01 00 00 00");
}

TEST(SymbolFile, ProgramWithoutVariablesHasBothSections) {
    EXPECT_EQ(Show(FileOf({})), "01 00 00 00 10 00 00 00 00 00 00 00 01 00 00 00 "
                                "02 00 00 00 10 00 00 00 00 00 00 00 00 00 00 00 "
                                "03 00 00 00 10 00 00 00 00 00 00 00 00 00 00 00");
}

} // namespace
