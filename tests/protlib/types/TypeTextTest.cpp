#include "protlib/types/DataTypes.h"

#include <climits>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

struct TypeText {
    bool known = false;
    ICU_Type type = static_cast<ICU_Type>(77);
    ICU_Type basicType = static_cast<ICU_Type>(88);
    int length = 99;
    std::vector<std::string> params;
};

TypeText parse(std::string const& text) {
    TypeText result;
    result.known = ProtUtilsN::GetICOMType(text, result.type, result.basicType, result.length, result.params);
    return result;
}

void expectType(std::string const& text, int type, int basicType, int length) {
    TypeText const result = parse(text);
    EXPECT_TRUE(result.known) << text;
    EXPECT_EQ(result.type, type) << text;
    EXPECT_EQ(result.basicType, basicType) << text;
    EXPECT_EQ(result.length, length) << text;
}

void expectUnknown(std::string const& text) {
    TypeText const result = parse(text);
    EXPECT_FALSE(result.known) << text;
    EXPECT_EQ(result.type, 77) << text;
    EXPECT_EQ(result.basicType, 88) << text;
    EXPECT_EQ(result.length, 99) << text;
}

using Params = std::vector<std::string>;

TEST(TypeText, ScalarsHaveTheirFixedLengthAndNoElementType) {
    expectType("boolean", 1, 0, 1);
    expectType("byte", 2, 0, 1);
    expectType("short", 3, 0, 2);
    expectType("int", 4, 0, 4);
    expectType("unsignedByte", 5, 0, 1);
    expectType("unsignedShort", 6, 0, 2);
    expectType("unsignedInt", 7, 0, 4);
    expectType("float", 8, 0, 4);
    expectType("double", 9, 0, 8);
    expectType("time", 12, 0, 8);
    expectType("uint64", 23, 0, 8);
    expectType("int64", 24, 0, 8);
}

TEST(TypeText, ArraysAndStringsMultiplyTheElementLengthByTheCount) {
    expectType("string-20", 10, 2, 20);
    expectType("binary-7", 11, 5, 7);
    expectType("boolean-16", 13, 1, 16);
    expectType("byte-3", 14, 2, 3);
    expectType("short-3", 15, 3, 6);
    expectType("int-10", 16, 4, 40);
    expectType("unsignedByte-3", 17, 5, 3);
    expectType("unsignedShort-3", 18, 6, 6);
    expectType("unsignedInt-3", 19, 7, 12);
    expectType("float-3", 20, 8, 12);
    expectType("double-3", 21, 9, 24);
    expectType("time-2", 22, 12, 16);
    expectType("uint64-3", 25, 23, 24);
    expectType("int64-3", 26, 24, 24);
}

TEST(TypeText, MissingOrNonNumericCountGivesLengthZero) {
    expectType("binary-", 11, 5, 0);
    expectType("string-", 10, 2, 0);
    expectType("int-", 16, 4, 0);
    expectType("int-x", 16, 4, 0);
    expectType("int-0", 16, 4, 0);
}

TEST(TypeText, CountIsReadInBaseTenAndStopsAtTheFirstOtherCharacter) {
    expectType("string-0x10", 10, 2, 0);
    expectType("string-010", 10, 2, 10);
    expectType("string-5x", 10, 2, 5);
    expectType("string- 5", 10, 2, 5);
    expectType("string-+5", 10, 2, 5);
    expectType("int-10-3", 16, 4, 40);
}

TEST(TypeText, NamesAreComparedExactlyAndCaseSensitively) {
    expectUnknown("Int");
    expectUnknown("INT");
    expectUnknown("unsignedbyte");
    expectUnknown("in");
    expectUnknown("intx");
    expectUnknown("foo");
    expectUnknown("");
    expectUnknown("-");
    expectUnknown("-5");
    expectUnknown("string");
    expectUnknown("binary");
    expectUnknown("String-5");
}

TEST(TypeText, EmbeddedZeroByteIsPartOfTheName) {
    expectUnknown(std::string("int\0x", 5));
}

TEST(TypeText, BlanksAndTabsAroundTheTextAreTrimmed) {
    expectType(" \t int\t ", 4, 0, 4);
    expectType("\tstring-5 ", 10, 2, 5);
    expectUnknown("int\n");
    expectUnknown("\rint");
}

TEST(TypeText, BlanksAroundTheHyphenAreAnUnknownName) {
    expectUnknown("int - 5");
    expectUnknown("int -5");
}

TEST(TypeText, ConversionsInParenthesesAreSplitAtCommasAndTrimmed) {
    expectType("int(swap2,bcd)", 4, 0, 4);
    EXPECT_EQ(parse("int(swap2,bcd)").params, (Params{"swap2", "bcd"}));
    EXPECT_EQ(parse("int( swap2 ,\tbcd )").params, (Params{"swap2", "bcd"}));
    EXPECT_EQ(parse("int(neg)").params, (Params{"neg"}));
    EXPECT_EQ(parse("int").params, Params{});
}

TEST(TypeText, NameBeforeTheParenthesisIsTrimmed) {
    expectType("int (swap2)", 4, 0, 4);
    expectType(" string-20 \t(bcd) ", 10, 2, 20);
}

