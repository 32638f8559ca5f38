#include "tools/velk/line/Access.h"

#include "tools/velk/line/SymbolTable.h"
#include "tools/velk/project/DriverType.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using velk::Access;
using velk::chosenAccess;
using velk::inferAccess;
using velk::Variable;

Access inferred(std::string const& type, std::uint32_t size, bool bigEndian = true) {
    base::Result<Access> const access = inferAccess({"X", type, 0, 0, size}, bigEndian);
    EXPECT_TRUE(access.ok()) << type;
    return access.ok() ? access.value() : Access{};
}

struct Row {
    char const* plcType;
    std::uint32_t size;
    char const* dataType;
    ICU_Type shownAs;
};

std::ostream& operator<<(std::ostream& out, Row const& row) {
    return out << row.plcType;
}

class ElementaryType : public testing::TestWithParam<Row> {};

TEST_P(ElementaryType, HasATypeInTheDriver) {
    Row const& row = GetParam();
    for (bool const bigEndian : {true, false}) {
        Access const access = inferred(row.plcType, row.size, bigEndian);
        EXPECT_EQ(access.dataType, row.dataType);
        EXPECT_EQ(access.addressSpace, "M");
        EXPECT_EQ(access.shownAs, row.shownAs);
        EXPECT_FALSE(access.reversed) << "the driver takes care of the byte order";
        EXPECT_EQ(access.textLength, 0U);
    }
}

INSTANTIATE_TEST_SUITE_P(
    PlcTypes, ElementaryType,
    testing::Values(Row{"BOOL", 1, "boolean", ICU_BOOLEAN}, Row{"BYTE", 1, "unsignedByte", ICU_UNSIGNED_BYTE},
                    Row{"SINT", 1, "byte", ICU_BYTE}, Row{"USINT", 1, "unsignedByte", ICU_UNSIGNED_BYTE},
                    Row{"INT", 2, "short", ICU_SHORT}, Row{"UINT", 2, "unsignedShort", ICU_UNSIGNED_SHORT},
                    Row{"WORD", 2, "unsignedShort", ICU_UNSIGNED_SHORT}, Row{"DINT", 4, "int", ICU_INT},
                    Row{"UDINT", 4, "unsignedInt", ICU_UNSIGNED_INT}, Row{"DWORD", 4, "unsignedInt", ICU_UNSIGNED_INT},
                    Row{"REAL", 4, "float", ICU_FLOAT}, Row{"LREAL", 8, "double", ICU_DOUBLE},
                    Row{"TIME", 4, "unsignedInt", ICU_UNSIGNED_INT}, Row{"DATE", 4, "unsignedInt", ICU_UNSIGNED_INT},
                    Row{"TOD", 4, "unsignedInt", ICU_UNSIGNED_INT},
                    Row{"TIME_OF_DAY", 4, "unsignedInt", ICU_UNSIGNED_INT},
                    Row{"DT", 4, "unsignedInt", ICU_UNSIGNED_INT},
                    Row{"DATE_AND_TIME", 4, "unsignedInt", ICU_UNSIGNED_INT},
                    Row{"STRING", 81, "string-81", ICU_STRING}, Row{"STRING(20)", 21, "string-21", ICU_STRING},
                    Row{"STRING[20]", 21, "string-21", ICU_STRING}, Row{"int", 2, "short", ICU_SHORT},
                    Row{"ARRAY [0..9] OF INT", 20, "short-10", ICU_SHORT_ARRAY},
                    Row{"ARRAY [0..3] OF SINT", 4, "byte-4", ICU_BYTE_ARRAY},
                    Row{"ARRAY [1..3] OF DINT", 12, "int-3", ICU_INT_ARRAY},
                    Row{"ARRAY [0..1, 0..2] OF UINT", 12, "unsignedShort-6", ICU_UNSIGNED_SHORT_ARRAY},
                    Row{"ARRAY [0..4] OF USINT", 5, "unsignedByte-5", ICU_UNSIGNED_BYTE_ARRAY},
                    Row{"ARRAY [0..1] OF UDINT", 8, "unsignedInt-2", ICU_UNSIGNED_INT_ARRAY},
                    Row{"array[0..3] of real", 16, "float-4", ICU_FLOAT_ARRAY}));

class WideType : public testing::TestWithParam<Row> {};

TEST_P(WideType, IsReadAsBytesAndPutTogether) {
    Row const& row = GetParam();
    for (bool const bigEndian : {true, false}) {
        Access const access = inferred(row.plcType, row.size, bigEndian);
        EXPECT_EQ(access.dataType, row.dataType);
        EXPECT_EQ(access.shownAs, row.shownAs);
        EXPECT_EQ(access.reversed, bigEndian) << "on a little-endian machine";
    }
}

