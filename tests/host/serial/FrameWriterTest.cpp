#include "host/serial/FrameWriter.h"

#include "tests/host/FakeLine.h"

#include <gtest/gtest.h>

namespace hosttest {
namespace {

constexpr std::int64_t kMillisecondPerByte = 1'000'000; // nanoseconds

class FrameWriter : public testing::Test {
protected:
    host::SendResult send(std::size_t length) {
        frame.resize(length);
        for (std::size_t i = 0; i < length; ++i) {
            frame[i] = static_cast<unsigned char>(i);
        }
        return host::sendFrame(line, clock, frame, kMillisecondPerByte);
    }
    std::int64_t elapsed() const { return clock.now - 1'000'000; }

    FakeClock clock;
    FakeLine line{clock};
    Bytes frame;
};

TEST_F(FrameWriter, AnswersOnlyWhenTheLastByteHasLeft) {
    EXPECT_EQ(send(100), host::SendResult::Sent);
    EXPECT_EQ(line.sent, frame);
    EXPECT_EQ(line.unsent(), 0U);
    EXPECT_TRUE(line.drained);
    EXPECT_EQ(elapsed(), 100'000) << "100 bytes at a byte a millisecond";
    EXPECT_EQ(line.pauses, 1) << "it waits for as long as the bytes need, not in small steps";
}

TEST_F(FrameWriter, GoesOnWhereAPartialWriteStopped) {
    line.limitRoom(10);
    EXPECT_EQ(send(150), host::SendResult::Sent);
    EXPECT_EQ(line.sent, frame);
    EXPECT_EQ(line.waits, 3) << "10 bytes at once, then three times up to 64";
}

TEST_F(FrameWriter, ALineThatTakesNoMoreBytesIsGivenUp) {
    line.limitRoom(10);
    line.roomAfter = 3'600'000'000;
    EXPECT_EQ(send(100), host::SendResult::Stuck);
    EXPECT_EQ(elapsed(), 1'200'000) << "twice the time on the wire and one second";
    EXPECT_EQ(line.dropped, 10U) << "half a frame must not go out later";
}

TEST_F(FrameWriter, ALineThatNeverEmptiesIsGivenUp) {
    line.bytesPerMillisecond = 0;
    EXPECT_EQ(send(100), host::SendResult::Stuck);
    EXPECT_EQ(elapsed(), 1'200'000);
    EXPECT_EQ(line.dropped, 100U);
    EXPECT_FALSE(line.drained);
}

TEST_F(FrameWriter, ADeadLineIsAFault) {
    line.diesSending = true;
    EXPECT_EQ(send(10), host::SendResult::Fault);
}

TEST_F(FrameWriter, ALineThatDiesWhileItIsFullIsAFault) {
    line.limitRoom(4);
    line.diesWaitingForRoom = true;
    EXPECT_EQ(send(10), host::SendResult::Fault);
}

TEST_F(FrameWriter, ALineThatDiesWhileItEmptiesIsAFault) {
    line.diesDraining = true;
    EXPECT_EQ(send(10), host::SendResult::Fault);
}

TEST_F(FrameWriter, ALineThatDiesWhileItsBytesLeaveIsAFault) {
    line.diesPausing = true;
    EXPECT_EQ(send(10), host::SendResult::Fault);
    EXPECT_FALSE(line.drained) << "nobody waits for what is dead";
}

TEST_F(FrameWriter, SlowLinesGetTheTimeTheyNeed) {
    line.bytesPerMillisecond = 1;
    EXPECT_EQ(send(1479), host::SendResult::Sent) << "the longest frame";
    EXPECT_EQ(elapsed(), 1'479'000);
}

} // namespace
} // namespace hosttest
