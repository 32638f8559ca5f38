#include "driver/link/BlockFrame.h"

#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace velktest;
using _VELK::blockChecksum;
using _VELK::BlockFault;
using _VELK::ByteOrder;
using _VELK::parseBlockFrame;
using _VELK::ReceivedBlock;
using _VELK::writeBlockFrame;

Bytes Written(Bytes const& payload, std::uint16_t number, bool last, ByteOrder order) {
    Bytes frame(8 + payload.size() + 3, 0xEE);
    std::size_t const length = writeBlockFrame(frame, payload, number, last, order);
    EXPECT_EQ(length, 8 + payload.size());
    EXPECT_EQ(Bytes(frame.end() - 3, frame.end()), Hex("EE EE EE")) << "bytes behind the frame were touched";
    frame.resize(length);
    return frame;
}

Bytes const kLinkCheck = Hex("42 E0 20 26 29 00 00 5D 05");

TEST(BlockFrame, LittleEndianLinkCheck) {
    EXPECT_EQ(Written(kLinkCheck, 1, true, ByteOrder::LittleEndian),
              Hex("AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05"));
}

TEST(BlockFrame, BigEndianLinkCheck) {
    EXPECT_EQ(Written(kLinkCheck, 1, true, ByteOrder::BigEndian),
              Hex("AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05"));
}

TEST(BlockFrame, BlockInTheMiddleIsNotFlaggedLast) {
    // AA + AA + 02 + 34 + 12 + FF + 01 = 29C
    EXPECT_EQ(Written(Hex("FF 01"), 0x1234, false, ByteOrder::LittleEndian), Hex("AA AA 02 00 34 12 9C 00 FF 01"));
    EXPECT_EQ(Written(Hex("FF 01"), 0x1234, false, ByteOrder::BigEndian), Hex("AA AA 00 02 12 34 9C 00 FF 01"));
}

TEST(BlockFrame, LengthOfALargeBlockTakesBothBytes) {
    Bytes const payload(1452, 0x00);
    // 1452 = 0x05AC; AA + AA + AC + 05 + 01 + 01 = 207
    Bytes const frame = Written(payload, 1, true, ByteOrder::LittleEndian);
    EXPECT_EQ(Bytes(frame.begin(), frame.begin() + 8), Hex("AA AA AC 05 01 00 07 01"));
    Bytes const swapped = Written(payload, 1, true, ByteOrder::BigEndian);
    EXPECT_EQ(Bytes(swapped.begin(), swapped.begin() + 8), Hex("AA AA 05 AC 00 01 07 01"));
}

TEST(BlockFrame, EmptyPayload) {
    // AA + AA + 01 + 01 = 156
    EXPECT_EQ(Written({}, 1, true, ByteOrder::LittleEndian), Hex("AA AA 00 00 01 00 56 01"));
}

TEST(BlockChecksum, IsTheSumOfAllBytesButItsOwn) {
    EXPECT_EQ(blockChecksum(Hex("AA AA 01 00 01 00 00 01 02")), 0x59);
    EXPECT_EQ(blockChecksum(Hex("AA AA 01 00 01 00 FF 01 02")), 0x59) << "the checksum byte counts as zero";
    EXPECT_EQ(blockChecksum(Hex("AA AA 01 00 01 00 00 01 A9")), 0x00) << "the sum is taken modulo 256";
}

TEST(BlockChecksum, DoesNotSeeSwappedBytesOrErrorsThatCancel) {
    EXPECT_EQ(blockChecksum(Hex("AA AA 02 00 01 00 00 01 12 34")), blockChecksum(Hex("AA AA 02 00 01 00 00 01 34 12")));
    EXPECT_EQ(blockChecksum(Hex("AA AA 02 00 01 00 00 01 12 34")), blockChecksum(Hex("AA AA 02 00 01 00 00 01 13 33")));
}

