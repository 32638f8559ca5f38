#include "driver/link/Acknowledge.h"

#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace velktest;
using _VELK::ByteOrder;
using _VELK::isAcknowledge;
using _VELK::writeAcknowledge;

Bytes Written(std::uint16_t number, ByteOrder order) {
    Bytes message(8, 0xEE);
    writeAcknowledge(message, number, order);
    EXPECT_EQ(Bytes(message.begin() + 6, message.end()), Hex("EE EE")) << "bytes behind it were touched";
    message.resize(6);
    return message;
}

TEST(Acknowledge, OfABlock) {
    EXPECT_EQ(Written(1, ByteOrder::LittleEndian), Hex("55 55 0A 00 01 00"));
    EXPECT_EQ(Written(1, ByteOrder::BigEndian), Hex("55 55 00 0A 00 01"));
    EXPECT_EQ(Written(0x1234, ByteOrder::LittleEndian), Hex("55 55 0A 00 34 12"));
    EXPECT_EQ(Written(0x1234, ByteOrder::BigEndian), Hex("55 55 00 0A 12 34"));
}

TEST(Acknowledge, TurnaroundHasBlockZero) {
    EXPECT_EQ(Written(_VELK::kNoBlock, ByteOrder::LittleEndian), Hex("55 55 0A 00 00 00"));
    EXPECT_EQ(Written(_VELK::kNoBlock, ByteOrder::BigEndian), Hex("55 55 00 0A 00 00"));
}

TEST(Acknowledge, IsRecognisedInItsByteOrderOnly) {
    EXPECT_TRUE(isAcknowledge(Hex("55 55 0A 00 01 00"), 1, ByteOrder::LittleEndian));
    EXPECT_FALSE(isAcknowledge(Hex("55 55 0A 00 01 00"), 1, ByteOrder::BigEndian));
    EXPECT_TRUE(isAcknowledge(Hex("55 55 00 0A 00 01"), 1, ByteOrder::BigEndian));
    EXPECT_FALSE(isAcknowledge(Hex("55 55 00 0A 00 01"), 1, ByteOrder::LittleEndian));
}

TEST(Acknowledge, EveryFieldCounts) {
    EXPECT_FALSE(isAcknowledge(Hex("54 55 0A 00 01 00"), 1, ByteOrder::LittleEndian));
    EXPECT_FALSE(isAcknowledge(Hex("55 54 0A 00 01 00"), 1, ByteOrder::LittleEndian));
    EXPECT_FALSE(isAcknowledge(Hex("55 55 0B 00 01 00"), 1, ByteOrder::LittleEndian));
    EXPECT_FALSE(isAcknowledge(Hex("55 55 0A 01 01 00"), 1, ByteOrder::LittleEndian));
    EXPECT_FALSE(isAcknowledge(Hex("55 55 0A 00 02 00"), 1, ByteOrder::LittleEndian));
    EXPECT_FALSE(isAcknowledge(Hex("55 55 0A 00 01 01"), 1, ByteOrder::LittleEndian));
}

TEST(Acknowledge, TooFewBytesAreNone) {
    EXPECT_FALSE(isAcknowledge(Hex("55 55 0A 00 01"), 1, ByteOrder::LittleEndian));
    EXPECT_FALSE(isAcknowledge({}, 0, ByteOrder::LittleEndian));
}

} // namespace
