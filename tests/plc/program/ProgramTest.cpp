#include "plc/program/Program.h"

#include "plc/program/Layout.h"
#include "plc/program/Memory.h"
#include "plc/program/TypeText.h"

#include <gtest/gtest.h>

namespace {

using plc::DescriptionError;
using plc::Program;
using plc::ProgramDescription;
using plc::TypeKind;

/** The text of the complaint, "" when there is none. */
std::string ComplaintAboutProgram(ProgramDescription const& description) {
    try {
        Program const program(description);
        return "";
    } catch (DescriptionError const& fault) {
        return std::to_string(fault.line()) + ": " + fault.what();
    }
}

std::string ComplaintAboutType(std::string const& type) {
    ProgramDescription description;
    description.structures = {{.name = "PUMP", .members = {{"Speed", "INT"}}}};
    description.variables = {{.name = "v", .type = type, .line = 7}};
    return ComplaintAboutProgram(description);
}

TEST(TypeText, ArrayIsTakenApart) {
    auto const array = plc::parseArrayText("array[ -1..3 , 0 ..1 ] of  STRING(5)");
    ASSERT_TRUE(array);
    ASSERT_EQ(array->dimensions.size(), 2U);
    EXPECT_EQ(array->dimensions[0].low, -1);
    EXPECT_EQ(array->dimensions[0].high, 3);
    EXPECT_EQ(array->dimensions[1].count(), 2U);
    EXPECT_EQ(array->element, "STRING(5)");
    EXPECT_EQ(plc::arrayText(array->dimensions, "INT"), "ARRAY [-1..3, 0..1] OF INT");
}

TEST(TypeText, WhatIsNoArrayIsSaidSo) {
    for (char const* const wrong :
         {"ARRAY", "ARRAY [0..9]", "ARRAY [0..9] OFINT", "ARRAY [9..0] OF INT", "ARRAY [0-9] OF INT", "ARRAY [] OF INT",
          "ARRAY [0..9,] OF INT", "ARRAY 0..9 OF INT", "ARRAY [0..99999999999] OF INT", "ARRAY [0..9 OF INT"}) {
        EXPECT_FALSE(plc::parseArrayText(wrong)) << wrong;
    }
    EXPECT_TRUE(plc::isArrayText("Array [0..1] OF INT"));
    EXPECT_FALSE(plc::isArrayText("ARRAYS"));
}

TEST(TypeText, StringHasALength) {
    EXPECT_EQ(plc::parseStringText("STRING(20)"), 20U);
    EXPECT_EQ(plc::parseStringText("string ( 1 )"), 1U);
    EXPECT_EQ(plc::parseStringText("STRING"), 80U);
    for (char const* const wrong : {"STRING()", "STRING(0)", "STRING(x)", "STRING(20", "STRING20", "STRING(32768)"}) {
        EXPECT_FALSE(plc::parseStringText(wrong)) << wrong;
    }
}

TEST(Layout, PlacesAreAlignedAndKeepOffReservedOnes) {
    plc::Layout layout;
    layout.reserve(6, 3);
    EXPECT_EQ(layout.place(1, 1), 0U);
    EXPECT_EQ(layout.place(4, 4), 12U);
    EXPECT_EQ(layout.place(2, 2), 16U);
}

TEST(Layout, BitsShareAByte) {
    plc::Layout layout;
    EXPECT_EQ(layout.place(1, 1), 0U);
    for (std::uint64_t bit = 8; bit < 16; ++bit) {
        EXPECT_EQ(layout.placeBit(), bit);
    }
    EXPECT_EQ(layout.place(1, 1), 2U);
    EXPECT_EQ(layout.placeBit(), 24U);
}

TEST(Program, EveryElementaryTypeHasItsSizeAndAlignment) {
    ProgramDescription description;
    for (char const* const type : {"BOOL", "LREAL", "BYTE", "LINT", "SINT", "ULINT", "USINT", "REAL", "INT", "DINT",
                                   "UINT", "UDINT", "WORD", "DWORD", "BOOL", "TIME", "STRING(4)", "string"}) {
        description.variables.push_back(
            {.name = "v" + std::to_string(description.variables.size()), .type = type, .area = 2});
    }
    Program const program(description);
    std::vector<std::uint32_t> offsets;
    for (plc::Symbol const& symbol : program.symbols()) {
        EXPECT_EQ(symbol.place.area, 2);
        offsets.push_back(symbol.place.offset);
    }
    EXPECT_EQ(offsets,
              (std::vector<std::uint32_t>{0, 8, 16, 24, 32, 40, 48, 52, 56, 60, 64, 68, 72, 76, 80, 84, 88, 93}));
    EXPECT_EQ(program.symbols().back().place.size, 81U);
    EXPECT_EQ(program.types()[program.symbols().back().place.type].name, "STRING(80)");
}

TEST(Program, StructureMembersAreSymbolsOfTheirOwn) {
    ProgramDescription description;
    description.structures = {
        {.name = "LINE", .members = {{"On", "BOOL"}, {"Pump", "Pump"}, {"Levels", "ARRAY [1..2] OF REAL"}}},
        {.name = "PUMP", .members = {{"Running", "BOOL"}, {"Speed", "INT"}, {"Fault", "BOOL"}}}};
    description.variables = {{.name = "Flag", .type = "BOOL"}, {.name = "L", .type = "line", .flags = 0x1234}};
    Program const program(description);
    std::vector<std::string> lines;
    for (plc::Symbol const& symbol : program.symbols()) {
        lines.push_back(symbol.name + " " + program.types()[symbol.place.type].name + " " +
                        std::to_string(symbol.place.offset) + " " + std::to_string(symbol.place.size));
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"Flag BOOL 0 1", "L LINE 4 16", "L.On BOOL 4 1", "L.Pump PUMP 6 6",
                                               "L.Pump.Running BOOL 6 1", "L.Pump.Speed INT 8 2",
                                               "L.Pump.Fault BOOL 10 1", "L.Levels ARRAY [1..2] OF REAL 12 8"}));
    EXPECT_EQ(program.symbols()[5].flags, 0x1234);
}