TEST(ReceivedBlock, DeliversPayloadAndLastFlag) {
    Bytes const frame = Hex("AA AA 02 00 01 00 9E 01 34 12");
    ReceivedBlock block;
    ASSERT_EQ(parseBlockFrame(frame, 1, ByteOrder::LittleEndian, block), BlockFault::None);
    EXPECT_TRUE(block.last);
    EXPECT_EQ(Bytes(block.payload.begin(), block.payload.end()), Hex("34 12"));
}

TEST(ReceivedBlock, BigEndianNumber) {
    ReceivedBlock block;
    Bytes const frame = Hex("AA AA 00 02 12 34 E3 00 34 12");
    EXPECT_EQ(parseBlockFrame(frame, 0x1234, ByteOrder::BigEndian, block), BlockFault::WrongChecksumOrNumber);
    // AA + AA + 02 + 12 + 34 + 34 + 12 = 1E2
    Bytes const right = Hex("AA AA 00 02 12 34 E2 00 34 12");
    ASSERT_EQ(parseBlockFrame(right, 0x1234, ByteOrder::BigEndian, block), BlockFault::None);
    EXPECT_FALSE(block.last);
    EXPECT_EQ(parseBlockFrame(right, 0x1234, ByteOrder::LittleEndian, block), BlockFault::WrongChecksumOrNumber);
}

TEST(ReceivedBlock, AnyNonZeroFlagMeansLast) {
    ReceivedBlock block;
    // AA + AA + 01 + 80 = 1D5
    ASSERT_EQ(parseBlockFrame(Hex("AA AA 00 00 01 00 D5 80"), 1, ByteOrder::LittleEndian, block), BlockFault::None);
    EXPECT_TRUE(block.last);
    EXPECT_TRUE(block.payload.empty());
}

TEST(ReceivedBlock, LengthFieldIsNotConsulted) {
    ReceivedBlock block;
    // The field says 0x0900 bytes, there are two. AA + AA + 09 + 01 + 01 + 34 + 12 = 1A5
    Bytes const frame = Hex("AA AA 00 09 01 00 A5 01 34 12");
    ASSERT_EQ(parseBlockFrame(frame, 1, ByteOrder::LittleEndian, block), BlockFault::None);
    EXPECT_EQ(Bytes(block.payload.begin(), block.payload.end()), Hex("34 12"));
}

TEST(ReceivedBlock, RightChecksumDoesNotSaveAWrongNumber) {
    ReceivedBlock block;
    // AA + AA + 02 + 01 = 157
    EXPECT_EQ(parseBlockFrame(Hex("AA AA 00 00 02 00 57 01"), 1, ByteOrder::LittleEndian, block),
              BlockFault::WrongChecksumOrNumber);
    EXPECT_EQ(parseBlockFrame(Hex("AA AA 00 00 02 00 57 01"), 2, ByteOrder::LittleEndian, block), BlockFault::None);
}

TEST(ReceivedBlock, WrongChecksum) {
    ReceivedBlock block;
    EXPECT_EQ(parseBlockFrame(Hex("AA AA 02 00 01 00 9D 01 34 12"), 1, ByteOrder::LittleEndian, block),
              BlockFault::WrongChecksumOrNumber);
}

TEST(ReceivedBlock, ProtocolIdIsCheckedBeforeTheChecksum) {
    ReceivedBlock block;
    EXPECT_EQ(parseBlockFrame(Hex("AA 55 02 00 01 00 00 01 34 12"), 1, ByteOrder::LittleEndian, block),
              BlockFault::WrongProtocolId);
    EXPECT_EQ(parseBlockFrame(Hex("55 AA 02 00 01 00 00 01 34 12"), 1, ByteOrder::LittleEndian, block),
              BlockFault::WrongProtocolId);
}

TEST(ReceivedBlock, EverythingBelowAHeaderIsTooShort) {
    Bytes const whole = Hex("AA AA 00 00 01 00 56 01");
    for (std::size_t length = 0; length < 8; ++length) {
        ReceivedBlock block;
        Bytes const cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(parseBlockFrame(cut, 1, ByteOrder::LittleEndian, block), BlockFault::TooShort) << length;
    }
}

} // namespace