TEST(TypeText, TextBehindTheFirstClosingParenthesisIsIgnored) {
    expectType("int(swap2)rest", 4, 0, 4);
    EXPECT_EQ(parse("int(swap2)(bcd)").params, (Params{"swap2"}));
    EXPECT_EQ(parse("int((swap2)").params, (Params{"(swap2"}));
}

TEST(TypeText, EmptyConversionsAreKeptAsEmptyTexts) {
    EXPECT_EQ(parse("int()").params, (Params{""}));
    EXPECT_EQ(parse("int(,)").params, (Params{"", ""}));
    EXPECT_EQ(parse("int(a,,b)").params, (Params{"a", "", "b"}));
}

TEST(TypeText, OpeningParenthesisWithoutClosingOneFails) {
    expectUnknown("int(swap2");
    expectUnknown("int(");
    expectUnknown("(");
    expectUnknown("string-5(");
}

TEST(TypeText, ClosingParenthesisAloneIsPartOfTheName) {
    expectUnknown("int)");
    expectUnknown(")");
}

TEST(TypeText, ClosingBeforeOpeningParenthesisFails) {
    expectUnknown(")(");
    expectUnknown("int)(");
    expectUnknown(")int(");
}

TEST(TypeText, HyphenInsideTheParenthesesDoesNotCount) {
    expectType("int(a-b)", 4, 0, 4);
    expectUnknown("string(-5)");
}

TEST(TypeText, ConversionsAreAppendedToWhatTheCallerHas) {
    TypeText result;
    result.params = {"first"};
    EXPECT_TRUE(ProtUtilsN::GetICOMType("int(swap2)", result.type, result.basicType, result.length, result.params));
    EXPECT_EQ(result.params, (Params{"first", "swap2"}));
}

TEST(TypeText, UnknownNameStillDeliversTheConversions) {
    TypeText const result = parse("foo(swap2,bcd)");
    EXPECT_FALSE(result.known);
    EXPECT_EQ(result.params, (Params{"swap2", "bcd"}));
}

TEST(TypeText, NegativeLengthsAreUnknown) {
    expectUnknown("string--1");
    expectUnknown("int--5");
    expectUnknown("boolean--2147483648");
    expectUnknown("double--268435456");
    expectUnknown("uint64--536870912");
    expectUnknown("string--99999999999999999999");
}

TEST(TypeText, LengthsUpToTheLargestIntAreAccepted) {
    expectType("string-2147483647", 10, 2, INT_MAX);
    expectType("boolean-2147483647", 13, 1, INT_MAX);
    expectType("short-1073741823", 15, 3, 2147483646);
    expectType("int-536870911", 16, 4, 2147483644);
    expectType("double-268435455", 21, 9, 2147483640);
    expectType("uint64-268435455", 25, 23, 2147483640);
}

TEST(TypeText, LengthsAboveTheLargestIntAreUnknown) {
    expectUnknown("string-2147483648");
    expectUnknown("boolean-4294967295");
    expectUnknown("boolean-4294967297");
    expectUnknown("string-4294967316");
    expectUnknown("short-1073741824");
    expectUnknown("int-536870912");
    expectUnknown("int-1073741824");
    expectUnknown("int-1073741825");
    expectUnknown("int-4294967296");
    expectUnknown("int-4294967297");
    expectUnknown("float-2147483647");
    expectUnknown("double-268435456");
    expectUnknown("time-536870913");
    expectUnknown("uint64-268435456");
    expectUnknown("int64-2305843009213693953");
    expectUnknown("int64-9223372036854775807");
    expectUnknown("string-9223372036854775808");
    expectUnknown("string-99999999999999999999999999999999");
}

TEST(TypeText, HugeCountOfZerosIsStillItsNumber) {
    expectType("int-" + std::string(5000, '0') + "3", 16, 4, 12);
}

TEST(TypeText, RandomTextsNeverGiveANegativeLength) {
    std::vector<std::string> const pieces = {"int",
                                             "string-",
                                             "boolean-",
                                             "uint64-",
                                             "(",
                                             ")",
                                             ",",
                                             "-",
                                             "2147483647",
                                             "9",
                                             "0",
                                             " ",
                                             "\t",
                                             "bcd",
                                             "x",
                                             "time-",
                                             "99999999999999999999",
                                             std::string(1, '\0'),
                                             "\xff",
                                             "double-"};
    std::mt19937 random(20240521);
    std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> count(0, 8);
    int knownTexts = 0;
    for (int round = 0; round < 50000; ++round) {
        std::string text;
        for (int i = count(random); i > 0; --i) {
            text += pieces[piece(random)];
        }
        TypeText const result = parse(text);
        if (result.known) {
            ++knownTexts;
            ASSERT_GE(result.length, 0) << text;
            ASSERT_GE(result.type, 1) << text;
            ASSERT_LE(result.type, 26) << text;
        } else {
            ASSERT_EQ(result.length, 99) << text;
        }
    }
    EXPECT_GT(knownTexts, 100);
}

} // namespace
