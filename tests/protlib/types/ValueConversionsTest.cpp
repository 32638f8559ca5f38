#include "tests/protlib/TestTag.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using velktest::Bytes;
using velktest::Hex;
using velktest::ToHex;

constexpr bool kToHost = false;
constexpr bool kToPlc = true;

/** A host type with its element type, as a tag has them. */
struct Type {
    ICU_Type type;
    ICU_Type item = ICU_NONE;
};

constexpr Type kBoolean{ICU_BOOLEAN};
constexpr Type kByte{ICU_BYTE};
constexpr Type kShort{ICU_SHORT};
constexpr Type kInt{ICU_INT};
constexpr Type kUnsignedByte{ICU_UNSIGNED_BYTE};
constexpr Type kUnsignedShort{ICU_UNSIGNED_SHORT};
constexpr Type kUnsignedInt{ICU_UNSIGNED_INT};
constexpr Type kFloat{ICU_FLOAT};
constexpr Type kDouble{ICU_DOUBLE};
constexpr Type kString{ICU_STRING, ICU_BYTE};
constexpr Type kBinary{ICU_BINARY, ICU_UNSIGNED_BYTE};
constexpr Type kTime{ICU_TIME};
constexpr Type kBooleans{ICU_BOOLEAN_ARRAY, ICU_BOOLEAN};
constexpr Type kBytes{ICU_BYTE_ARRAY, ICU_BYTE};
constexpr Type kShorts{ICU_SHORT_ARRAY, ICU_SHORT};
constexpr Type kInts{ICU_INT_ARRAY, ICU_INT};
constexpr Type kUnsignedBytes{ICU_UNSIGNED_BYTE_ARRAY, ICU_UNSIGNED_BYTE};
constexpr Type kUnsignedShorts{ICU_UNSIGNED_SHORT_ARRAY, ICU_UNSIGNED_SHORT};
constexpr Type kUnsignedInts{ICU_UNSIGNED_INT_ARRAY, ICU_UNSIGNED_INT};
constexpr Type kFloats{ICU_FLOAT_ARRAY, ICU_FLOAT};
constexpr Type kDoubles{ICU_DOUBLE_ARRAY, ICU_DOUBLE};
constexpr Type kTimes{ICU_TIME_ARRAY, ICU_TIME};
constexpr Type kUint64{ICU_UINT64};
constexpr Type kInt64{ICU_INT64};
constexpr Type kUint64s{ICU_UINT64_ARRAY, ICU_UINT64};
constexpr Type kInt64s{ICU_INT64_ARRAY, ICU_INT64};

std::vector<Type> const kEveryType = {kBoolean,      kByte,   kShort,   kInt,    kUnsignedByte,  kUnsignedShort,
                                      kUnsignedInt,  kFloat,  kDouble,  kString, kBinary,        kTime,
                                      kBooleans,     kBytes,  kShorts,  kInts,   kUnsignedBytes, kUnsignedShorts,
                                      kUnsignedInts, kFloats, kDoubles, kTimes,  kUint64,        kInt64,
                                      kUint64s,      kInt64s};

struct Result {
    bool ok;
    Bytes bytes;
};

/** Applies one keyword to a value of the type; the length of the value is that of the tag. */
Result apply(char const* keyword, Type type, std::string_view value, bool towardsPlc) {
    Bytes bytes = Hex(value);
    TestTag const tag(type.type, type.item, static_cast<int>(bytes.size()));
    constexpr unsigned char kGuard = 0xA5;
    bytes.push_back(kGuard);
    bool const ok = tag.DoConversion(bytes.data(), keyword, towardsPlc);
    EXPECT_EQ(bytes.back(), kGuard) << keyword << " wrote behind " << value;
    bytes.pop_back();
    EXPECT_STREQ(tag.GetErrorText(), "") << "a single conversion sets no text";
    return {ok, bytes};
}

void expectOneWay(char const* keyword, Type type, std::string_view before, std::string_view after, bool towardsPlc) {
    Result const result = apply(keyword, type, before, towardsPlc);
    EXPECT_TRUE(result.ok) << keyword << ' ' << type.type << ' ' << before;
    EXPECT_EQ(result.bytes, Hex(after)) << keyword << ' ' << type.type << ' ' << before << " gave "
                                        << ToHex(result.bytes);
}

void expectBothWays(char const* keyword, Type type, std::string_view before, std::string_view after) {
    expectOneWay(keyword, type, before, after, kToHost);
    expectOneWay(keyword, type, before, after, kToPlc);
}

