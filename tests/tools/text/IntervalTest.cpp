#include "tools/velk/text/Interval.h"

#include <gtest/gtest.h>

namespace {

using velk::parseInterval;

TEST(ParseInterval, TakesMillisecondsSecondsAndMinutes) {
    EXPECT_EQ(parseInterval("500ms"), 500'000);
    EXPECT_EQ(parseInterval("2s"), 2'000'000);
    EXPECT_EQ(parseInterval("1.5s"), 1'500'000);
    EXPECT_EQ(parseInterval("1min"), 60'000'000);
    EXPECT_EQ(parseInterval("1440min"), 86'400'000'000);
}

TEST(ParseInterval, RefusesWhatIsNone) {
    for (char const* const text :
         {"", "5", "ms", "-1s", "0s", "5 parsecs", "1s2", "nans", "infs", "1441min", "1e999s"}) {
        EXPECT_EQ(parseInterval(text), std::nullopt) << text;
    }
}

} // namespace
