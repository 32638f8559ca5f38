#include "plc/station/ItemNames.h"

#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace plctest;
using plc::ListItem;

plc::ProgramDescription Press() {
    plc::ProgramDescription program;
    program.structures = {{.name = "PUMP", .members = {{"Speed", "INT"}, {"Log", "ARRAY [1..2] OF INT"}}}};
    program.variables = {{.name = "Level", .type = "INT", .offset = 0},
                         {.name = "Name", .type = "STRING(3)", .offset = 2},
                         {.name = "Lamp", .type = "BIT", .offset = 49},
                         {.name = "Pump", .type = "PUMP", .offset = 8},
                         {.name = "Share", .type = "REAL", .offset = 16},
                         {.name = "Ghost", .type = "INT", .offset = 20, .listedOnly = true}};
    return program;
}

TEST(ItemNames, AreThoseOfTheVariables) {
    plc::Program const program(Press());
    EXPECT_EQ(program.describe(0, 0, 2), "Level");
    EXPECT_EQ(program.describe(0, 49, 0), "Lamp");
    EXPECT_EQ(program.describe(0, 8, 6), "Pump");
    EXPECT_EQ(program.describe(0, 8, 2), "Pump.Speed");
    EXPECT_EQ(program.describe(0, 12, 2), "part of Pump.Log (area 0, offset 12, 2 bytes)");
    EXPECT_EQ(program.describe(0, 0, 4), "area 0, offset 0, 4 bytes");
    EXPECT_EQ(program.describe(0, 20, 2), "area 0, offset 20, 2 bytes");
    EXPECT_EQ(program.describe(0, 50, 0), "area 0, bit 50");
    EXPECT_EQ(program.describe(1, 0, 2), "area 1, offset 0, 2 bytes");
    EXPECT_EQ(program.describe(0, 0xFFFFFFFF, 0xFFFFFFFF), "area 0, offset 4294967295, 4294967295 bytes");
}

TEST(ItemNames, OfAWriteHaveTheirValues) {
    plc::LoadedProgram loaded = plc::loadProgram(Press(), plc::ByteOrder::kLittle);
    plc::Bytes const bytes = Hex("2A 00 41 42 00 00 02 00");
    std::copy(bytes.begin(), bytes.end(), loaded.memory.area(0).begin());
    loaded.memory.area(0)[18] = 0xC0;
    loaded.memory.area(0)[19] = 0x3F;
    std::vector<ListItem> const items{{.area = 0, .offset = 0, .size = 2},  {.area = 0, .offset = 2, .size = 4},
                                      {.area = 0, .offset = 49, .size = 0}, {.area = 0, .offset = 16, .size = 4},
                                      {.area = 0, .offset = 8, .size = 6},  {.area = 0, .offset = 14, .size = 1}};
    EXPECT_EQ(plc::valuesOf(items, loaded, plc::ByteOrder::kLittle),
              "Level = 42, Name = 'AB', Lamp = TRUE, Share = 1.5, Pump, area 0, offset 14, 1 bytes");
}

TEST(ItemNames, OfALongListAreCut) {
    std::vector<ListItem> const items(8, ListItem{.area = 0, .offset = 0, .size = 2});
    EXPECT_EQ(plc::namesOf(items, plc::Program(Press())), "Level, Level, Level, Level, Level, Level and 2 more");
    EXPECT_EQ(plc::namesOf({}, plc::Program(Press())), "");
}

TEST(ItemNames, AreToldWithTheEvents) {
    Recorder recorder;
    plc::Line line(BareLine(), &recorder);
    Panel panel(line);
    ASSERT_EQ(Exchange(panel, kLogin), kLoginAccepted);
    // PLC_PRG.Counter: AA + AA + 14 + 01 + 01 + 2E + 01 + 02 + 01 = 19C.
    ASSERT_EQ(Exchange(panel, "AA AA 14 00 01 00 9C 01 2E 00 01 00 00 00 00 00 00 00 00 00 02 00 00 00 01 00 00 00"),
              "AA AA 09 00 01 00 60 01 00 00 00 00 00 00 01 00 00");
    ASSERT_EQ(recorder.events.size(), 4U);
    EXPECT_EQ(recorder.events[2].text, "1 item read: PLC_PRG.Counter");
}

} // namespace