void expectFails(char const* keyword, Type type, std::string_view value, bool towardsPlc) {
    EXPECT_FALSE(apply(keyword, type, value, towardsPlc).ok) << keyword << ' ' << type.type << ' ' << value;
}

void expectFailsBothWays(char const* keyword, Type type, std::string_view value) {
    expectFails(keyword, type, value, kToHost);
    expectFails(keyword, type, value, kToPlc);
}

// --- keywords ---

TEST(ConversionKeyword, IsComparedExactlyAndCaseSensitively) {
    for (char const* const keyword : {"BCD", "Bcd", "SWAP2", "Neg", "INV", "swap", "swap3", "swap16", "swap2 ", " bcd",
                                      "", "negate", "swapNibble", "swapnibbles", "bc"}) {
        expectFailsBothWays(keyword, kUnsignedShort, "12 34");
    }
}

TEST(ConversionKeyword, UnknownOneLeavesTheBytes) {
    EXPECT_EQ(apply("BCD", kUnsignedShort, "12 34", kToHost).bytes, Hex("12 34"));
}

TEST(ConversionKeyword, UnknownOneFailsForEmptyValuesToo) {
    expectFailsBothWays("BCD", kString, "");
}

TEST(ConversionKeyword, NegativeLengthsSucceedAndChangeNothing) {
    for (int const length : {-1, -2, -7, -2147483647}) {
        for (auto const& [keyword, type] : std::vector<std::pair<char const*, Type>>{{"swapnibble", kString},
                                                                                     {"swap2", kString},
                                                                                     {"swap4", kString},
                                                                                     {"swap8", kString},
                                                                                     {"bcd", kUnsignedShorts},
                                                                                     {"neg", kShorts},
                                                                                     {"neg", kBytes},
                                                                                     {"inv", kBooleans},
                                                                                     {"inv", kUnsignedBytes}}) {
            TestTag const tag(type.type, type.item, length);
            Bytes bytes = Hex("12 34 56 78 9A BC DE F0 12 34 56 78 9A BC DE F0");
            Bytes const before = bytes;
            EXPECT_TRUE(tag.DoConversion(bytes.data() + 8, keyword, kToHost)) << keyword << length;
            EXPECT_TRUE(tag.DoConversion(bytes.data() + 8, keyword, kToPlc)) << keyword << length;
            EXPECT_EQ(bytes, before) << keyword << length;
        }
    }
}

TEST(ConversionKeyword, EmptyValuesSucceed) {
    expectBothWays("swapnibble", kString, "", "");
    expectBothWays("swap2", kShorts, "", "");
    expectBothWays("swap4", kInts, "", "");
    expectBothWays("swap8", kDoubles, "", "");
    expectBothWays("bcd", kUnsignedShorts, "", "");
    expectBothWays("neg", kShorts, "", "");
    expectBothWays("inv", kBooleans, "", "");
    expectBothWays("inv", kBinary, "", "");
}

// --- swaps ---

TEST(SwapNibble, ExchangesTheNibblesOfEveryByte) {
    expectBothWays("swapnibble", kUnsignedByte, "12", "21");
    expectBothWays("swapnibble", kUnsignedInt, "12 F0 0A FF", "21 0F A0 FF");
    expectBothWays("swapnibble", kString, "41 42 43", "14 24 34");
}

TEST(SwapNibble, AcceptsEveryType) {
    for (auto const type : kEveryType) {
        expectBothWays("swapnibble", type, "12 34 56 78 9A BC DE F0", "21 43 65 87 A9 CB ED 0F");
    }
}

TEST(Swap2, ExchangesTheBytesOfEveryPair) {
    expectBothWays("swap2", kShort, "0A 0B", "0B 0A");
    expectBothWays("swap2", kInt, "0A 0B 0C 0D", "0B 0A 0D 0C");
    expectBothWays("swap2", kString, "41 42 43 44 45 46", "42 41 44 43 46 45");
}

TEST(Swap2, AcceptsEveryType) {
    for (auto const type : kEveryType) {
        expectBothWays("swap2", type, "01 02 03 04 05 06 07 08", "02 01 04 03 06 05 08 07");
    }
}

TEST(Swap2, FailsOnOddLengths) {
    expectFailsBothWays("swap2", kByte, "01");
    expectFailsBothWays("swap2", kString, "01 02 03");
    expectFailsBothWays("swap2", kString, "01 02 03 04 05 06 07");
}

