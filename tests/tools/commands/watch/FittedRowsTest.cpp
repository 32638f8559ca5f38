#include "tools/velk/commands/watch/FittedRows.h"

#include <gtest/gtest.h>

namespace {

using namespace velk;

/** A good variable with a long value, one that failed, and one that is missing. */
std::vector<WatchRow> rows() {
    return {{"press", "PLC_PRG.Curve", "ARRAY [0..4] OF REAL", "[0, 12.5, 40, 12.5, 0, 12.5, 40, 12.5]", "good",
             "0.6 s", true},
            {"press", "PLC_PRG.Speed", "INT", "(1200)", "FAILED", "12 min", false},
            {"press", "PLC_PRG.Nope", "", "-", "MISSING", "-", false}};
}

TEST(FittedRows, WithRoomNothingIsCut) {
    std::vector<std::string> const lines = fittedRows(rows(), true, 120);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0],
              "station  name           type                  value                                   status   age");
    EXPECT_EQ(lines[2],
              "press    PLC_PRG.Curve  ARRAY [0..4] OF REAL  [0, 12.5, 40, 12.5, 0, 12.5, 40, 12.5]  good     0.6 s");
}

TEST(FittedRows, ValuesGiveWayFirst) {
    std::vector<std::string> const lines = fittedRows(rows(), false, 80);
    EXPECT_EQ(lines[2], "PLC_PRG.Curve  ARRAY [0..4] OF REAL  [0, 12.5, 40, 12.5, 0, ...  good     0.6 s");
    EXPECT_EQ(lines[3], "PLC_PRG.Speed  INT                   (1200)                      FAILED   12 min");
}

TEST(FittedRows, ThenTypesAndThenTheStartOfNames) {
    EXPECT_EQ(fittedRows(rows(), false, 60)[2], "PLC_PRG.Curve  [0, 12.5, 40, 12.5, 0, 12...  good     0.6 s");
    EXPECT_EQ(fittedRows(rows(), false, 36)[2], "...G.Curve  [0, ...  good     0.6 s");
}

TEST(FittedRows, StatusAndAgeAreThereAtAnyUsualWidth) {
    for (std::size_t width = 40; width <= 120; ++width) {
        std::vector<std::string> const lines = fittedRows(rows(), true, width);
        EXPECT_TRUE(lines[0].ends_with("  status   age")) << width << lines[0];
        EXPECT_TRUE(lines[2].ends_with("  good     0.6 s")) << width << lines[2];
        EXPECT_TRUE(lines[3].ends_with("  FAILED   12 min")) << width << lines[3];
        EXPECT_TRUE(lines[4].ends_with("  MISSING  -")) << width << lines[4];
    }
}

TEST(FittedRows, InTheNarrowestTableTheStatusStandsForTheValue) {
    std::vector<std::string> const lines = fittedRows(rows(), false, 20);
    EXPECT_EQ(lines[2], "...RG.Curve  [0, ...");
    EXPECT_EQ(lines[3], "...RG.Speed  FAILED");
    EXPECT_EQ(lines[4], "...PRG.Nope  MISSING");
    EXPECT_EQ(fittedRows({{"press", "A", "INT", "1", "good", "0.1 s", true}}, true, 20)[2], "press:A  1");
}

TEST(FittedRows, NeverGoesOverTheWidth) {
    for (std::size_t width = 0; width <= 130; ++width) {
        for (bool const stations : {false, true}) {
            for (std::string const& line : fittedRows(rows(), stations, width)) {
                EXPECT_LE(line.size(), width) << line;
            }
        }
    }
}

TEST(FittedRows, OfNothingIsTheLineOfHeads) {
    EXPECT_EQ(fittedRows({}, false, 80),
              (std::vector<std::string>{"name  type  value  status  age", "----  ----  -----  ------  ---"}));
}

} // namespace