INSTANTIATE_TEST_SUITE_P(PlcTypes, WideType,
                         testing::Values(Row{"LINT", 8, "unsignedByte-8", ICU_INT64},
                                         Row{"ULINT", 8, "unsignedByte-8", ICU_UINT64},
                                         Row{"LWORD", 8, "unsignedByte-8", ICU_UINT64},
                                         Row{"LTIME", 8, "unsignedByte-8", ICU_UINT64},
                                         Row{"ARRAY [0..2] OF LINT", 24, "unsignedByte-24", ICU_INT64_ARRAY},
                                         Row{"ARRAY [0..2] OF ULINT", 24, "unsignedByte-24", ICU_UINT64_ARRAY},
                                         Row{"ARRAY [0..1] OF LREAL", 16, "unsignedByte-16", ICU_DOUBLE_ARRAY}));

TEST(InferAccess, AnArrayOfBooleansHasAByteForEach) {
    Access const access = inferred("ARRAY [0..7] OF BOOL", 8);
    EXPECT_EQ(access.dataType, "unsignedByte-8") << "the driver would take a boolean-8 for one byte of packed bits";
    EXPECT_EQ(access.shownAs, ICU_BOOLEAN_ARRAY);
    EXPECT_FALSE(access.reversed);
}

TEST(InferAccess, AnArrayOfTextsIsCutIntoItsTexts) {
    Access const access = inferred("ARRAY [0..1, 1..2] OF STRING(9)", 40);
    EXPECT_EQ(access.dataType, "unsignedByte-40");
    EXPECT_EQ(access.textLength, 10U);
}

TEST(InferAccess, BoundsThatMakeNoSenseLeaveBytes) {
    for (char const* const type :
         {"ARRAY [1..0] OF STRING(9)", "ARRAY [x..2] OF STRING(9)", "ARRAY [] OF STRING(9)", "ARRAY OF STRING(9)",
          "ARRAY [-2147483648..2147483647, 0..2147483647] OF STRING(9)", "ARRAY [0..99999999999] OF STRING(9)"}) {
        Access const access = inferred(type, 40);
        EXPECT_EQ(access.textLength, 0U) << type;
        EXPECT_EQ(access.shownAs, ICU_BINARY) << type;
    }
}

TEST(InferAccess, WhateverElseThereIsShowsAsBytes) {
    for (char const* const type :
         {"DATA", "NONE", "E_MODE", "POINTER TO INT", "ARRAY [0..1] OF E_MODE", "", "INTEGER"}) {
        Access const access = inferred(type, 24);
        EXPECT_EQ(access.dataType, "unsignedByte-24") << type;
        EXPECT_EQ(access.shownAs, ICU_BINARY) << type;
    }
}

TEST(InferAccess, ASizeThatDoesNotFitTheTypeLeavesBytes) {
    EXPECT_EQ(inferred("INT", 4).dataType, "unsignedByte-4");
    EXPECT_EQ(inferred("LREAL", 4).dataType, "unsignedByte-4");
    EXPECT_EQ(inferred("ARRAY [0..2] OF INT", 5).dataType, "unsignedByte-5");
    EXPECT_EQ(inferred("ARRAY [0..2] OF LINT", 20).dataType, "unsignedByte-20");
}

TEST(InferAccess, TheAreaIsTheVariables) {
    char const* const names[] = {"M", "I", "Q", "3", "4", "5"};
    for (std::uint16_t area = 0; area < 6; ++area) {
        base::Result<Access> const access = inferAccess({"X", "INT", area, 0, 2}, true);
        ASSERT_TRUE(access.ok());
        EXPECT_EQ(access.value().addressSpace, names[area]);
    }
    base::Result<Access> const beyond = inferAccess({"X", "INT", 6, 0, 2}, true);
    ASSERT_FALSE(beyond.ok());
    EXPECT_EQ(beyond.failure().text, "it is in memory area 6, which the driver cannot reach");
}

TEST(InferAccess, NothingCanBeReadOfNoSize) {
    EXPECT_FALSE(inferAccess({"X", "INT", 0, 0, 0}, true).ok());
}

TEST(InferAccess, ABitBySuchANameIsASingleBit) {
    base::Result<Access> const access = inferAccess({"X", "BIT", 1, 9, 1}, true);
    ASSERT_TRUE(access.ok());
    EXPECT_EQ(access.value().dataType, "boolean");
    EXPECT_EQ(access.value().addressSpace, "IB");
}

