#include "protlib/types/BitPacking.h"

#include <climits>
#include <gtest/gtest.h>

#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes unpack(Bytes const& packed, int startBit, int count) {
    // One byte more than asked for, to see that nothing is written after the end.
    Bytes bits(static_cast<std::size_t>(count) + 1, 0xEE);
    ProtUtilsN::UnpackBits(bits.data(), packed.data(), startBit, count);
    EXPECT_EQ(bits.back(), 0xEE);
    bits.pop_back();
    return bits;
}

Bytes pack(Bytes packed, Bytes const& bits, int startBit) {
    ProtUtilsN::PackBits(packed.data(), bits.data(), startBit, static_cast<int>(bits.size()));
    return packed;
}

TEST(LenOfBits, CountsTheBytesThatTheBitsTouch) {
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(7, 2), 2);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(8, 8), 1);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(0, 1), 1);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(7, 1), 1);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(0, 8), 1);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(0, 9), 2);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(1, 8), 2);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(3, 14), 3);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(15, 2), 2);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(7, 16), 3);
}

TEST(LenOfBits, DivisionTruncatesTowardZero) {
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(0, 0), 1);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(5, 0), 1);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(8, 0), 0);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(16, 0), 0);
}

TEST(LenOfBits, HugeCountsDoNotOverflow) {
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(0, INT_MAX), 268435456);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(7, INT_MAX), 268435457);
    EXPECT_EQ(ProtUtilsN::GetLenOfBits(INT_MAX, INT_MAX), 268435457);
}

TEST(UnpackBits, StartsAtTheStartBitAndCrossesBytes) {
    EXPECT_EQ(unpack({0xC0, 0x01}, 6, 4), (Bytes{1, 1, 1, 0}));
    EXPECT_EQ(unpack({0x05}, 0, 8), (Bytes{1, 0, 1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(unpack({0x80}, 7, 1), (Bytes{1}));
    EXPECT_EQ(unpack({0x7F}, 7, 1), (Bytes{0}));
}

TEST(UnpackBits, StartBitMayLieInALaterByte) {
    EXPECT_EQ(unpack({0xFF, 0x00, 0x12}, 17, 4), (Bytes{1, 0, 0, 1}));
    EXPECT_EQ(unpack({0x00, 0x80, 0x01}, 15, 3), (Bytes{1, 1, 0}));
}

TEST(UnpackBits, CountZeroWritesNothing) {
    EXPECT_EQ(unpack({0xFF}, 3, 0), Bytes{});
}

TEST(PackBits, SetsAndClearsAcrossBytesAndLeavesTheRest) {
    EXPECT_EQ(pack({0x00, 0xFF}, {1, 0}, 7), (Bytes{0x80, 0xFE}));
    EXPECT_EQ(pack({0xFF, 0xFF, 0xFF}, {0, 0, 0, 0}, 6), (Bytes{0x3F, 0xFC, 0xFF}));
    EXPECT_EQ(pack({0x00, 0x00, 0x00}, {1, 1, 1, 1}, 14), (Bytes{0x00, 0xC0, 0x03}));
}

TEST(PackBits, EveryNonZeroByteSetsItsBit) {
    EXPECT_EQ(pack({0x00}, {2, 0, 0x80, 0xFF}, 0), (Bytes{0x0D}));
}

TEST(PackBits, CountZeroChangesNothing) {
    EXPECT_EQ(pack({0x5A}, {}, 3), (Bytes{0x5A}));
}

TEST(PackBits, EveryBitPositionIsReachedAlone) {
    constexpr unsigned char kOneBit[] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80};
    for (int bit = 0; bit < 8; ++bit) {
        EXPECT_EQ(pack({0x00, 0x00}, {1}, bit), (Bytes{kOneBit[bit], 0x00})) << bit;
        EXPECT_EQ(pack({0x00, 0x00}, {1}, bit + 8), (Bytes{0x00, kOneBit[bit]})) << bit;
        EXPECT_EQ(unpack({kOneBit[bit], 0x00}, bit, 2), (Bytes{1, 0})) << bit;
    }
}

} // namespace
