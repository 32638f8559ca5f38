#include "host/serial/FrameReader.h"

#include "tests/host/FakeLine.h"

#include <gtest/gtest.h>

#include <array>

namespace hosttest {
namespace {

constexpr host::ReadTimes kTimes{500'000, 20'000};

class FrameReader : public testing::Test {
protected:
    host::ReceivedFrame read(host::ReadTimes const& times = kTimes) {
        return host::readFrame(line, clock, room, times);
    }
    Bytes received(host::ReceivedFrame const& frame) const {
        return {room.begin(), room.begin() + static_cast<std::ptrdiff_t>(frame.count)};
    }
    std::int64_t elapsed() const { return clock.now - 1'000'000; }

    FakeClock clock;
    FakeLine line{clock};
    std::array<unsigned char, 16> room{};
};

TEST_F(FrameReader, TwoBurstsWithinTheSilenceAreOneFrame) {
    line.arrive(100, {1, 2, 3});
    line.arrive(119, {4, 5});
    auto const frame = read();
    EXPECT_FALSE(frame.fault);
    EXPECT_EQ(received(frame), (Bytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(elapsed(), 139'000) << "the frame ends 20 ms after its last byte";
}

TEST_F(FrameReader, ABurstAfterTheSilenceBelongsToTheNextFrame) {
    line.arrive(100, {1, 2, 3});
    line.arrive(121, {4, 5});
    EXPECT_EQ(received(read()), (Bytes{1, 2, 3}));
    EXPECT_EQ(received(read()), (Bytes{4, 5}));
}

TEST_F(FrameReader, EveryByteStartsTheSilenceAnew) {
    for (int i = 0; i < 8; ++i) {
        line.arrive(10 + i * 19, {static_cast<unsigned char>(i)});
    }
    EXPECT_EQ(received(read()), (Bytes{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(FrameReader, AFullRoomEndsTheFrameWithoutWaiting) {
    line.arrive(5, Bytes(20, 0xAA));
    EXPECT_EQ(read().count, 16U);
    EXPECT_EQ(elapsed(), 5'000);
    EXPECT_EQ(read().count, 4U) << "the rest is still there";
}

TEST_F(FrameReader, NothingWithinTheFirstByteTimeIsATimeOutAndNoFault) {
    auto const frame = read();
    EXPECT_EQ(frame.count, 0U);
    EXPECT_FALSE(frame.fault);
    EXPECT_EQ(elapsed(), 500'000);
}

TEST_F(FrameReader, ZeroTimesTakeWhatIsThereAndDoNotWait) {
    line.arrive(0, {7, 8});
    line.arrive(1, {9});
    EXPECT_EQ(received(read({0, 0})), (Bytes{7, 8}));
    EXPECT_EQ(elapsed(), 0);
}

TEST_F(FrameReader, AnInterruptedWaitGoesOnWithTheTimeThatIsLeft) {
    line.happen(100, FakeLine::Event::Interrupt);
    line.happen(300, FakeLine::Event::Interrupt);
    line.arrive(499, {1});
    EXPECT_EQ(received(read()), (Bytes{1}));
    EXPECT_EQ(line.longestWait, 500'000) << "never more than the time asked for";
}

TEST_F(FrameReader, InterruptsDoNotLengthenTheFirstByteTime) {
    line.happen(400, FakeLine::Event::Interrupt);
    EXPECT_EQ(read().count, 0U);
    EXPECT_EQ(elapsed(), 500'000);
}

TEST_F(FrameReader, WakeUpsWithoutAByteDoNotSpin) {
    for (int i = 0; i < 1000; ++i) {
        line.happen(500, FakeLine::Event::WakeUp);
    }
    auto const frame = read();
    EXPECT_EQ(frame.count, 0U);
    EXPECT_FALSE(frame.fault);
    EXPECT_LE(line.waits, 2);
}

TEST_F(FrameReader, AHangUpIsAFault) {
    line.happen(100, FakeLine::Event::HangUp);
    auto const frame = read();
    EXPECT_TRUE(frame.fault);
    EXPECT_EQ(frame.count, 0U);
    EXPECT_EQ(elapsed(), 100'000) << "known at once, not after the time-out";
}

TEST_F(FrameReader, AHangUpInTheMiddleOfAFrameIsAFaultThatKeepsTheFirstBytes) {
    line.arrive(100, {1, 2});
    line.happen(110, FakeLine::Event::HangUp);
    auto const frame = read();
    EXPECT_TRUE(frame.fault);
    EXPECT_EQ(received(frame), (Bytes{1, 2}));
}

TEST_F(FrameReader, TellsWhenTheFirstAndTheLastByteCame) {
    line.arrive(100, {1});
    line.arrive(115, {2});
    auto const frame = read();
    EXPECT_EQ(frame.firstByteAt, 1'100'000);
    EXPECT_EQ(frame.lastByteAt, 1'115'000);
}

TEST_F(FrameReader, NoRoomAsksForNothing) {
    line.arrive(0, {1});
    auto const frame = host::readFrame(line, clock, {}, kTimes);
    EXPECT_EQ(frame.count, 0U);
    EXPECT_FALSE(frame.fault);
    EXPECT_EQ(line.waits, 0);
}

} // namespace
} // namespace hosttest