TEST(Swap4, ReversesEveryGroupOfFour) {
    expectBothWays("swap4", kInt, "0A 0B 0C 0D", "0D 0C 0B 0A");
    expectBothWays("swap4", kInts, "01 02 03 04 05 06 07 08", "04 03 02 01 08 07 06 05");
}

TEST(Swap4, AcceptsEveryType) {
    for (auto const type : kEveryType) {
        expectBothWays("swap4", type, "01 02 03 04 05 06 07 08", "04 03 02 01 08 07 06 05");
    }
}

TEST(Swap4, FailsWhenTheLengthIsNoMultipleOfFour) {
    expectFailsBothWays("swap4", kByte, "01");
    expectFailsBothWays("swap4", kShort, "01 02");
    expectFailsBothWays("swap4", kString, "01 02 03");
    expectFailsBothWays("swap4", kShorts, "01 02 03 04 05 06");
}

TEST(Swap8, ReversesEveryGroupOfEight) {
    expectBothWays("swap8", kDouble, "01 02 03 04 05 06 07 08", "08 07 06 05 04 03 02 01");
    expectBothWays("swap8", kUint64s, "01 02 03 04 05 06 07 08 11 12 13 14 15 16 17 18",
                   "08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11");
}

TEST(Swap8, AcceptsEveryType) {
    for (auto const type : kEveryType) {
        expectBothWays("swap8", type, "01 02 03 04 05 06 07 08", "08 07 06 05 04 03 02 01");
    }
}

TEST(Swap8, FailsWhenTheLengthIsNoMultipleOfEight) {
    expectFailsBothWays("swap8", kByte, "01");
    expectFailsBothWays("swap8", kInt, "01 02 03 04");
    expectFailsBothWays("swap8", kString, "01 02 03 04 05 06 07");
    expectFailsBothWays("swap8", kInts, "01 02 03 04 05 06 07 08 09 0A 0B 0C");
}

// --- bcd ---

TEST(Bcd, TwoDigitsAByteTowardsTheHost) {
    expectOneWay("bcd", kUnsignedByte, "00", "00", kToHost);
    expectOneWay("bcd", kUnsignedByte, "42", "2A", kToHost);
    expectOneWay("bcd", kUnsignedByte, "99", "63", kToHost);
}

TEST(Bcd, LeastSignificantDigitsComeFirst) {
    expectOneWay("bcd", kUnsignedShort, "34 12", "D2 04", kToHost); // 1234
    expectOneWay("bcd", kUnsignedShort, "99 99", "0F 27", kToHost); // 9999
    expectOneWay("bcd", kUnsignedShort, "01 00", "01 00", kToHost);
    expectOneWay("bcd", kUnsignedShort, "00 01", "64 00", kToHost);           // 100
    expectOneWay("bcd", kUnsignedInt, "78 56 34 12", "4E 61 BC 00", kToHost); // 12345678
    expectOneWay("bcd", kUnsignedInt, "99 99 99 99", "FF E0 F5 05", kToHost); // 99999999
}

TEST(Bcd, FailsOnANibbleAboveNineTowardsTheHost) {
    expectFails("bcd", kUnsignedShort, "1A 00", kToHost);
    expectFails("bcd", kUnsignedShort, "A1 00", kToHost);
    expectFails("bcd", kUnsignedShort, "00 0A", kToHost);
    expectFails("bcd", kUnsignedShort, "00 F0", kToHost);
    expectFails("bcd", kUnsignedByte, "0A", kToHost);
    expectFails("bcd", kUnsignedInt, "00 00 00 A0", kToHost);
    expectFails("bcd", kUnsignedBytes, "11 22 3B", kToHost);
}

TEST(Bcd, DigitsTowardsThePlc) {
    expectOneWay("bcd", kUnsignedByte, "2A", "42", kToPlc);
    expectOneWay("bcd", kUnsignedByte, "00", "00", kToPlc);
    expectOneWay("bcd", kUnsignedShort, "D2 04", "34 12", kToPlc);
    expectOneWay("bcd", kUnsignedInt, "4E 61 BC 00", "78 56 34 12", kToPlc);
}

