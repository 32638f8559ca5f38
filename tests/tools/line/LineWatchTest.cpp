#include "tools/velk/line/LineWatch.h"

#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using velk::LineWatch;
using velk::WatchedLine;
using velktest::Hex;

constexpr WatchedLine kBehindCouplers{.routingHeaderLength = 19, .couplers = true};
constexpr WatchedLine kRoutedOnly{.routingHeaderLength = 19, .couplers = false};
constexpr WatchedLine kBare{.routingHeaderLength = 0, .couplers = false};

// The status is the last byte but one of the header.
constexpr char const* kSentBack = "4F 80 00 10 0A 00 00 00 00 00 00 00 00 00 00 00 00 07 00 | 55 55 0A 00 01 00";
constexpr char const* kPassedOn = "4F 80 00 10 0A 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | 55 55 0A 00 01 00";
constexpr char const* kNoise = "91 3C 81 07 22 B0 5E 13 F4 66 0D A9 70 C8 3B 5A E1 EA 91 12 34 56";

class LineWatchTest : public testing::Test {
protected:
    static LineWatch after(WatchedLine line, char const* hex) {
        LineWatch watch(line);
        watch.onFrame({host::FrameDirection::Received, Hex(hex), 0, 0});
        return watch;
    }
};

TEST_F(LineWatchTest, ACouplerIsBelievedWhereCouplersAre) {
    EXPECT_EQ(after(kBehindCouplers, kSentBack).couplerStatus(), 7);
    EXPECT_EQ(after(kBehindCouplers, kSentBack).strayBytes(), 0U);
    EXPECT_EQ(after(kRoutedOnly, kSentBack).couplerStatus(), 0);
    EXPECT_EQ(after(kRoutedOnly, kSentBack).strayBytes(), 25U);
    EXPECT_EQ(after(kBare, kSentBack).couplerStatus(), 0);
}

TEST_F(LineWatchTest, NoiseIsNoCoupler) {
    for (WatchedLine const line : {kBehindCouplers, kRoutedOnly}) {
        EXPECT_EQ(after(line, kNoise).couplerStatus(), 0);
        EXPECT_EQ(after(line, kNoise).strayBytes(), 22U);
    }
    // Where frames are bare the driver looks for no status.
    EXPECT_EQ(after(kBare, kNoise).couplerStatus(), 0);
    EXPECT_EQ(after(kBare, kNoise).strayBytes(), 0U);
}

TEST_F(LineWatchTest, TheLastFrameCounts) {
    LineWatch watch = after(kBehindCouplers, kNoise);
    watch.onFrame({host::FrameDirection::Received, Hex(kPassedOn), 0, 0});
    EXPECT_EQ(watch.strayBytes(), 0U);
    watch.onFrame({host::FrameDirection::Received, Hex(kSentBack), 0, 0});
    EXPECT_EQ(watch.couplerStatus(), 7);
    watch.onFrame({host::FrameDirection::Sent, Hex(kPassedOn), 0, 0});
    EXPECT_EQ(watch.couplerStatus(), 7) << "what is sent says nothing";
    watch.onFrame({host::FrameDirection::Received, Hex("91"), 0, 0});
    EXPECT_EQ(watch.couplerStatus(), 0);
    EXPECT_EQ(watch.received(), 4U);
}

} // namespace
