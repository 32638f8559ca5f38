#include "tools/velk/text/Names.h"

#include "tools/velk/line/SymbolTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

TEST(Pattern, IsToldByItsSigns) {
    EXPECT_TRUE(velk::isPattern("PLC_PRG.*"));
    EXPECT_TRUE(velk::isPattern("A?"));
    EXPECT_TRUE(velk::isPattern("A[0]"));
    EXPECT_FALSE(velk::isPattern("PLC_PRG.Counter"));
}

TEST(Pattern, MatchesWholeNamesWhateverTheCase) {
    EXPECT_TRUE(velk::matches("plc_prg.*", "PLC_PRG.Counter"));
    EXPECT_TRUE(velk::matches("*", "PLC_PRG.Pump.Speed")) << "dots are characters like others";
    EXPECT_TRUE(velk::matches("*.speed", "PLC_PRG.Pump.Speed"));
    EXPECT_TRUE(velk::matches("A?C", "abc"));
    EXPECT_TRUE(velk::matches("A[0-3]", "a2"));
    EXPECT_FALSE(velk::matches("A[0-3]", "a4"));
    EXPECT_FALSE(velk::matches("PLC_PRG", "PLC_PRG.Counter"));
    EXPECT_FALSE(velk::matches("A?C", "ac"));
}

class SymbolTable : public testing::Test {
protected:
    [[nodiscard]] Texts matching(char const* pattern) const {
        Texts names;
        for (velk::Variable const* const variable : table.matching(pattern)) {
            names.push_back(variable->name);
        }
        return names;
    }

    velk::SymbolTable table{0x1234,
                            {{"PLC_PRG.Level", "INT", 0, 4, 2},
                             {"PLC_PRG.Levels", "ARRAY [0..1] OF INT", 0, 8, 4},
                             {"A[1]", "INT", 0, 0, 2},
                             {"A1", "INT", 0, 2, 2}}};
};

TEST_F(SymbolTable, FindsNamesWhateverTheCase) {
    ASSERT_NE(table.find("plc_prg.LEVEL"), nullptr);
    EXPECT_EQ(table.find("plc_prg.LEVEL")->offset, 4U);
    EXPECT_EQ(table.find("PLC_PRG.Leve"), nullptr);
}

TEST_F(SymbolTable, MatchesInTheOrderOfTheFile) {
    EXPECT_THAT(matching("plc_prg.level*"), ElementsAre("PLC_PRG.Level", "PLC_PRG.Levels"));
    EXPECT_THAT(matching("nothing*"), ElementsAre());
}

TEST_F(SymbolTable, ANameWithBracketsIsItselfFirst) {
    EXPECT_THAT(matching("a[1]"), ElementsAre("A[1]"));
    EXPECT_THAT(matching("a[12]"), ElementsAre("A1"));
}

TEST_F(SymbolTable, AMissingVariableIsSaidWithTheLikelyOnes) {
    base::Failure const failure = velk::missingVariable(table, "Level");
    EXPECT_EQ(failure.kind, base::FailureKind::Missing);
    EXPECT_EQ(failure.text, "the PLC program has no such variable; did you mean PLC_PRG.Level?");
}

TEST_F(SymbolTable, AnElementOfAnArrayIsThereWithTheArray) {
    EXPECT_EQ(velk::missingVariable(table, "plc_prg.levels[1].x").text,
              "the elements of an array can only be read with the whole array, PLC_PRG.Levels");
    EXPECT_EQ(velk::missingVariable(table, "nothing[1]").text, "the PLC program has no such variable");
}

TEST_F(SymbolTable, APatternThatFindsNothingMayBeMeantForAnElement) {
    EXPECT_EQ(velk::nothingMatches(table, "Nix*").kind, base::FailureKind::Missing);
    EXPECT_EQ(velk::nothingMatches(table, "Nix*").text, "no variable of the PLC program matches the pattern");
    EXPECT_EQ(velk::nothingMatches(table, "plc_prg.levels[1]").text,
              "the elements of an array can only be read with the whole array, PLC_PRG.Levels");
}

TEST(SymbolTableFile, OneThatIsNotThereIsToldFromABadOne) {
    EXPECT_EQ(velk::SymbolTable::load("/nonexistent/a.sdb").failure().text,
              "there is no symbol file /nonexistent/a.sdb");
    EXPECT_EQ(velk::SymbolTable::load("/dev/null").failure().text,
              "the symbol file /dev/null is corrupted or cannot be read");
}

TEST(AreaName, IsTheAddressSpaces) {
    EXPECT_EQ(velk::areaName(0), "M");
    EXPECT_EQ(velk::areaName(5), "5");
    EXPECT_EQ(velk::areaName(6), "6");
}

// ---- texts

} // namespace