TEST(ChosenAccess, TakesTheTypeAsItIsGiven) {
    base::Result<Access> const access = chosenAccess("unsignedShort(swap2,bcd)", "", nullptr);
    ASSERT_TRUE(access.ok());
    EXPECT_EQ(access.value().dataType, "unsignedShort(swap2,bcd)");
    EXPECT_EQ(access.value().addressSpace, "M");
    EXPECT_EQ(access.value().shownAs, ICU_UNSIGNED_SHORT);
}

TEST(ChosenAccess, TheAreaOfTheVariableCountsUnlessOneIsGiven) {
    Variable const output{"X", "INT", 2, 0, 2};
    EXPECT_EQ(chosenAccess("short", "", &output).value().addressSpace, "Q");
    EXPECT_EQ(chosenAccess("short", "I", &output).value().addressSpace, "I");
}

TEST(ChosenAccess, ABitLiesInABitArea) {
    Variable const input{"X", "BOOL", 1, 9, 1};
    EXPECT_EQ(chosenAccess("bit", "", &input).value().addressSpace, "IB");
    EXPECT_EQ(chosenAccess("bit", "", nullptr).value().addressSpace, "MB");
    EXPECT_EQ(chosenAccess("bit", "Q", &input).value().addressSpace, "QB");
    EXPECT_EQ(chosenAccess("bit", "QB", &input).value().addressSpace, "QB");
    EXPECT_EQ(chosenAccess("bit", "", nullptr).value().dataType, "boolean");
    Variable const retained{"X", "BOOL", 3, 0, 1};
    EXPECT_EQ(chosenAccess("bit", "", &retained).failure().text,
              "single bits can be addressed in the areas M, I and Q only, not in 3");
}

TEST(ChosenAccess, ABitAreaHasBooleansOnly) {
    EXPECT_TRUE(chosenAccess("boolean", "MB", nullptr).ok());
    EXPECT_FALSE(chosenAccess("short", "MB", nullptr).ok());
    EXPECT_FALSE(chosenAccess("boolean-4", "IB", nullptr).ok());
}

TEST(InOtherOrder, TurnsEveryElementOfEightBytes) {
    Access access;
    access.reversed = true;
    host::ValueBytes const bytes{1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 13, 14, 15, 16, 17, 18};
    EXPECT_THAT(velk::inOtherOrder(access, bytes),
                testing::ElementsAre(8, 7, 6, 5, 4, 3, 2, 1, 18, 17, 16, 15, 14, 13, 12, 11));
    access.reversed = false;
    EXPECT_EQ(velk::inOtherOrder(access, bytes), bytes);
}

TEST(InOtherOrder, LeavesARestThatIsNoElement) {
    Access access;
    access.reversed = true;
    EXPECT_THAT(velk::inOtherOrder(access, host::ValueBytes{1, 2, 3}), testing::ElementsAre(1, 2, 3));
}

// ---- the driver's own types

TEST(DriverType, TakesTypesApart) {
    base::Result<velk::DriverType> const type = velk::parseDriverType(" short-6 ( swap2 , bcd ) ");
    ASSERT_TRUE(type.ok());
    EXPECT_EQ(type.value().type, ICU_SHORT_ARRAY);
    EXPECT_EQ(type.value().count, 6);
    EXPECT_THAT(type.value().conversions, testing::ElementsAre("swap2", "bcd"));
    EXPECT_EQ(velk::parseDriverType("string-20").value().type, ICU_STRING);
    EXPECT_EQ(velk::parseDriverType("boolean").value().type, ICU_BOOLEAN);
}

TEST(DriverType, RefusesWhatNoMemoryAreaTakes) {
    for (char const* const text :
         {"",        "Int",       "uint64",   "int64-2",  "time",        "binary-4",   "string",
          "short-",  "short-0",   "short--1", "short-x",  "short-75001", "short-4x",   "int(",
          "int(bcd", "int(bcd)x", "int()",    "int(BCD)", "int(bcd,)",   "int-5(bcd))"}) {
        EXPECT_FALSE(velk::parseDriverType(text).ok()) << text;
    }
}

TEST(DriverType, IsWrittenAsTagAddressesHaveIt) {
    EXPECT_EQ(velk::driverTypeText(ICU_SHORT, 1), "short");
    EXPECT_EQ(velk::driverTypeText(ICU_SHORT_ARRAY, 6), "short-6");
    EXPECT_EQ(velk::driverTypeText(ICU_STRING, 21), "string-21");
}

} // namespace