TEST(Bcd, LargestValueOfEachLengthTowardsThePlc) {
    expectOneWay("bcd", kUnsignedByte, "63", "99", kToPlc);                  // 99
    expectOneWay("bcd", kUnsignedShort, "0F 27", "99 99", kToPlc);           // 9999
    expectOneWay("bcd", kUnsignedInt, "FF E0 F5 05", "99 99 99 99", kToPlc); // 99999999
    expectFails("bcd", kUnsignedByte, "64", kToPlc);                         // 100
    expectFails("bcd", kUnsignedShort, "10 27", kToPlc);                     // 10000
    expectFails("bcd", kUnsignedInt, "00 E1 F5 05", kToPlc);                 // 100000000
    expectFails("bcd", kUnsignedByte, "FF", kToPlc);
    expectFails("bcd", kUnsignedShort, "FF FF", kToPlc);
    expectFails("bcd", kUnsignedInt, "FF FF FF FF", kToPlc);
}

TEST(Bcd, NegativeValuesFailTowardsThePlc) {
    expectFails("bcd", kByte, "FF", kToPlc);
    expectFails("bcd", kShort, "FF FF", kToPlc);
    expectFails("bcd", kInt, "FF FF FF FF", kToPlc);
    expectFails("bcd", kInt, "00 00 00 80", kToPlc);
}

TEST(Bcd, TakesEveryElementOfAnArray) {
    expectOneWay("bcd", kUnsignedBytes, "10 20 99", "0A 14 63", kToHost);
    expectOneWay("bcd", kUnsignedBytes, "0A 14 63", "10 20 99", kToPlc);
    expectOneWay("bcd", kShorts, "34 12 99 99 00 00", "D2 04 0F 27 00 00", kToHost);
    expectOneWay("bcd", kShorts, "D2 04 0F 27 00 00", "34 12 99 99 00 00", kToPlc);
    expectOneWay("bcd", kInts, "01 00 00 00 00 01 00 00", "01 00 00 00 64 00 00 00", kToHost);
    expectOneWay("bcd", kInts, "01 00 00 00 64 00 00 00", "01 00 00 00 00 01 00 00", kToPlc);
    expectFails("bcd", kShorts, "D2 04 10 27", kToPlc);
    expectFails("bcd", kUnsignedBytes, "0A 64 63", kToPlc);
}

TEST(Bcd, ElementsAreTakenByTheirLengthWhateverTheirType) {
    expectOneWay("bcd", kByte, "42", "2A", kToHost);
    expectOneWay("bcd", kBoolean, "01", "01", kToHost);
    expectOneWay("bcd", kFloat, "34 12 00 00", "D2 04 00 00", kToHost);
    expectOneWay("bcd", kFloat, "D2 04 00 00", "34 12 00 00", kToPlc);
    expectOneWay("bcd", kString, "10 20", "0A 14", kToHost);
    expectOneWay("bcd", kBinary, "0A 14", "10 20", kToPlc);
    expectOneWay("bcd", kBooleans, "00 01 01", "00 01 01", kToPlc);
}

TEST(Bcd, EightByteElementsSumInThirtyTwoBitsTowardsTheHost) {
    for (auto const type : {kDouble, kTime, kUint64, kInt64, kDoubles, kTimes, kUint64s, kInt64s}) {
        expectOneWay("bcd", type, "34 12 00 00 00 00 00 00", "D2 04 00 00 00 00 00 00", kToHost);
    }
    expectOneWay("bcd", kUint64, "00 00 00 00 01 00 00 00", "00 E1 F5 05 00 00 00 00", kToHost); // 100^4
    // 42 * 100^4 + 94967295 is 2^32 - 1, and one more is 0 again.
    expectOneWay("bcd", kUint64, "95 72 96 94 42 00 00 00", "FF FF FF FF 00 00 00 00", kToHost);
    expectOneWay("bcd", kUint64, "96 72 96 94 42 00 00 00", "00 00 00 00 00 00 00 00", kToHost);
    expectFails("bcd", kUint64, "00 00 00 00 00 00 00 A0", kToHost);
}

TEST(Bcd, EightByteElementsFailTowardsThePlc) {
    for (auto const type : {kDouble, kTime, kUint64, kInt64, kDoubles, kTimes, kUint64s, kInt64s}) {
        expectFails("bcd", type, "00 00 00 00 00 00 00 00", kToPlc);
    }
}

TEST(Bcd, ValueShorterThanOneElementIsLeftAlone) {
    expectBothWays("bcd", kUnsignedShort, "FF", "FF");
    expectBothWays("bcd", kUnsignedInt, "FF FF FF", "FF FF FF");
    expectBothWays("bcd", kUint64, "FF FF FF FF", "FF FF FF FF");
}

TEST(Bcd, IncompleteLastElementIsLeftAlone) {
    expectOneWay("bcd", kUnsignedShort, "34 12 FF", "D2 04 FF", kToHost);
    expectOneWay("bcd", kUnsignedShort, "D2 04 FF", "34 12 FF", kToPlc);
}