TEST(Program, FindsVariablesMembersAndElementsWhateverTheCase) {
    ProgramDescription description;
    description.structures = {{.name = "PUMP", .members = {{"Speed", "INT"}, {"Log", "ARRAY [0..1,5..7] OF BYTE"}}}};
    description.variables = {{.name = "A.Pumps", .type = "ARRAY [1..3] OF PUMP", .offset = 100},
                             {.name = "A.B", .type = "BIT", .area = 1, .offset = 13}};
    Program const program(description);
    EXPECT_EQ(program.find("a.pumps")->offset, 100U);
    EXPECT_EQ(program.find("A.Pumps[1]")->offset, 100U);
    EXPECT_EQ(program.find("A.PUMPS[3].speed")->offset, 116U);
    EXPECT_EQ(program.find("A.Pumps[ 2 ].Log[1, 6]")->offset, 100U + 8 + 2 + 4);
    EXPECT_EQ(program.find("A.Pumps[2].Log")->kind, TypeKind::kArray);
    EXPECT_EQ(program.find("a.b")->kind, TypeKind::kBit);
    EXPECT_EQ(program.find("a.b")->offset, 13U);
    for (char const* const wrong :
         {"", "A", "A.Pumps[0]", "A.Pumps[4]", "A.Pumps[1", "A.Pumps[]", "A.Pumps[1,1]", "A.Pumps[1].Spee",
          "A.Pumps[1].", "A.Pumps[1]Speed", "A.Pumps[x].Speed", "A.Pumps[1].Speed.x", "A.B[0]", "A.Pumps[1].Log[0]",
          "A.Pumps[1].Log[0,8]", "[0]"}) {
        EXPECT_FALSE(program.find(wrong)) << wrong;
    }
}

TEST(Program, BitsAreNumberedFromTheAreasStart) {
    ProgramDescription description;
    description.variables = {{.name = "w", .type = "WORD"},
                             {.name = "b0", .type = "BIT"},
                             {.name = "b1", .type = "BIT"},
                             {.name = "x", .type = "BYTE"},
                             {.name = "high", .type = "BIT", .offset = 31}};
    Program const program(description);
    EXPECT_EQ(program.find("b0")->offset, 16U);
    EXPECT_EQ(program.find("b1")->offset, 17U);
    EXPECT_EQ(program.find("x")->offset, 4U); // byte 3 is the one of bit 31
    EXPECT_EQ(program.types()[program.find("b0")->type].name, "BOOL");
}

TEST(Program, VariablesThatAreListedOnlyMayLieAnywhere) {
    ProgramDescription description;
    description.variables = {{.name = "v", .type = "INT", .area = 9, .offset = 0xFFFFFFFF, .listedOnly = true},
                             {.name = "w", .type = "INT"}};
    Program const program(description);
    EXPECT_EQ(program.find("v")->area, 9);
    EXPECT_EQ(program.find("v")->offset, 0xFFFFFFFF);
    EXPECT_TRUE(program.find("v")->listedOnly);
    EXPECT_EQ(program.find("w")->offset, 0U);
}

TEST(Program, ComplainsAboutTypes) {
    EXPECT_EQ(ComplaintAboutType("INT"), "");
    EXPECT_EQ(ComplaintAboutType("ARRAY [0..1] OF ARRAY [0..1] OF PUMP"), "");
    EXPECT_EQ(ComplaintAboutType("INTEGER"), "7: there is no type \"INTEGER\"");
    EXPECT_EQ(ComplaintAboutType("ARRAY [1..0] OF INT"),
              "7: \"ARRAY [1..0] OF INT\" is not written as ARRAY [low..high] OF type");
    EXPECT_EQ(ComplaintAboutType("ARRAY [0..7] OF BIT"), "7: a BIT cannot lie in an array");
    EXPECT_EQ(ComplaintAboutType("ARRAY [0..2000000000] OF DINT"),
              "7: type ARRAY [0..2000000000] OF DINT is too large");
    EXPECT_EQ(ComplaintAboutType("ARRAY [0..65535, 0..65535, 0..65535, 0..65535] OF BYTE"),
              "7: type ARRAY [0..65535, 0..65535, 0..65535, 0..65535] OF BYTE is too large");
}

