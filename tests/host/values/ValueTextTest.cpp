#include "host/values/ValueText.h"

#include "host/values/ValueTypes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace hosttest {
namespace {

using Bytes = std::vector<unsigned char>;

/** A number's bytes in this machine's representation. */
template <typename Number>
Bytes bytesOf(std::initializer_list<Number> numbers) {
    Bytes bytes(numbers.size() * sizeof(Number));
    std::memcpy(bytes.data(), std::data(numbers), bytes.size());
    return bytes;
}
template <typename Number>
Bytes bytesOf(Number number) {
    return bytesOf({number});
}

std::string format(ICU_Type type, Bytes const& bytes) {
    auto const text = host::formatValue(type, bytes);
    return text.ok() ? text.value() : "error: " + text.failure().text;
}

std::string refusal(base::Result<Bytes> const& result) {
    return result.ok() ? "accepted" : result.failure().text;
}

/** The bytes for a text, or, in the test's report, a text that says why there are none. */
Bytes parse(std::string_view text, ICU_Type type, std::size_t length) {
    auto const bytes = host::parseValue(text, type, length);
    EXPECT_TRUE(bytes.ok()) << refusal(bytes);
    return bytes.ok() ? bytes.value() : Bytes{};
}
Bytes parse(std::string_view text, ICU_Type type) {
    return parse(text, type, host::scalarWidth(type));
}

TEST(ValueText, WholeNumbersOfEveryWidth) {
    EXPECT_EQ(format(ICU_BYTE, {0x80}), "-128");
    EXPECT_EQ(format(ICU_UNSIGNED_BYTE, {0xFF}), "255");
    EXPECT_EQ(format(ICU_SHORT, bytesOf<std::int16_t>(-32768)), "-32768");
    EXPECT_EQ(format(ICU_UNSIGNED_SHORT, bytesOf<std::uint16_t>(65535)), "65535");
    EXPECT_EQ(format(ICU_INT, bytesOf<std::int32_t>(-2147483647 - 1)), "-2147483648");
    EXPECT_EQ(format(ICU_UNSIGNED_INT, bytesOf<std::uint32_t>(4294967295U)), "4294967295");
    EXPECT_EQ(format(ICU_INT64, bytesOf<std::int64_t>(INT64_MIN)), "-9223372036854775808");
    EXPECT_EQ(format(ICU_UINT64, bytesOf<std::uint64_t>(UINT64_MAX)), "18446744073709551615");
    EXPECT_EQ(format(ICU_TIME, bytesOf<std::uint64_t>(1234567890123U)), "1234567890123");
}

TEST(ValueText, WholeNumbersAreReadToTheirLimits) {
    EXPECT_EQ(parse("-128", ICU_BYTE), (Bytes{0x80}));
    EXPECT_EQ(parse("127", ICU_BYTE), (Bytes{0x7F}));
    EXPECT_EQ(parse("255", ICU_UNSIGNED_BYTE), (Bytes{0xFF}));
    EXPECT_EQ(parse("-32768", ICU_SHORT), bytesOf<std::int16_t>(-32768));
    EXPECT_EQ(parse("65535", ICU_UNSIGNED_SHORT), bytesOf<std::uint16_t>(65535));
    EXPECT_EQ(parse("-2147483648", ICU_INT), bytesOf<std::int32_t>(INT32_MIN));
    EXPECT_EQ(parse("4294967295", ICU_UNSIGNED_INT), bytesOf<std::uint32_t>(4294967295U));
    EXPECT_EQ(parse("-9223372036854775808", ICU_INT64), bytesOf<std::int64_t>(INT64_MIN));
    EXPECT_EQ(parse("9223372036854775807", ICU_INT64), bytesOf<std::int64_t>(INT64_MAX));
    EXPECT_EQ(parse("18446744073709551615", ICU_UINT64), bytesOf<std::uint64_t>(UINT64_MAX));
    EXPECT_EQ(parse("18446744073709551615", ICU_TIME), bytesOf<std::uint64_t>(UINT64_MAX));
}

TEST(ValueText, NumbersOutsideTheirRangeAreRefusedWithTheRange) {
    EXPECT_EQ(refusal(host::parseValue("300", ICU_UNSIGNED_BYTE)), "'300' is out of range for unsignedByte: 0..255");
    EXPECT_EQ(refusal(host::parseValue("-1", ICU_UNSIGNED_BYTE)), "'-1' is out of range for unsignedByte: 0..255");
    EXPECT_EQ(refusal(host::parseValue("128", ICU_BYTE)), "'128' is out of range for byte: -128..127");
    EXPECT_EQ(refusal(host::parseValue("-129", ICU_BYTE)), "'-129' is out of range for byte: -128..127");
    EXPECT_EQ(refusal(host::parseValue("32768", ICU_SHORT)), "'32768' is out of range for short: -32768..32767");
    EXPECT_EQ(refusal(host::parseValue("65536", ICU_UNSIGNED_SHORT)),
              "'65536' is out of range for unsignedShort: 0..65535");
    EXPECT_EQ(refusal(host::parseValue("2147483648", ICU_INT)),
              "'2147483648' is out of range for int: -2147483648..2147483647");
    EXPECT_EQ(refusal(host::parseValue("9223372036854775808", ICU_INT64)),
              "'9223372036854775808' is out of range for int64: -9223372036854775808..9223372036854775807");
    EXPECT_EQ(refusal(host::parseValue("18446744073709551616", ICU_UINT64)),
              "'18446744073709551616' is out of range for uint64: 0..18446744073709551615");
    EXPECT_EQ(refusal(host::parseValue("1e39", ICU_FLOAT)), "'1e39' is out of range for float");
    EXPECT_EQ(refusal(host::parseValue("1e309", ICU_DOUBLE)), "'1e309' is out of range for double");
}

TEST(ValueText, HexadecimalDecimalAndSigns) {
    EXPECT_EQ(parse("0x7f", ICU_BYTE), (Bytes{0x7F}));
    EXPECT_EQ(parse("-0X80", ICU_BYTE), (Bytes{0x80}));
    EXPECT_EQ(refusal(host::parseValue("0xFF", ICU_BYTE)), "'0xFF' is out of range for byte: -128..127");
    EXPECT_EQ(parse("+5", ICU_BYTE), (Bytes{5}));
    EXPECT_EQ(parse(" 7 ", ICU_BYTE), (Bytes{7}));
    EXPECT_EQ(parse("010", ICU_BYTE), (Bytes{10})) << "a leading zero does not make it octal";
    EXPECT_EQ(parse("-0", ICU_UNSIGNED_BYTE), (Bytes{0}));
}

TEST(ValueText, WhatIsNotANumberIsRefused) {
    for (char const* const text : {"", "abc", "5x", "0x", "--5", "+-5", "5 6", "1.5", "1e3"}) {
        EXPECT_EQ(refusal(host::parseValue(text, ICU_INT)),
                  "'" + std::string(text) + "' is not a whole number for int");
    }
    for (char const* const text : {"", "abc", "1.5.5", "+-1", "1,5"}) {
        EXPECT_EQ(refusal(host::parseValue(text, ICU_FLOAT)), "'" + std::string(text) + "' is not a number for float");
    }
}

TEST(ValueText, FloatingPointNumbersReadBackToTheSameValue) {
    EXPECT_EQ(format(ICU_FLOAT, bytesOf(0.1F)), "0.1");
    EXPECT_EQ(format(ICU_DOUBLE, bytesOf(0.1)), "0.1");
    EXPECT_EQ(format(ICU_DOUBLE, bytesOf(1.0 / 3.0)), "0.3333333333333333");
    for (double const value : {0.0, -0.0, 1.0, -2.5e-300, 1.7976931348623157e308, 4.9406564584124654e-324}) {
        EXPECT_EQ(parse(format(ICU_DOUBLE, bytesOf(value)), ICU_DOUBLE), bytesOf(value));
    }
    EXPECT_EQ(parse("+1.5", ICU_FLOAT), bytesOf(1.5F));
    EXPECT_EQ(parse("-1.5e2", ICU_FLOAT), bytesOf(-150.0F));
    EXPECT_EQ(parse("inf", ICU_FLOAT), bytesOf(std::numeric_limits<float>::infinity()));
    EXPECT_EQ(format(ICU_FLOAT, bytesOf(-std::numeric_limits<float>::infinity())), "-inf");
}

TEST(ValueText, Booleans) {
    EXPECT_EQ(format(ICU_BOOLEAN, {0}), "false");
    EXPECT_EQ(format(ICU_BOOLEAN, {1}), "true");
    EXPECT_EQ(format(ICU_BOOLEAN, {2}), "true");
    EXPECT_EQ(parse("true", ICU_BOOLEAN), (Bytes{1}));
    EXPECT_EQ(parse("0", ICU_BOOLEAN), (Bytes{0}));
    EXPECT_EQ(refusal(host::parseValue("2", ICU_BOOLEAN)), "'2' is not a boolean: give true, false, 1 or 0");
    EXPECT_EQ(refusal(host::parseValue("", ICU_BOOLEAN)), "'' is not a boolean: give true, false, 1 or 0");
}

TEST(ValueText, TextsEndAtTheirFirstZeroOrAtTheirLength) {
    EXPECT_EQ(format(ICU_STRING, {'a', 'b', 0, 'x'}), "ab");
    EXPECT_EQ(format(ICU_STRING, {'a', 'b'}), "ab");
    EXPECT_EQ(format(ICU_STRING, {}), "");
    EXPECT_EQ(parse("ab", ICU_STRING, 4), (Bytes{'a', 'b', 0, 0}));
    EXPECT_EQ(parse("abcd", ICU_STRING, 4), (Bytes{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(parse("", ICU_STRING, 2), (Bytes{0, 0}));
    EXPECT_EQ(parse(" a ", ICU_STRING, 3), (Bytes{' ', 'a', ' '})) << "blanks belong to a text";
    EXPECT_EQ(refusal(host::parseValue("abcde", ICU_STRING, 4)), "'abcde' has 5 bytes, there is room for 4");
}

TEST(ValueText, ControlCharactersOfATextAreEscaped) {
    Bytes const bytes = {0x1B, '[', '\n', '\t', '\r', '\\', 0x7F, 0xC3, 0xA4};
    EXPECT_EQ(format(ICU_STRING, bytes), "\\x1B[\\n\\t\\r\\\\\\x7F\xC3\xA4");
    EXPECT_EQ(parse("\\x1b[\\n\\t\\r\\\\\\x7F\xC3\xA4", ICU_STRING, 9), bytes);
    for (char const* const text : {"\\", "\\q", "\\x", "\\x1", "\\xG0"}) {
        EXPECT_FALSE(host::parseValue(text, ICU_STRING, 9).ok()) << text;
    }
}

TEST(ValueText, BinaryIsHexadecimal) {
    EXPECT_EQ(format(ICU_BINARY, {0x00, 0xAB, 0xFF}), "00ABFF");
    EXPECT_EQ(parse("00abFF", ICU_BINARY, 3), (Bytes{0x00, 0xAB, 0xFF}));
    EXPECT_EQ(parse(" 00 ab FF ", ICU_BINARY, 3), (Bytes{0x00, 0xAB, 0xFF}));
    EXPECT_EQ(refusal(host::parseValue("00AB", ICU_BINARY, 3)), "'00AB' has 2 bytes instead of 3");
    EXPECT_EQ(refusal(host::parseValue("00ABFF00", ICU_BINARY, 3)), "'00ABFF00' has 4 bytes instead of 3");
    EXPECT_EQ(refusal(host::parseValue("00A", ICU_BINARY, 3)), "'00A' does not consist of pairs of hexadecimal digits");
    EXPECT_EQ(refusal(host::parseValue("0 0", ICU_BINARY, 1)), "'0 0' does not consist of pairs of hexadecimal digits");
}

TEST(ValueText, ArraysStandInBrackets) {
    EXPECT_EQ(format(ICU_SHORT_ARRAY, bytesOf<std::int16_t>({1, -2, 3})), "[1, -2, 3]");
    EXPECT_EQ(format(ICU_BOOLEAN_ARRAY, {1, 0, 1}), "[true, false, true]");
    EXPECT_EQ(format(ICU_DOUBLE_ARRAY, bytesOf({0.5, 1e100})), "[0.5, 1e+100]");
    EXPECT_EQ(format(ICU_UINT64_ARRAY, bytesOf<std::uint64_t>({UINT64_MAX, 0})), "[18446744073709551615, 0]");
    EXPECT_EQ(format(ICU_INT64_ARRAY, bytesOf<std::int64_t>({-1})), "[-1]");
    EXPECT_EQ(format(ICU_INT_ARRAY, {}), "[]");
    EXPECT_EQ(format(ICU_TIME_ARRAY, bytesOf<std::uint64_t>({7})), "[7]");
}

TEST(ValueText, ArraysAreReadWithAndWithoutBrackets) {
    EXPECT_EQ(parse("[1, -2,3 ]", ICU_SHORT_ARRAY, 6), bytesOf<std::int16_t>({1, -2, 3}));
    EXPECT_EQ(parse("1,-2,3", ICU_SHORT_ARRAY, 6), bytesOf<std::int16_t>({1, -2, 3}));
    EXPECT_EQ(parse("[true,0]", ICU_BOOLEAN_ARRAY, 2), (Bytes{1, 0}));
    EXPECT_EQ(parse("[]", ICU_INT_ARRAY, 0), (Bytes{}));
    EXPECT_EQ(refusal(host::parseValue("[1]", ICU_SHORT_ARRAY, 6)), "'[1]' has 1 element instead of 3");
    EXPECT_EQ(refusal(host::parseValue("[1,2]", ICU_SHORT_ARRAY, 6)), "'[1,2]' has 2 elements instead of 3");
    EXPECT_EQ(refusal(host::parseValue("[1,2,3,]", ICU_SHORT_ARRAY, 6)), "'[1,2,3,]' has 4 elements instead of 3");
    EXPECT_EQ(refusal(host::parseValue("[1,,3]", ICU_SHORT_ARRAY, 6)), "'' is not a whole number for short");
    EXPECT_EQ(refusal(host::parseValue("[1,70000,3]", ICU_SHORT_ARRAY, 6)),
              "'70000' is out of range for short: -32768..32767");
    EXPECT_FALSE(host::parseValue("[1]", ICU_SHORT_ARRAY, 3).ok()) << "three bytes are no array of shorts";
}

TEST(ValueText, AWrongLengthIsRefusedAndNothingIsReadBeyondIt) {
    EXPECT_EQ(format(ICU_INT, {1, 2}), "error: a value of the type int and this length cannot be shown as text");
    EXPECT_EQ(format(ICU_INT, {}), "error: a value of the type int and this length cannot be shown as text");
    EXPECT_EQ(format(ICU_INT_ARRAY, {1, 2, 3}),
              "error: a value of the type int and this length cannot be shown as text");
    EXPECT_EQ(format(ICU_NONE, {1}), "error: a value of the type unknown and this length cannot be shown as text");
    EXPECT_EQ(format(static_cast<ICU_Type>(99), {1}),
              "error: a value of the type unknown and this length cannot be shown as text");
    EXPECT_FALSE(host::parseValue("1", ICU_INT, 2).ok());
    EXPECT_FALSE(host::parseValue("1", ICU_INT, 0).ok());
    EXPECT_FALSE(host::parseValue("1", ICU_NONE).ok());
}

TEST(ValueText, ValuesMayLieAtAnyAddress) {
    Bytes const bytes = bytesOf(1.5);
    std::vector<unsigned char> shifted(1, 0);
    shifted.insert(shifted.end(), bytes.begin(), bytes.end());
    auto const text = host::formatValue(ICU_DOUBLE, std::span<unsigned char const>(shifted).subspan(1));
    ASSERT_TRUE(text.ok());
    EXPECT_EQ(text.value(), "1.5");
}

TEST(ValueTypes, NamesWidthsAndElements) {
    EXPECT_STREQ(host::typeName(ICU_UNSIGNED_SHORT), "unsignedShort");
    EXPECT_STREQ(host::typeName(ICU_UNSIGNED_SHORT_ARRAY), "unsignedShort");
    EXPECT_STREQ(host::typeName(ICU_NONE), "unknown");
    EXPECT_EQ(host::scalarWidth(ICU_TIME), 8U);
    EXPECT_EQ(host::scalarWidth(ICU_STRING), 0U);
    EXPECT_EQ(host::arrayElement(ICU_INT64_ARRAY), ICU_INT64);
    EXPECT_EQ(host::arrayElement(ICU_STRING), ICU_NONE);
    EXPECT_EQ(host::arrayElement(static_cast<ICU_Type>(27)), ICU_NONE);
}

} // namespace
} // namespace hosttest
