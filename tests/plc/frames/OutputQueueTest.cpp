#include "plc/frames/OutputQueue.h"

#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using plctest::Hex;
using plctest::Show;

TEST(OutputQueue, FramesLeaveWhenTheyAreDue) {
    plc::OutputQueue queue(0);
    EXPECT_FALSE(queue.nextDue());
    EXPECT_EQ(queue.send(Hex("01 02"), 5ms), 5ms);
    EXPECT_EQ(queue.nextDue(), 5ms);
    EXPECT_EQ(Show(queue.take(4ms)), "");
    EXPECT_EQ(Show(queue.take(5ms)), "01 02");
    EXPECT_EQ(Show(queue.take(5ms)), "");
}

TEST(OutputQueue, ALateFrameDoesNotHoldUpALaterOneThatIsDueEarlier) {
    plc::OutputQueue queue(0);
    queue.send(Hex("01"), 50ms);
    queue.send(Hex("02"), 10ms);
    queue.send(Hex("03"), 10ms);
    queue.send({}, 1ms);
    EXPECT_EQ(queue.nextDue(), 10ms);
    EXPECT_EQ(Show(queue.take(10ms)), "02 03");
    EXPECT_EQ(Show(queue.take(1s)), "01");
}

TEST(OutputQueue, BytesLeaveAtTheLinesPace) {
    plc::OutputQueue queue(1000);
    EXPECT_EQ(queue.send(Hex("01 02 03"), 10ms), 13ms);
    EXPECT_EQ(queue.send(Hex("04"), 10ms), 14ms);
    EXPECT_EQ(queue.nextDue(), 11ms);
    EXPECT_EQ(Show(queue.take(10'999us)), "");
    EXPECT_EQ(Show(queue.take(11ms)), "01");
    EXPECT_EQ(queue.nextDue(), 12ms);
    EXPECT_EQ(Show(queue.take(13'500us)), "02 03");
    EXPECT_EQ(queue.nextDue(), 14ms);
    EXPECT_EQ(Show(queue.take(14ms)), "04");
    EXPECT_FALSE(queue.nextDue());
    EXPECT_EQ(queue.send(Hex("05"), 20ms), 21ms);
    EXPECT_EQ(Show(queue.take(21ms)), "05");
}

TEST(OutputQueue, AFrameThatIsLeavingIsNotInterrupted) {
    plc::OutputQueue queue(1000);
    queue.send(Hex("01 02"), 10ms);
    EXPECT_EQ(Show(queue.take(11ms)), "01");
    queue.send(Hex("03"), 5ms);
    EXPECT_EQ(Show(queue.take(20ms)), "02 03");
}

TEST(OutputQueue, PaceIsRoundedUpByLessThanAMicrosecondForAFrame) {
    plc::OutputQueue queue(3);
    queue.send(Hex("01 02 03"), 0ms);
    EXPECT_EQ(queue.nextDue(), 333'334us);
    EXPECT_EQ(Show(queue.take(666'666us)), "01");
    EXPECT_EQ(Show(queue.take(1s)), "02 03");
}

} // namespace