TEST(Program, ComplainsAboutStructures) {
    auto const complaint = [](std::vector<plc::StructureDescription> structures) {
        ProgramDescription description;
        description.structures = std::move(structures);
        description.variables = {{.name = "v", .type = description.structures[0].name}};
        return ComplaintAboutProgram(description);
    };
    EXPECT_EQ(complaint({{.name = "INT", .members = {{"a", "INT"}}, .line = 3}}),
              "3: \"INT\" cannot be the name of a structure");
    EXPECT_EQ(complaint({{.name = "S", .line = 3}}), "3: structure S has no members");
    EXPECT_EQ(complaint({{.name = "S", .members = {{"a", "INT"}, {"A", "INT"}}, .line = 3}}),
              "3: structure S: member \"A\" occurs twice");
    EXPECT_EQ(complaint({{.name = "S", .members = {{"", "INT"}}, .line = 3}}),
              "3: structure S: member \"\" has no name");
    EXPECT_EQ(
        complaint({{.name = "S", .members = {{"a", "INT"}}}, {.name = "s", .members = {{"a", "INT"}}, .line = 4}}),
        "4: structure s occurs twice");
    EXPECT_EQ(complaint({{.name = "S", .members = {{"a", "ARRAY [0..1] OF S"}}, .line = 3}}),
              "3: structure S contains itself");
    EXPECT_EQ(complaint({{.name = "S", .members = {{"a", "BIT"}}, .line = 3}}), "3: a BIT cannot lie in structure S");
    EXPECT_EQ(complaint({{.name = "S", .members = {{"a", "X"}}, .line = 3}}), "3: there is no type \"X\"");
}

TEST(Program, ComplainsAboutVariables) {
    auto const complaint = [](std::vector<plc::VariableDescription> variables) {
        ProgramDescription description;
        description.structures = {{.name = "S", .members = {{"a", "INT"}}}};
        description.areaSizes = {4, 0, 0, 0, 0, 0};
        description.variables = std::move(variables);
        return ComplaintAboutProgram(description);
    };
    EXPECT_EQ(complaint({{.name = "v", .type = "INT"}, {.name = "V", .type = "INT", .line = 2}}),
              "2: variable V occurs twice");
    EXPECT_EQ(complaint({{.name = "v.a", .type = "INT", .line = 1}, {.name = "v", .type = "S", .line = 2}}),
              "2: variable v.a occurs twice");
    EXPECT_EQ(complaint({{.name = "", .type = "INT", .line = 2}}), "2: a variable has no name");
    EXPECT_EQ(complaint({{.name = "v[0]", .type = "INT", .value = plc::Value(1), .line = 2}}),
              "2: variable v[0]: a name has no '['; an array is one variable of a type such as ARRAY [0..9] OF INT, "
              "with a list as its value");
    EXPECT_EQ(complaint({{.name = "v[0]", .type = "INT", .offset = 0, .listedOnly = true, .line = 2}}), "");
    EXPECT_EQ(complaint({{.name = "v", .type = "INT", .area = 6, .line = 2}}),
              "2: variable v lies in area 6, there are areas 0 to 5");
    EXPECT_EQ(complaint({{.name = "v", .type = "DINT", .offset = 1, .line = 2}}),
              "2: variable v ends at byte 5 of area 0, which has 4");
    EXPECT_EQ(complaint({{.name = "v", .type = "DINT"}, {.name = "w", .type = "BOOL", .line = 2}}),
              "2: variable w ends at byte 5 of area 0, which has 4");
    EXPECT_EQ(complaint({{.name = "v", .type = "BIT", .offset = 31}}), "");
    EXPECT_EQ(complaint({{.name = "v", .type = "BIT", .offset = 32, .line = 2}}),
              "2: variable v ends at byte 5 of area 0, which has 4");
    EXPECT_EQ(complaint({{.name = "v", .type = "INT", .listedOnly = true, .line = 2}}),
              "2: variable v is listed only: it needs an offset and has no value");
}

TEST(Memory, AnswersOnlyWhatLiesInsideAnArea) {
    plc::Memory memory({4, 0, 0, 0, 0, 2});
    EXPECT_EQ(memory.at(0, 0, 4)->size(), 4U);
    EXPECT_EQ(memory.at(0, 4, 0)->size(), 0U);
    EXPECT_FALSE(memory.at(0, 1, 4));
    EXPECT_FALSE(memory.at(0, 5, 0));
    EXPECT_FALSE(memory.at(0, UINT64_MAX, 2));
    EXPECT_FALSE(memory.at(0, 2, UINT64_MAX));
    EXPECT_FALSE(memory.at(1, 0, 1));
    EXPECT_FALSE(memory.at(6, 0, 0));
    memory.at(5, 1, 1)->front() = 9;
    EXPECT_EQ(memory.area(5)[1], 9);
}

} // namespace
