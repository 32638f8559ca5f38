#include "protlib/tag/TagGeometry.h"

#include "tests/protlib/TestTag.h"

#include <gtest/gtest.h>

namespace {

TestTag tagAt(ICU_Type type, ICU_Type itemType, int length, int byteOffset, int bitIndex) {
    TestTag tag(type, itemType, length);
    tag.byteOffset = byteOffset;
    tag.bitIndex = bitIndex;
    return tag;
}

TEST(TagGeometry, BitTypeOfATagIsThatOfItsType) {
    TestTag const boolean(ICU_BOOLEAN);
    TestTag const booleans(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 8);
    TestTag const bytes(ICU_UNSIGNED_BYTE_ARRAY, ICU_UNSIGNED_BYTE, 8);
    EXPECT_TRUE(ProtUtilsN::IsBitType(&boolean));
    EXPECT_TRUE(ProtUtilsN::IsBitType(&booleans));
    EXPECT_FALSE(ProtUtilsN::IsBitType(&bytes));
}

TEST(TagGeometry, ScalarIsOneItem) {
    TestTag const tag(ICU_INT, ICU_NONE, 4);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&tag), 1);
    TestTag const odd(ICU_INT, ICU_NONE, 400);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&odd), 1);
}

TEST(TagGeometry, ItemsOfAnArrayAreItsLengthByTheElementLength) {
    TestTag const shorts(ICU_SHORT_ARRAY, ICU_SHORT, 10);
    TestTag const ints(ICU_INT_ARRAY, ICU_INT, 40);
    TestTag const doubles(ICU_DOUBLE_ARRAY, ICU_DOUBLE, 24);
    TestTag const wide(ICU_UINT64_ARRAY, ICU_UINT64, 32);
    TestTag const text(ICU_STRING, ICU_BYTE, 20);
    TestTag const bits(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 16);
    TestTag const empty(ICU_INT_ARRAY, ICU_INT, 0);
    TestTag const uneven(ICU_INT_ARRAY, ICU_INT, 7);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&shorts), 5);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&ints), 10);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&doubles), 3);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&wide), 4);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&text), 20);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&bits), 16);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&empty), 0);
    EXPECT_EQ(ProtUtilsN::GetItemCount(&uneven), 1);
}

TEST(TagGeometry, BasicTypeIsTheElementOrTheScalarItself) {
    TestTag const scalar(ICU_FLOAT, ICU_NONE, 4);
    TestTag const array(ICU_FLOAT_ARRAY, ICU_FLOAT, 8);
    TestTag const text(ICU_STRING, ICU_BYTE, 8);
    TestTag const binary(ICU_BINARY, ICU_UNSIGNED_BYTE, 8);
    EXPECT_EQ(ProtUtilsN::GetBasicType(&scalar), 8);
    EXPECT_EQ(ProtUtilsN::GetBasicType(&array), 8);
    EXPECT_EQ(ProtUtilsN::GetBasicType(&text), 2);
    EXPECT_EQ(ProtUtilsN::GetBasicType(&binary), 5);
}

TEST(TagGeometry, BasicLengthIsThatOfOneElement) {
    TestTag const scalar(ICU_INT, ICU_NONE, 4);
    TestTag const array(ICU_DOUBLE_ARRAY, ICU_DOUBLE, 24);
    TestTag const text(ICU_STRING, ICU_BYTE, 8);
    TestTag const wide(ICU_INT64_ARRAY, ICU_INT64, 24);
    EXPECT_EQ(ProtUtilsN::GetBasicLength(&scalar), 4);
    EXPECT_EQ(ProtUtilsN::GetBasicLength(&array), 8);
    EXPECT_EQ(ProtUtilsN::GetBasicLength(&text), 1);
    EXPECT_EQ(ProtUtilsN::GetBasicLength(&wide), 8);
}

TEST(TagGeometry, BitTagStartsAtItsBitIndex) {
    TestTag const boolean = tagAt(ICU_BOOLEAN, ICU_NONE, 1, 3, 5);
    TestTag const booleans = tagAt(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 12, 2, 7);
    EXPECT_EQ(ProtUtilsN::getStartingBit(&boolean), 29);
    EXPECT_EQ(ProtUtilsN::getStartingBit(&booleans), 23);
}

TEST(TagGeometry, OtherTagsStartAtTheirByteWhateverTheBitIndex) {
    TestTag const tag = tagAt(ICU_INT, ICU_NONE, 4, 3, 5);
    EXPECT_EQ(ProtUtilsN::getStartingBit(&tag), 24);
}

TEST(TagGeometry, BitTagEndsAfterItsLengthInBits) {
    TestTag const boolean = tagAt(ICU_BOOLEAN, ICU_NONE, 1, 3, 5);
    TestTag const booleans = tagAt(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 12, 2, 7);
    EXPECT_EQ(ProtUtilsN::getEndingBit(&boolean), 30);
    EXPECT_EQ(ProtUtilsN::getEndingBit(&booleans), 35);
}

TEST(TagGeometry, OtherTagsEndAfterTheirPackedBytes) {
    TestTag const tag = tagAt(ICU_INT, ICU_NONE, 4, 3, 5);
    TestTag const text = tagAt(ICU_STRING, ICU_BYTE, 20, 10, 0);
    EXPECT_EQ(ProtUtilsN::getEndingBit(&tag), 56);
    EXPECT_EQ(ProtUtilsN::getEndingBit(&text), 240);
}

TEST(TagGeometry, PositionsBeyondAnIntAreExact) {
    TestTag const far = tagAt(ICU_INT, ICU_NONE, 4, 2147483647, 0);
    EXPECT_EQ(ProtUtilsN::getStartingBitExact(&far), 17179869176LL);
    EXPECT_EQ(ProtUtilsN::getEndingBitExact(&far), 17179869208LL);
    TestTag const wide = tagAt(ICU_STRING, ICU_BYTE, 2147483647, 2147483647, 0);
    EXPECT_EQ(ProtUtilsN::getEndingBitExact(&wide), 34359738352LL);
    TestTag const bits = tagAt(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 2147483647, 2147483647, 7);
    EXPECT_EQ(ProtUtilsN::getStartingBitExact(&bits), 17179869183LL);
    EXPECT_EQ(ProtUtilsN::getEndingBitExact(&bits), 19327352830LL);
    // The int results must at least not overflow.
    EXPECT_EQ(ProtUtilsN::getStartingBit(&far), 2147483647);
    EXPECT_EQ(ProtUtilsN::getEndingBit(&wide), 2147483647);
}

} // namespace
