#include "protlib/types/MemTypesTable.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

void expectRow(std::size_t index, char const* name, int area, int flags, int maxIndex) {
    MemTypeRow const& row = MemTypes.at(index);
    EXPECT_STREQ(row.name, name);
    EXPECT_EQ(row.naturalType, 5) << name;
    EXPECT_EQ(row.area, area) << name;
    EXPECT_EQ(row.flags, flags) << name;
    EXPECT_EQ(row.readTypes, 0x3feffe) << name;
    EXPECT_EQ(row.writeTypes, 0x3feffe) << name;
    EXPECT_EQ(row.minIndex, 0) << name;
    EXPECT_EQ(row.reserved, 0) << name;
    EXPECT_EQ(row.maxIndex, maxIndex) << name;
}

TEST(MemTypes, HasTheSevenAreas) {
    ASSERT_EQ(MemTypes.size(), 7U);
    expectRow(0, "M", 0, 96, 0x7fffffff);
    expectRow(1, "I", 1, 96, 0x7fffffff);
    expectRow(2, "Q", 2, 96, 0x7fffffff);
    expectRow(3, "3", 3, 96, 0x7fffffff);
    expectRow(4, "4", 4, 96, 0x7fffffff);
    expectRow(5, "5", 5, 96, 0x7fffffff);
    expectRow(6, "NO_IP", 0, 0, 0);
}

TEST(MemTypes, RowByAreaNumberOfTheSymbolFile) {
    for (std::uint32_t area = 0; area <= 5; ++area) {
        EXPECT_EQ(memTypeRowOfArea(area), &MemTypes.at(area));
    }
    for (std::uint32_t const area : {6U, 7U, 0x100U, 0xFFFFU, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(memTypeRowOfArea(area), nullptr) << area;
    }
}

TEST(MemTypes, RowByTheFirstLetterOfAnAddressSpace) {
    EXPECT_EQ(memTypeRowOfLetter('M'), MemTypes.data());
    EXPECT_EQ(memTypeRowOfLetter('I'), &MemTypes[1]);
    EXPECT_EQ(memTypeRowOfLetter('Q'), &MemTypes[2]);
    EXPECT_EQ(memTypeRowOfLetter('3'), &MemTypes[3]);
    EXPECT_EQ(memTypeRowOfLetter('4'), &MemTypes[4]);
    EXPECT_EQ(memTypeRowOfLetter('5'), &MemTypes[5]);
    EXPECT_EQ(memTypeRowOfLetter('N'), &MemTypes[6]);
}

TEST(MemTypes, EveryOtherLetterSelectsNoRow) {
    for (int code = CHAR_MIN; code <= CHAR_MAX; ++code) {
        char const letter = static_cast<char>(code);
        bool const known = letter == 'M' || letter == 'I' || letter == 'Q' || letter == 'N' || letter == '3' ||
                           letter == '4' || letter == '5';
        EXPECT_EQ(memTypeRowOfLetter(letter) != nullptr, known) << code;
    }
}

} // namespace
