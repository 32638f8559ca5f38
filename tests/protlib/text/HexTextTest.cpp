#include "protlib/text/HexText.h"

#include "tests/support/Bytes.h"

#include <climits>
#include <gtest/gtest.h>

#include <array>

namespace {

using velktest::Bytes;
using velktest::Hex;

TEST(HexText, DigitsOfEitherCaseHaveTheirValue) {
    int value = 0;
    for (char const digit : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'}) {
        EXPECT_EQ(HexTextN::HexDigitValue(digit), value++) << digit;
    }
    value = 10;
    for (char const digit : {'a', 'b', 'c', 'd', 'e', 'f'}) {
        EXPECT_EQ(HexTextN::HexDigitValue(digit), value++) << digit;
    }
}

TEST(HexText, NoOtherCharacterIsADigit) {
    int digits = 0;
    for (int code = CHAR_MIN; code <= CHAR_MAX; ++code) {
        int const value = HexTextN::HexDigitValue(static_cast<char>(code));
        digits += value >= 0 ? 1 : 0;
        EXPECT_GE(value, -1) << code;
        EXPECT_LE(value, 15) << code;
    }
    EXPECT_EQ(digits, 22);
}

TEST(HexText, HighNibbleComesFirst) {
    Bytes bytes(4, 0x77);
    EXPECT_TRUE(HexTextN::DecodeHex("00F00fA5", bytes));
    EXPECT_EQ(bytes, Hex("00 F0 0F A5"));
    Bytes none;
    EXPECT_TRUE(HexTextN::DecodeHex("", none));
}

TEST(HexText, OnlyTwoDigitsForEachByteWillDo) {
    for (char const* const digits : {"", "0", "00", "000", "00000", "000000"}) {
        Bytes bytes(2, 0x77);
        EXPECT_FALSE(HexTextN::DecodeHex(digits, bytes)) << digits;
    }
}

TEST(HexText, EitherNibbleMustBeADigit) {
    for (char const* const digits : {"0G00", "G000", "00G0", "000G", " 000", "0x00", "-100"}) {
        Bytes bytes(2, 0x77);
        EXPECT_FALSE(HexTextN::DecodeHex(digits, bytes)) << digits;
    }
}

TEST(HexText, BytesBecomeLowerCaseDigits) {
    using Digits = std::array<char, 2>;
    EXPECT_EQ(HexTextN::EncodeHex(0x00), (Digits{'0', '0'}));
    EXPECT_EQ(HexTextN::EncodeHex(0xAF), (Digits{'a', 'f'}));
    EXPECT_EQ(HexTextN::EncodeHex(0x9E), (Digits{'9', 'e'}));
}

} // namespace