// --- neg ---

TEST(Neg, Bytes) {
    expectBothWays("neg", kByte, "01", "FF");
    expectBothWays("neg", kByte, "FF", "01");
    expectBothWays("neg", kByte, "00", "00");
    expectBothWays("neg", kByte, "80", "80"); // -128 stays
    expectBothWays("neg", kByte, "7F", "81");
}

TEST(Neg, ByteArraysAreNegatedWhole) {
    expectBothWays("neg", kBytes, "01 FF 00 80 7F", "FF 01 00 80 81");
    expectBothWays("neg", kBytes, "01 01 01 01 01 01 01 01 01", "FF FF FF FF FF FF FF FF FF");
}

TEST(Neg, Shorts) {
    expectBothWays("neg", kShort, "01 00", "FF FF");
    expectBothWays("neg", kShort, "00 01", "00 FF"); // 256
    expectBothWays("neg", kShort, "00 80", "00 80"); // -32768 stays
    expectBothWays("neg", kShort, "00 00", "00 00");
}

TEST(Neg, Ints) {
    expectBothWays("neg", kInt, "01 00 00 00", "FF FF FF FF");
    expectBothWays("neg", kInt, "D2 02 96 49", "2E FD 69 B6"); // 1234567890
    expectBothWays("neg", kInt, "00 00 00 80", "00 00 00 80");
}

TEST(Neg, FloatsFlipTheirSignBit) {
    expectBothWays("neg", kFloat, "00 00 80 3F", "00 00 80 BF"); // 1.0
    expectBothWays("neg", kFloat, "00 00 00 00", "00 00 00 80"); // 0.0
    expectBothWays("neg", kFloat, "00 00 80 FF", "00 00 80 7F"); // -infinity
    expectBothWays("neg", kFloat, "01 00 80 7F", "01 00 80 FF"); // a signalling NaN keeps its bits
}

TEST(Neg, DoublesFlipTheirSignBit) {
    expectBothWays("neg", kDouble, "00 00 00 00 00 00 F0 3F", "00 00 00 00 00 00 F0 BF");
    expectBothWays("neg", kDouble, "00 00 00 00 00 00 00 80", "00 00 00 00 00 00 00 00");
    expectBothWays("neg", kDouble, "01 00 00 00 00 00 F0 7F", "01 00 00 00 00 00 F0 FF");
}

TEST(Neg, SixtyFourBitIntegersOfBothSigns) {
    for (auto const type : {kUint64, kInt64}) {
        expectBothWays("neg", type, "01 00 00 00 00 00 00 00", "FF FF FF FF FF FF FF FF");
        expectBothWays("neg", type, "00 00 00 00 01 00 00 00", "00 00 00 00 FF FF FF FF");
        expectBothWays("neg", type, "00 00 00 00 00 00 00 80", "00 00 00 00 00 00 00 80");
    }
}

/** @p bytes followed by @p count elements, each the @p element. */
Bytes repeated(std::string_view element, int count, Bytes bytes = {}) {
    Bytes const one = Hex(element);
    for (int i = 0; i < count; ++i) {
        bytes.insert(bytes.end(), one.begin(), one.end());
    }
    return bytes;
}

/** Of @p count elements the first @p negated change, and no other. */
void expectNegated(Type type, std::string_view one, std::string_view minusOne, int count, int negated) {
    Bytes bytes = repeated(one, count);
    TestTag const tag(type.type, type.item, static_cast<int>(bytes.size()));
    ASSERT_TRUE(tag.DoConversion(bytes.data(), "neg", kToHost));
    EXPECT_EQ(bytes, repeated(one, count - negated, repeated(minusOne, negated)))
        << "type " << type.type << ", " << count << " elements: " << ToHex(bytes);
    bytes = repeated(one, count);
    ASSERT_TRUE(tag.DoConversion(bytes.data(), "neg", kToPlc));
    EXPECT_EQ(bytes, repeated(one, count - negated, repeated(minusOne, negated)))
        << "type " << type.type << ", " << count << " elements: " << ToHex(bytes);
}

TEST(Neg, ShortArrayIsNegatedAsFarAsTheBytePositionLiesBelowTheCount) {
    for (auto const& [count, negated] :
         std::vector<std::pair<int, int>>{{1, 1}, {2, 1}, {3, 2}, {4, 2}, {5, 3}, {10, 5}, {11, 6}}) {
        expectNegated(kShorts, "01 00", "FF FF", count, negated);
    }
}

