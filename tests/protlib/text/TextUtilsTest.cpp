#include "protlib/text/TextUtils.h"

#include <climits>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Pieces = std::vector<std::string>;

Pieces split(std::string const& text, char separator) {
    Pieces pieces;
    ProtUtilsN::ParseSubstrings(text, pieces, separator);
    return pieces;
}

std::string digits(int value, int radix) {
    std::array<char, 80> buffer{};
    buffer.fill('#');
    char const* const result = itoa(value, buffer.data(), radix);
    EXPECT_EQ(result, buffer.data());
    return buffer.data();
}

TEST(Trim, RemovesBlanksAndTabsAtBothEnds) {
    EXPECT_EQ(ProtUtilsN::GetTrim("  a"), "a");
    EXPECT_EQ(ProtUtilsN::GetTrim("a\t "), "a");
    EXPECT_EQ(ProtUtilsN::GetTrim(" \t \ta b\t "), "a b");
    EXPECT_EQ(ProtUtilsN::GetTrim("a"), "a");
}

TEST(Trim, KeepsBlanksInside) {
    EXPECT_EQ(ProtUtilsN::GetTrim(" a \t b "), "a \t b");
}

TEST(Trim, AllBlankTextGivesTheEmptyText) {
    EXPECT_EQ(ProtUtilsN::GetTrim(""), "");
    EXPECT_EQ(ProtUtilsN::GetTrim(" "), "");
    EXPECT_EQ(ProtUtilsN::GetTrim("\t"), "");
    EXPECT_EQ(ProtUtilsN::GetTrim(" \t \t  "), "");
}

TEST(Trim, KeepsEveryOtherWhiteSpace) {
    EXPECT_EQ(ProtUtilsN::GetTrim("\n a \r"), "\n a \r");
    EXPECT_EQ(ProtUtilsN::GetTrim("\va\f"), "\va\f");
    EXPECT_EQ(ProtUtilsN::GetTrim("\xA0"), "\xA0");
}

TEST(Split, CutsAtEverySeparatorAndTrimsThePieces) {
    EXPECT_EQ(split("a,b,c", ','), (Pieces{"a", "b", "c"}));
    EXPECT_EQ(split(" a ,\tb\t, c d ", ','), (Pieces{"a", "b", "c d"}));
    EXPECT_EQ(split("abc", ','), (Pieces{"abc"}));
    EXPECT_EQ(split("1?x?M?0?int", '?'), (Pieces{"1", "x", "M", "0", "int"}));
}

TEST(Split, KeepsEmptyPieces) {
    EXPECT_EQ(split("a,,b", ','), (Pieces{"a", "", "b"}));
    EXPECT_EQ(split("", ','), (Pieces{""}));
    EXPECT_EQ(split(",", ','), (Pieces{"", ""}));
    EXPECT_EQ(split("a,", ','), (Pieces{"a", ""}));
    EXPECT_EQ(split(",a", ','), (Pieces{"", "a"}));
    EXPECT_EQ(split(" , ", ','), (Pieces{"", ""}));
}

TEST(Split, BlankAsSeparatorKeepsEmptyPiecesBetweenTwoBlanks) {
    EXPECT_EQ(split("read  x", ' '), (Pieces{"read", "", "x"}));
    EXPECT_EQ(split(" read", ' '), (Pieces{"", "read"}));
    EXPECT_EQ(split("read ", ' '), (Pieces{"read", ""}));
}

TEST(Split, AppendsToWhatTheCallerHas) {
    Pieces pieces{"first"};
    ProtUtilsN::ParseSubstrings("a,b", pieces, ',');
    EXPECT_EQ(pieces, (Pieces{"first", "a", "b"}));
}

TEST(Itoa, WritesDecimalDigits) {
    EXPECT_EQ(digits(0, 10), "0");
    EXPECT_EQ(digits(7, 10), "7");
    EXPECT_EQ(digits(10, 10), "10");
    EXPECT_EQ(digits(255, 10), "255");
    EXPECT_EQ(digits(2147483647, 10), "2147483647");
}

TEST(Itoa, WritesLowerCaseHexadecimalDigits) {
    EXPECT_EQ(digits(255, 16), "ff");
    EXPECT_EQ(digits(0, 16), "0");
    EXPECT_EQ(digits(0x1a2b3c4d, 16), "1a2b3c4d");
    EXPECT_EQ(digits(INT_MAX, 16), "7fffffff");
}

TEST(Itoa, WritesOtherRadixes) {
    EXPECT_EQ(digits(5, 2), "101");
    EXPECT_EQ(digits(INT_MAX, 2), "1111111111111111111111111111111");
    EXPECT_EQ(digits(8, 8), "10");
    EXPECT_EQ(digits(5, 3), "12");
}

TEST(Itoa, RadixesAboveTenOtherThanSixteenRunPastTheNine) {
    EXPECT_EQ(digits(10, 11), ":");
    EXPECT_EQ(digits(15, 20), "?");
    EXPECT_EQ(digits(35, 36), "S");
}

TEST(Itoa, NegativeValuesGetNoMinusSign) {
    for (int const value : {-1, -2, -3, -5, -9, -10, -123, -2147483647, INT_MIN}) {
        EXPECT_EQ(digits(value, 10).find('-'), std::string::npos) << value;
        EXPECT_EQ(digits(value, 16).find('-'), std::string::npos) << value;
    }
}

TEST(Itoa, TerminatesRightBehindTheDigits) {
    std::array<char, 5> buffer{'#', '#', '#', '#', '#'};
    itoa(255, buffer.data(), 10);
    EXPECT_EQ(std::memcmp(buffer.data(), "255\0#", 5), 0);
}

} // namespace
