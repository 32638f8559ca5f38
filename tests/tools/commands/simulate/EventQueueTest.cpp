#include "tools/velk/commands/simulate/EventQueue.h"

#include <gtest/gtest.h>

#include <poll.h>

namespace {

using namespace std::chrono_literals;
using velk::simulation::EventQueue;

class EventQueues : public testing::Test {
protected:
    [[nodiscard]] bool isFilled() const {
        pollfd filled{queue.descriptor(), POLLIN, 0};
        return ::poll(&filled, 1, 0) == 1;
    }

    EventQueue queue{8, [](std::size_t count, plc::Micros time) {
                         return "(" + std::to_string(count) + " until " + std::to_string(time.count()) + ")\n";
                     }};
};

TEST_F(EventQueues, GiveLinesInTheirOrder) {
    EXPECT_FALSE(isFilled());
    queue.put("a\n", 1us);
    queue.put("b\n", 2us);
    EXPECT_TRUE(isFilled());
    EXPECT_EQ(queue.take(), "a\nb\n");
    EXPECT_FALSE(isFilled());
    EXPECT_EQ(queue.take(), "");
}

TEST_F(EventQueues, LeaveOutWhatDoesNotFitAndSayHowMuch) {
    queue.put("1234567\n", 1us);
    queue.put("x\n", 2us);
    queue.put("y\n", 3us);
    EXPECT_EQ(queue.take(), "1234567\n(2 until 3)\n");
    queue.put("z\n", 4us);
    EXPECT_EQ(queue.take(), "z\n");
}

TEST_F(EventQueues, HaveOneGapAtATime) {
    queue.put("123456\n", 1us);
    queue.put("too long\n", 2us);
    queue.put("", 3us); // would fit, but comes after the gap
    EXPECT_EQ(queue.take(), "123456\n(2 until 3)\n");
}

TEST_F(EventQueues, TellOfALineThatIsTooLongForThem) {
    queue.put("much too long\n", 1us);
    EXPECT_TRUE(isFilled());
    EXPECT_EQ(queue.take(), "(1 until 1)\n");
}

} // namespace
