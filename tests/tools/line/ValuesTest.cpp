#include "tools/velk/line/Values.h"

#include "tools/velk/line/SymbolTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using host::ValueBytes;
using testing::ElementsAre;
using velk::Access;

Access accessTo(std::string const& type, std::uint32_t size, bool bigEndian = false) {
    return velk::inferAccess({"X", type, 0, 0, size}, bigEndian).value();
}

/** The bytes of a number as this machine has them. */
template <typename Number>
ValueBytes bytesOf(Number number) {
    ValueBytes bytes(sizeof number);
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

TEST(ValueText, ShowsScalars) {
    EXPECT_EQ(velk::valueText(accessTo("BOOL", 1), {1}), "true");
    EXPECT_EQ(velk::valueText(accessTo("INT", 2), bytesOf<std::int16_t>(-1234)), "-1234");
    EXPECT_EQ(velk::valueText(accessTo("REAL", 4), bytesOf(36.6F)), "36.6");
    EXPECT_EQ(velk::valueText(accessTo("UDINT", 4), bytesOf<std::uint32_t>(4'000'000'000U)), "4000000000");
}

TEST(ValueText, ShowsTextsInQuotesAndHarmless) {
    EXPECT_EQ(velk::valueText(accessTo("STRING(5)", 6), {'a', 0x1B, 'b', 0, 'x', 0}), "\"a\\x1Bb\"");
    EXPECT_EQ(velk::valueText(accessTo("STRING(5)", 6), {0xB5, 'm', 0, 0, 0, 0}), "\"µm\"");
}

TEST(ValueText, PutsWideNumbersTogetherInTheStationsOrder) {
    ValueBytes const big{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE};
    ValueBytes const little{0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(velk::valueText(accessTo("LINT", 8, true), big), "-2");
    EXPECT_EQ(velk::valueText(accessTo("LINT", 8, false), little), "-2");
    EXPECT_EQ(velk::valueText(accessTo("ULINT", 8, true), big), "18446744073709551614");
}

TEST(ValueText, EveryElementOfAnArrayOfLrealIsRight) {
    ValueBytes const big{0x3F, 0xF0, 0, 0, 0, 0, 0, 0, 0xC0, 0x04, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(velk::valueText(accessTo("ARRAY [0..1] OF LREAL", 16, true), big), "[1, -2.5]");
}

TEST(ValueText, ShowsArraysOfBooleansAndOfTexts) {
    EXPECT_EQ(velk::valueText(accessTo("ARRAY [0..2] OF BOOL", 3), {1, 0, 1}), "[true, false, true]");
    EXPECT_EQ(velk::valueText(accessTo("ARRAY [0..1] OF STRING(2)", 6), {'a', 0, 0, 'b', 'c', 0}), "[\"a\", \"bc\"]");
}

TEST(ValueText, ShowsStructuresAsBytes) {
    EXPECT_EQ(velk::valueText(accessTo("DATA", 3), {0x00, 0x1F, 0xA0}), "001FA0");
}

TEST(ValueJson, HasTheKindOfTheValue) {
    EXPECT_EQ(velk::valueJson(accessTo("BOOL", 1), {1}).dump(), "true");
    EXPECT_EQ(velk::valueJson(accessTo("INT", 2), bytesOf<std::int16_t>(-1234)).dump(), "-1234");
    EXPECT_EQ(velk::valueJson(accessTo("REAL", 4), bytesOf(36.6F)).dump(), "36.6") << "not 36.599998474121094";
    EXPECT_EQ(velk::valueJson(accessTo("ULINT", 8), bytesOf<std::uint64_t>(18'446'744'073'709'551'615U)).dump(),
              "18446744073709551615");
    EXPECT_EQ(velk::valueJson(accessTo("ARRAY [0..1] OF INT", 4), {1, 0, 0xFF, 0xFF}).dump(), "[1,-1]");
    EXPECT_EQ(velk::valueJson(accessTo("ARRAY [0..1] OF BOOL", 2), {1, 0}).dump(), "[true,false]");
    EXPECT_EQ(velk::valueJson(accessTo("ARRAY [0..1] OF STRING(2)", 6), {'a', 0, 0, 'b', 'c', 0}).dump(),
              R"(["a","bc"])");
    EXPECT_EQ(velk::valueJson(accessTo("DATA", 2), {0x00, 0x1F}).dump(), R"("001F")");
}

TEST(ValueJson, HasNullForWhatIsNoNumber) {
    EXPECT_TRUE(velk::valueJson(accessTo("REAL", 4), bytesOf(std::numeric_limits<float>::quiet_NaN())).is_null());
    EXPECT_TRUE(velk::valueJson(accessTo("REAL", 4), bytesOf(std::numeric_limits<float>::infinity())).is_null());
    EXPECT_EQ(
        velk::valueJson(accessTo("ARRAY [0..0] OF REAL", 4), bytesOf(std::numeric_limits<float>::quiet_NaN())).dump(),
        "[null]");
}

TEST(ValueJson, ATextIsUtf8WhateverThePlcHas) {
    EXPECT_EQ(velk::valueJson(accessTo("STRING(3)", 4), {0xB5, 'm', '\n', 0}).dump(), "\"µm\\n\"");
}

class ValueParsing : public testing::Test {
protected:
    static ValueBytes parsed(Access const& access, std::string const& text, std::size_t length) {
        base::Result<ValueBytes> const bytes = velk::parseValue(access, text, length, "");
        EXPECT_TRUE(bytes.ok()) << text << ": " << (bytes.ok() ? "" : bytes.failure().text);
        return bytes.ok() ? bytes.value() : ValueBytes{};
    }
    static std::string refusal(Access const& access, std::string const& text, std::size_t length,
                               std::string const& type) {
        base::Result<ValueBytes> const bytes = velk::parseValue(access, text, length, type);
        return bytes.ok() ? "taken" : bytes.failure().text;
    }
};

TEST_F(ValueParsing, TakesBooleansAsPeopleWriteThem) {
    for (char const* const text : {"true", "TRUE", "True", "1"}) {
        EXPECT_THAT(parsed(accessTo("BOOL", 1), text, 1), ElementsAre(1)) << text;
    }
    EXPECT_THAT(parsed(accessTo("BOOL", 1), "FALSE", 1), ElementsAre(0));
    EXPECT_THAT(parsed(accessTo("ARRAY [0..2] OF BOOL", 3), "[TRUE, 0, true]", 3), ElementsAre(1, 0, 1));
}

TEST_F(ValueParsing, TakesNumbersInSeveralForms) {
    EXPECT_EQ(parsed(accessTo("INT", 2), "-32768", 2), bytesOf<std::int16_t>(-32768));
    EXPECT_EQ(parsed(accessTo("WORD", 2), "16#BEEF", 2), bytesOf<std::uint16_t>(0xBEEF));
    EXPECT_EQ(parsed(accessTo("WORD", 2), "0xBEEF", 2), bytesOf<std::uint16_t>(0xBEEF));
    EXPECT_EQ(parsed(accessTo("ARRAY [0..1] OF WORD", 4), "16#1, 16#2", 4), (ValueBytes{1, 0, 2, 0}));
    EXPECT_EQ(parsed(accessTo("REAL", 4), "21.5", 4), bytesOf(21.5F));
    EXPECT_EQ(parsed(accessTo("LINT", 8, true), "-2", 8), (ValueBytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}));
    EXPECT_EQ(parsed(accessTo("ARRAY [0..1] OF LREAL", 16, true), "[1, -2.5]", 16),
              (ValueBytes{0x3F, 0xF0, 0, 0, 0, 0, 0, 0, 0xC0, 0x04, 0, 0, 0, 0, 0, 0}));
}

TEST_F(ValueParsing, RefusesWhatIsOutOfRangeAndNamesTheType) {
    EXPECT_EQ(refusal(accessTo("INT", 2), "40000", 2, "INT"),
              "'40000' is out of range for short: -32768..32767 (the type is INT)");
    EXPECT_EQ(refusal(accessTo("INT", 2), "1.5", 2, "INT"), "'1.5' is not a whole number for short (the type is INT)");
    EXPECT_EQ(refusal(accessTo("TIME", 4), "T#5s", 4, "TIME"),
              "'T#5s' is not a whole number for unsignedInt (the type is TIME: give milliseconds)");
    EXPECT_NE(refusal(accessTo("USINT", 1), "-1", 1, "USINT"), "taken");
    EXPECT_NE(refusal(accessTo("INT", 2), "12x", 2, "INT"), "taken");
    EXPECT_NE(refusal(accessTo("INT", 2), "", 2, "INT"), "taken");
    EXPECT_NE(refusal(accessTo("BOOL", 1), "2", 1, "BOOL"), "taken");
    EXPECT_NE(refusal(accessTo("ARRAY [0..1] OF INT", 4), "[1]", 4, ""), "taken");
    EXPECT_NE(refusal(accessTo("DATA", 2), "001", 2, "DATA"), "taken");
}

TEST_F(ValueParsing, ATextKeepsRoomForItsEnd) {
    Access const text = accessTo("STRING(3)", 4);
    EXPECT_THAT(parsed(text, "abc", 4), ElementsAre('a', 'b', 'c', 0));
    EXPECT_THAT(parsed(text, "\"ab\"", 4), ElementsAre('a', 'b', 0, 0)) << "quotes may be left out";
    EXPECT_THAT(parsed(text, "", 4), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(parsed(text, "\\n", 4), ElementsAre('\n', 0, 0, 0));
    EXPECT_EQ(refusal(text, "abcd", 4, "STRING(3)"), "'abcd' has 4 bytes, there is room for 3 (the type is STRING(3))");
    EXPECT_NE(refusal(text, "", 0, ""), "taken");
}

TEST_F(ValueParsing, TextsOfAnArrayComeAsAList) {
    Access const texts = accessTo("ARRAY [0..1] OF STRING(2)", 6);
    EXPECT_THAT(parsed(texts, R"(["a", "bc"])", 6), ElementsAre('a', 0, 0, 'b', 'c', 0));
    EXPECT_EQ(refusal(texts, R"(["a"])", 6, ""), R"(give 2 texts as ["one", "two", ...])");
    EXPECT_EQ(refusal(texts, "a, b", 6, ""), R"(give 2 texts as ["one", "two", ...])");
    EXPECT_EQ(refusal(texts, "[1, 2]", 6, ""), R"(give 2 texts as ["one", "two", ...])");
    EXPECT_EQ(refusal(texts, R"(["abc", ""])", 6, ""), "'abc' has 3 bytes, there is room for 2");
}

TEST_F(ValueParsing, WhatIsShownCanBeWrittenBack) {
    struct Case {
        char const* type;
        ValueBytes bytes;
    };
    for (Case const& each : std::vector<Case>{{"BOOL", {1}},
                                              {"SINT", {0x80}},
                                              {"ARRAY [0..1] OF INT", {1, 0, 0xFF, 0xFF}},
                                              {"LINT", {1, 2, 3, 4, 5, 6, 7, 0x88}},
                                              {"STRING(5)", {'a', '\\', '\t', 0, 0, 0}},
                                              {"ARRAY [0..1] OF STRING(2)", {'a', 0, 0, 'b', 'c', 0}},
                                              {"DATA", {0xDE, 0xAD, 0xBE}}}) {
        for (bool const bigEndian : {false, true}) {
            Access const access = accessTo(each.type, static_cast<std::uint32_t>(each.bytes.size()), bigEndian);
            EXPECT_EQ(parsed(access, velk::valueText(access, each.bytes), each.bytes.size()), each.bytes) << each.type;
        }
    }
}

} // namespace
