#include "protlib/types/DataTypes.h"

#include <gtest/gtest.h>

#include <array>

namespace {

ICU_Type typeOf(int value) {
    return static_cast<ICU_Type>(value);
}

struct ExpectedRow {
    char const* name;
    int type;
    int basicType;
    int length;
    int flag;
};

constexpr std::array<ExpectedRow, 26> kRows{{{"boolean", 1, 0, 1, 0x1},
                                             {"byte", 2, 0, 1, 0x2},
                                             {"short", 3, 0, 2, 0x4},
                                             {"int", 4, 0, 4, 0x8},
                                             {"unsignedByte", 5, 0, 1, 0x10},
                                             {"unsignedShort", 6, 0, 2, 0x20},
                                             {"unsignedInt", 7, 0, 4, 0x40},
                                             {"float", 8, 0, 4, 0x80},
                                             {"double", 9, 0, 8, 0x100},
                                             {"string-", 10, 2, 0, 0x200},
                                             {"binary-", 11, 5, 0, 0x400},
                                             {"time", 12, 0, 8, 0x800},
                                             {"boolean-", 13, 1, 0, 0x1000},
                                             {"byte-", 14, 2, 0, 0x2000},
                                             {"short-", 15, 3, 0, 0x4000},
                                             {"int-", 16, 4, 0, 0x8000},
                                             {"unsignedByte-", 17, 5, 0, 0x10000},
                                             {"unsignedShort-", 18, 6, 0, 0x20000},
                                             {"unsignedInt-", 19, 7, 0, 0x40000},
                                             {"float-", 20, 8, 0, 0x80000},
                                             {"double-", 21, 9, 0, 0x100000},
                                             {"time-", 22, 12, 0, 0x200000},
                                             {"uint64", 23, 0, 8, 0x400000},
                                             {"int64", 24, 0, 8, 0x800000},
                                             {"uint64-", 25, 23, 0, 0x1000000},
                                             {"int64-", 26, 24, 0, 0x2000000}}};

TEST(DataTypes, TableHoldsEveryTypeInTheOrderOfItsValue) {
    ASSERT_EQ(ProtUtilsN::DataTypes.size(), kRows.size());
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        EXPECT_STREQ(ProtUtilsN::DataTypes[i].name, kRows[i].name) << i;
        EXPECT_EQ(ProtUtilsN::DataTypes[i].type, kRows[i].type) << i;
        EXPECT_EQ(ProtUtilsN::DataTypes[i].basicType, kRows[i].basicType) << i;
        EXPECT_EQ(ProtUtilsN::DataTypes[i].length, kRows[i].length) << i;
        EXPECT_EQ(ProtUtilsN::DataTypes[i].flag, kRows[i].flag) << i;
    }
}

TEST(DataTypes, LengthOfEveryElementType) {
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(1)), 1);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(2)), 1);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(3)), 2);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(4)), 4);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(5)), 1);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(6)), 2);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(7)), 4);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(8)), 4);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(9)), 8);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(12)), 8);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(23)), 8);
    EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(24)), 8);
}

TEST(DataTypes, LengthOfArraysAndStringsIsZero) {
    for (int const value : {10, 11, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22}) {
        EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(value)), 0) << value;
    }
}

TEST(DataTypes, LengthOfSixtyFourBitArraysAndUnknownValuesIsZero) {
    for (int const value : {-2147483647 - 1, -1, 0, 25, 26, 27, 28, 32, 255, 2147483647}) {
        EXPECT_EQ(ProtUtilsN::GetDataLength(typeOf(value)), 0) << value;
    }
}

TEST(DataTypes, FlagOfEveryType) {
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(1)), 0x1);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(2)), 0x2);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(3)), 0x4);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(4)), 0x8);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(5)), 0x10);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(6)), 0x20);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(7)), 0x40);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(8)), 0x80);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(9)), 0x100);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(10)), 0x200);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(11)), 0x400);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(12)), 0x800);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(13)), 0x1000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(14)), 0x2000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(15)), 0x4000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(16)), 0x8000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(17)), 0x10000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(18)), 0x20000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(19)), 0x40000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(20)), 0x80000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(21)), 0x100000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(22)), 0x200000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(23)), 0x400000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(24)), 0x800000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(25)), 0x1000000);
    EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(26)), 0x2000000);
}

TEST(DataTypes, FlagOfAnUnknownValueIsZero) {
    for (int const value : {-2147483647 - 1, -1, 0, 27, 32, 33, 64, 2147483647}) {
        EXPECT_EQ(ProtUtilsN::GetTypeFlag(typeOf(value)), 0) << value;
    }
}

TEST(DataTypes, OnlyBooleanAndBooleanArrayAreBitTypes) {
    for (int value = -3; value <= 40; ++value) {
        EXPECT_EQ(ProtUtilsN::IsBitType(typeOf(value)), value == 1 || value == 13) << value;
    }
}

TEST(DataTypes, VersionOfTheUtilitySet) {
    EXPECT_EQ(ProtUtilsN::GetVersion(), 200);
}

} // namespace