TEST(Neg, IntArrayOfFourChangesOnlyTheFirstAndOfFiveTheFirstTwo) {
    for (auto const& [count, negated] :
         std::vector<std::pair<int, int>>{{1, 1}, {3, 1}, {4, 1}, {5, 2}, {8, 2}, {9, 3}, {16, 4}, {17, 5}}) {
        expectNegated(kInts, "01 00 00 00", "FF FF FF FF", count, negated);
    }
}

TEST(Neg, FloatArrayIsNegatedForAQuarter) {
    for (auto const& [count, negated] : std::vector<std::pair<int, int>>{{1, 1}, {4, 1}, {5, 2}, {8, 2}, {9, 3}}) {
        expectNegated(kFloats, "00 00 80 3F", "00 00 80 BF", count, negated);
    }
}

TEST(Neg, EightByteArraysAreNegatedForAnEighth) {
    for (auto const& [count, negated] :
         std::vector<std::pair<int, int>>{{1, 1}, {2, 1}, {8, 1}, {9, 2}, {16, 2}, {17, 3}}) {
        expectNegated(kDoubles, "00 00 00 00 00 00 F0 3F", "00 00 00 00 00 00 F0 BF", count, negated);
        expectNegated(kUint64s, "01 00 00 00 00 00 00 00", "FF FF FF FF FF FF FF FF", count, negated);
        expectNegated(kInt64s, "01 00 00 00 00 00 00 00", "FF FF FF FF FF FF FF FF", count, negated);
    }
}

TEST(Neg, RefusesEveryOtherElementType) {
    for (auto const type : {kBoolean, kUnsignedByte, kUnsignedShort, kUnsignedInt, kTime, kBooleans, kUnsignedBytes,
                            kUnsignedShorts, kUnsignedInts, kTimes, kBinary}) {
        expectFailsBothWays("neg", type, "01 02 03 04 05 06 07 08");
    }
}

TEST(Neg, RefusesScalarsOfStringBinaryAndArrayTypes) {
    for (int value = -2; value <= 40; ++value) {
        bool const accepted =
            value == 2 || value == 3 || value == 4 || value == 8 || value == 9 || value == 23 || value == 24;
        EXPECT_EQ(apply("neg", {static_cast<ICU_Type>(value)}, "01 02 03 04 05 06 07 08", kToHost).ok, accepted)
            << value;
    }
}

TEST(Neg, TextIsNegatedAsTheSignedBytesThatItIsMadeOf) {
    expectBothWays("neg", kString, "01 02 FF", "FF FE 01");
}

// --- inv ---

TEST(Inv, BitsAreInvertedAsBytes) {
    expectBothWays("inv", kBoolean, "01", "00");
    expectBothWays("inv", kBoolean, "00", "01");
    expectBothWays("inv", kBooleans, "00 01 00 01 01", "01 00 01 00 00");
}

TEST(Inv, BitsAboveOneBecomeZero) {
    expectBothWays("inv", kBooleans, "02 80 FF 00", "00 00 00 01");
}

TEST(Inv, UnsignedIntegersAndBinariesAreComplemented) {
    expectBothWays("inv", kUnsignedByte, "0F", "F0");
    expectBothWays("inv", kUnsignedShort, "00 FF", "FF 00");
    expectBothWays("inv", kUnsignedInt, "12 34 56 78", "ED CB A9 87");
    expectBothWays("inv", kUnsignedBytes, "01 02 03", "FE FD FC");
    expectBothWays("inv", kUnsignedShorts, "01 00 02 00", "FE FF FD FF");
    expectBothWays("inv", kUnsignedInts, "01 00 00 00 FF FF FF FF", "FE FF FF FF 00 00 00 00");
    expectBothWays("inv", kBinary, "55 AA 00", "AA 55 FF");
    expectBothWays("inv", {ICU_BINARY}, "55 AA 00", "AA 55 FF");
}

TEST(Inv, RefusesEveryOtherElementType) {
    for (auto const type : {kByte, kShort, kInt, kFloat, kDouble, kString, kTime, kBytes, kShorts, kInts, kFloats,
                            kDoubles, kTimes, kUint64, kInt64, kUint64s, kInt64s}) {
        expectFailsBothWays("inv", type, "01 02 03 04 05 06 07 08");
    }
    expectFailsBothWays("inv", {ICU_STRING}, "01 02");
    expectFailsBothWays("inv", {ICU_NONE}, "01 02");
}

} // namespace
