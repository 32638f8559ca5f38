#include "symbols/RtsSym.h"
#include "tests/symbols/SdbBytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace _VELK;

int parserYields = 0;

void countParserYield() noexcept {
    ++parserYields;
}

/** Parses a file into a separate list; the list is cleared at the end. */
class Parsed {
public:
    explicit Parsed(SdbBytes const& file) {
        OpenFile const open = openFile(file.bytes());
        parserYields = 0;
        result = table_.SymParseBinaryFile(open.get(), &list);
        yields = parserYields;
        EXPECT_EQ(std::fseek(open.get(), 0, SEEK_SET), 0) << "the file must stay open";
    }

    Symbol const& at(std::size_t index) const { return list.all()[index]; }

    SymbolListTag list;
    int result = -1;
    int yields = -1;

private:
    RtsSym table_{1, countParserYield};
};

void expectRefused(SdbBytes const& file) {
    Parsed parsed(file);
    EXPECT_EQ(parsed.result, 0);
    // The symbols read so far can be cleared, and the list used again.
    RtsSym table(1);
    table.SymClearSymbolList(0, &parsed.list);
    EXPECT_EQ(parsed.list.count, 0U);
    SdbBytes good = SdbBytes::withInt();
    good.section(3, 100, 1).variable("Good");
    OpenFile const open = openFile(good.bytes());
    EXPECT_EQ(table.SymParseBinaryFile(open.get(), &parsed.list), 1);
    ASSERT_EQ(parsed.list.count, 1U);
    EXPECT_STREQ(parsed.at(0).name, "Good");
    EXPECT_STREQ(parsed.at(0).typeName, "INT");
}

/** The names of all symbols. */
std::vector<std::string> names(Parsed const& parsed) {
    std::vector<std::string> result;
    for (auto const& symbol : parsed.list.all()) {
        result.emplace_back(symbol.name);
    }
    return result;
}

using Names = std::vector<std::string>;

// --- a whole file, byte by byte ---

TEST(SymbolFile, EveryFieldIsTakenFromItsPlace) {
    SdbBytes file;
    file.hex("01 00 00 00 | 10 00 00 00 | 00 00 00 00 | EF BE AD DE");
    file.hex("02 00 00 00 | 26 00 00 00 | 00 00 00 00 | 01 00 00 00"); // one data type
    file.hex("04 00 00 00 | 16 00 00 00 | 03 00 00 00 | 02 00 00 00 | 04 00").text("INT").byte(0);
    file.hex("03 00 00 00 | 35 00 00 00 | 00 00 00 00 | 01 00 00 00"); // one variable
    file.hex("05 00 00 00 | 25 00 00 00 | 00 00 00 00 | 99 99 99 99 | 12 34 | 03 00 | 78 56 34 12 | 0B 00");
    file.text("MAIN.Level").byte(0);

    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(parsed.list.projectId, 0xDEADBEEFU);
    ASSERT_EQ(parsed.list.count, 1U);
    Symbol const& symbol = parsed.at(0);
    EXPECT_STREQ(symbol.name, "MAIN.Level");
    EXPECT_STREQ(symbol.typeName, "INT");
    EXPECT_EQ(symbol.typeNumber, 0U);
    EXPECT_EQ(symbol.area, 3U);
    EXPECT_EQ(symbol.offset, 0x12345678U);
    EXPECT_EQ(symbol.size, 2U);
    EXPECT_EQ(symbol.flags[0], 0x12);
    EXPECT_EQ(symbol.flags[1], 0x34);
}

TEST(SymbolFile, ParsingBuildsNoIndexAndSetsNoLoadedFlag) {
    Parsed const parsed(SdbBytes::withInt().section(3, 0x40, 1).variable("a"));
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(parsed.list.index, nullptr);
    EXPECT_EQ(parsed.list.loaded, 0);
}

TEST(SymbolFile, SymbolsStandInTheOrderOfTheFile) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 200, 3).variable("zebra").variable("Apple").variable("mango");
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), (Names{"zebra", "Apple", "mango"}));
}

TEST(SymbolFile, AreaAndOffsetAreKeptAsTheyAreRead) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 200, 3).variable("a", 0, 0xFFFF, 0xFFFFFFFF).variable("b", 0, 6, 0x80000000).variable("c", 0, 5, 1);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(parsed.at(0).area, 0xFFFFU);
    EXPECT_EQ(parsed.at(0).offset, 0xFFFFFFFFU);
    EXPECT_EQ(parsed.at(1).area, 6U);
    EXPECT_EQ(parsed.at(1).offset, 0x80000000U);
    EXPECT_EQ(parsed.at(2).area, 5U);
}

// --- the file header ---

SdbBytes fileWithHeader(std::uint32_t format, std::uint32_t headerLength, std::uint32_t variant) {
    SdbBytes file;
    file.fileHeader(0x11223344, headerLength, format, variant);
    for (std::uint32_t i = 16; i < headerLength && i < 64; ++i) {
        file.byte(0xDD);
    }
    file.section(2, 16 + 22, 1).simpleType("INT", 3, 2).section(3, 200, 1).variable("a");
    return file;
}

TEST(SymbolFileHeaderCheck, FormatMustBeOne) {
    EXPECT_EQ(Parsed(fileWithHeader(1, 16, 0)).result, 1);
    for (std::uint32_t const format : {0U, 2U, 0x101U, 0x01000000U, 0xFFFFFFFFU}) {
        expectRefused(fileWithHeader(format, 16, 0));
    }
}

TEST(SymbolFileHeaderCheck, VariantMustBeZeroOrOne) {
    EXPECT_EQ(Parsed(fileWithHeader(1, 16, 1)).result, 1);
    for (std::uint32_t const variant : {2U, 0x100U, 0xFFFFFFFFU}) {
        expectRefused(fileWithHeader(1, 16, variant));
    }
}

TEST(SymbolFileHeaderCheck, FirstSectionBeginsAfterTheHeaderLength) {
    EXPECT_EQ(Parsed(fileWithHeader(1, 17, 0)).result, 1);
    EXPECT_EQ(Parsed(fileWithHeader(1, 40, 0)).result, 1);
}

TEST(SymbolFileHeaderCheck, HeaderLengthBehindTheFileIsRefused) {
    expectRefused(fileWithHeader(1, 0x7FFFFFFF, 0));
    expectRefused(fileWithHeader(1, 0xFFFFFFFF, 0));
}

TEST(SymbolFileHeaderCheck, HeaderLengthInsideTheHeaderIsRefused) {
    for (std::uint32_t const length : {0U, 1U, 15U}) {
        expectRefused(fileWithHeader(1, length, 0));
    }
}

TEST(SymbolFileHeaderCheck, ShortHeaderIsRefused) {
    expectRefused(SdbBytes());
    expectRefused(SdbBytes().hex("01 00 00 00 10 00 00 00 00 00 00 00 44 33 22"));
    expectRefused(SdbBytes().fileHeader());
}

TEST(SymbolFileHeaderCheck, InvalidHandleIsRefused) {
    RtsSym const table(1);
    SymbolListTag list;
    EXPECT_EQ(table.SymParseBinaryFile(nullptr, &list), 0);
    EXPECT_EQ(list.count, 0U);
}

// --- sections ---

TEST(SymbolFileSections, OthersBeforeAndBetweenAreSkippedByTheirLength) {
    SdbBytes file;
    file.fileHeader().otherSection(1, 0).otherSection(77, 33).otherSection(0, 5);
    file.section(2, 16 + 22, 1).simpleType("INT", 3, 2);
    file.otherSection(4, 1).otherSection(0xFFFFFFFF, 100);
    file.section(3, 200, 1).variable("a");
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), Names{"a"});
}

TEST(SymbolFileSections, LongSectionsAndRecordsAreSkippedToo) {
    for (std::uint32_t const length : {8000U, 8192U, 20000U, 70000U}) {
        SdbBytes file;
        file.fileHeader().otherSection(1, length).section(2, 500, 2).simpleType("INT", 3, 2);
        file.typeRecord(4, 18 + 5 + length, 8, 4, 5).text("REAL").byte(0).text(std::string(length, 'x'));
        file.otherSection(7, length).section(3, 500, 3).variable("a", 0);
        file.variableRecord(6, 26 + length, 0, 0, 0, 0).text(std::string(length, 'y')).variable("b", 1);
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << length;
        EXPECT_EQ(names(parsed), (Names{"a", "", "b"})) << length;
        EXPECT_STREQ(parsed.at(0).typeName, "INT") << length;
        EXPECT_STREQ(parsed.at(2).typeName, "REAL") << length;
    }
}

TEST(SymbolFileSections, VariableSectionBeforeTheTypesIsSkipped) {
    SdbBytes file;
    file.fileHeader().section(3, 16 + 28, 1).variable("x");
    file.section(2, 16 + 22, 1).simpleType("INT", 3, 2).section(3, 200, 1).variable("a");
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), Names{"a"});
}

TEST(SymbolFileSections, SecondTypeSectionIsSkipped) {
    SdbBytes file = SdbBytes::withInt();
    file.section(2, 16 + 23, 1).simpleType("REAL", 8, 4).section(3, 200, 1).variable("a");
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "INT");
}

TEST(SymbolFileSections, WhatFollowsTheVariableSectionIsNotLookedAt) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 200, 1).variable("a").hex("FF FF FF FF FF");
    EXPECT_EQ(Parsed(file).result, 1);
}

TEST(SymbolFileSections, VariableSectionIsSoughtBehindTheLastTypeWhateverTheTypeSectionsLength) {
    for (std::uint32_t const length : {0U, 3U, 15U, 16U, 20U, 16U + 22U + 1U, 5000U, 0xFFFFFFFFU}) {
        SdbBytes file;
        file.fileHeader().section(2, length, 1).simpleType("INT", 3, 2).section(3, 200, 1).variable("a");
        Parsed const parsed(file);
        EXPECT_EQ(parsed.result, 1) << length;
        EXPECT_EQ(names(parsed), Names{"a"}) << length;
    }
}

TEST(SymbolFileSections, LengthOfTheVariableSectionIsNotUsed) {
    for (std::uint32_t const length : {0U, 3U, 15U, 16U, 17U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        Parsed const parsed(SdbBytes::withInt().section(3, length, 1).variable("a"));
        EXPECT_EQ(parsed.result, 1) << length;
        EXPECT_EQ(names(parsed), Names{"a"}) << length;
    }
}

TEST(SymbolFileSections, MissingTypeSectionIsRefused) {
    expectRefused(SdbBytes().fileHeader().section(3, 200, 1).variable("a"));
    expectRefused(SdbBytes().fileHeader().otherSection(1, 10));
}

TEST(SymbolFileSections, MissingVariableSectionIsRefused) {
    expectRefused(SdbBytes::withInt());
    expectRefused(SdbBytes::withInt().otherSection(4, 30));
}

TEST(SymbolFileSections, SkippedSectionShorterThanItsHeaderIsRefused) {
    for (std::uint32_t const length : {0U, 1U, 15U}) {
        SdbBytes before;
        before.fileHeader().section(1, length, 0);
        before.section(2, 16 + 22, 1).simpleType("INT", 3, 2).section(3, 200, 1).variable("a");
        expectRefused(before);
        expectRefused(SdbBytes::withInt().section(1, length, 0).section(3, 200, 1).variable("a"));
        // A second type section is skipped, too.
        expectRefused(SdbBytes::withInt().section(2, length, 0).section(3, 200, 1).variable("a"));
    }
}

TEST(SymbolFileSections, SectionThatEndsBehindTheFileIsRefused) {
    for (std::uint32_t const length : {500U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF0U, 0xFFFFFFFFU}) {
        SdbBytes before;
        before.fileHeader().section(1, length, 0);
        before.section(2, 16 + 22, 1).simpleType("INT", 3, 2).section(3, 200, 1).variable("a");
        expectRefused(before);
        expectRefused(SdbBytes::withInt().section(1, length, 0).section(3, 200, 1).variable("a"));
    }
}

// --- data types ---

TEST(SymbolFileTypes, AreNumberedInTheOrderOfTheFile) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 3).simpleType("BOOL", 0, 1).simpleType("INT", 3, 2).simpleType("LREAL", 8, 8);
    file.section(3, 500, 3).variable("c", 2).variable("a", 0).variable("b", 1);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "LREAL");
    EXPECT_EQ(parsed.at(0).typeNumber, 2U);
    EXPECT_EQ(parsed.at(0).size, 8U);
    EXPECT_STREQ(parsed.at(1).typeName, "BOOL");
    EXPECT_EQ(parsed.at(1).size, 1U);
    EXPECT_STREQ(parsed.at(2).typeName, "INT");
    EXPECT_EQ(parsed.at(2).size, 2U);
}

TEST(SymbolFileTypes, NextRecordBeginsAfterTheRecordLength) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 2);
    file.typeRecord(4, 18 + 4 + 5, 3, 2, 4).text("INT").byte(0).hex("EE EE EE EE EE");
    file.simpleType("REAL", 8, 4).section(3, 500, 2).variable("a", 0).variable("b", 1);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "INT");
    EXPECT_STREQ(parsed.at(1).typeName, "REAL");
}

TEST(SymbolFileTypes, RecordLengthAloneSaysWhereTheNextBegins) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 2);
    file.typeRecord(4, 18, 3, 2, 4); // its name is read from the record that follows
    file.simpleType("INT", 3, 2).section(3, 500, 2).variable("a", 0).variable("b", 1);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "\x04");
    EXPECT_STREQ(parsed.at(1).typeName, "INT");
}

TEST(SymbolFileTypes, OtherKindsAreSkippedByTheirLengthFromTheEndOfTheFixedPart) {
    for (std::uint32_t const kind : {0U, 3U, 5U, 0xFFFFFFFFU}) {
        SdbBytes file;
        file.fileHeader().section(2, 500, 3);
        file.typeRecord(kind, 6, 3, 2, 4).hex("EE EE EE EE EE EE");
        file.simpleType("INT", 3, 2);
        file.typeRecord(kind, 0, 9, 2, 0xFFFF); // no length, no name, no extra
        file.section(3, 500, 1).variable("a", 1);
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << kind;
        EXPECT_STREQ(parsed.at(0).typeName, "INT") << kind;
    }
}

TEST(SymbolFileTypes, VariableOfATypeWithoutANameHasTypeNone) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 1).typeRecord(7, 0, 3, 2, 0);
    file.section(3, 500, 1).variable("a", 0);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "NONE");
    EXPECT_EQ(parsed.at(0).typeNumber, 0U);
}

TEST(SymbolFileTypes, NameWithoutATerminatingZeroIsTerminated) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 1).typeRecord(4, 18 + 3, 3, 2, 3).text("INT");
    file.section(3, 500, 1).variable("a", 0);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "INT");
}

TEST(SymbolFileTypes, NameEndsAtItsFirstZero) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 1).typeRecord(4, 18 + 6, 3, 2, 6).text("IN").byte(0).text("Tx").byte(0);
    file.section(3, 500, 1).variable("a", 0);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "IN");
}

TEST(SymbolFileTypes, StructureAndTheClasses13And23HaveFourBytesBehindTheirName) {
    for (std::uint32_t const typeClass : {11U, 13U, 23U}) {
        SdbBytes file;
        file.fileHeader().section(2, 500, 2).typeWithFourBytes("T", typeClass, 12).simpleType("INT", 3, 2);
        file.section(3, 500, 1).variable("a", 1);
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << typeClass;
        EXPECT_STREQ(parsed.at(0).typeName, "INT") << typeClass;
    }
}

/**
 * A file whose only type has its record end before its name, which is read from the whole variable section after it. So
 * the file has everything that a parse needs, and only its last bytes decide whether the type is complete.
 */
SdbBytes fileWithLongType(std::uint32_t typeClass, std::string_view tail, std::uint32_t nameLength = 44) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 1).typeRecord(4, 18, typeClass, 2, nameLength);
    return file.section(3, 500, 1).variable("a").hex(tail);
}

TEST(SymbolFileTypes, NameMustBeInTheFileWhole) {
    EXPECT_EQ(Parsed(fileWithLongType(3, "")).result, 1);
    EXPECT_EQ(Parsed(fileWithLongType(3, "EE", 45)).result, 1);
    expectRefused(fileWithLongType(3, "", 45));
    expectRefused(fileWithLongType(3, "EE", 46));
    expectRefused(fileWithLongType(3, "", 0xFFFF));
}

TEST(SymbolFileTypes, FourBytesBehindTheNameMustBeInTheFileWhole) {
    for (std::uint32_t const typeClass : {11U, 13U, 23U}) {
        EXPECT_EQ(Parsed(fileWithLongType(typeClass, "C1 C2 C3 C4")).result, 1) << typeClass;
        expectRefused(fileWithLongType(typeClass, "C1 C2 C3"));
        expectRefused(fileWithLongType(typeClass, ""));
    }
}

TEST(SymbolFileTypes, ElementTypeAndDimensionsOfAnArrayMustBeInTheFileWhole) {
    constexpr char const* kTwoDimensions = "00 00 00 00 | 02 00 00 00 | 01 00 00 00 0A 00 00 00 | 01 00 00 00 0A 00 00";
    EXPECT_EQ(Parsed(fileWithLongType(9, std::string(kTwoDimensions) + "00")).result, 1);
    expectRefused(fileWithLongType(9, kTwoDimensions));
    expectRefused(fileWithLongType(9, "00 00 00 00 | 02 00 00 00"));
    EXPECT_EQ(Parsed(fileWithLongType(9, "00 00 00 00 | 00 00 00 00")).result, 1);
    expectRefused(fileWithLongType(9, "00 00 00 00 | 00 00 00"));
    expectRefused(fileWithLongType(9, "00 00 00"));
}

TEST(SymbolFileTypes, OtherClassesHaveNothingBehindTheirName) {
    for (std::uint32_t const typeClass : {0U, 1U, 8U, 10U, 12U, 14U, 22U, 24U, 29U, 0xFFFFFFFFU}) {
        SdbBytes file;
        file.fileHeader().section(2, 500, 1).simpleType("T", typeClass, 1);
        file.section(3, 500, 1).variable("a", 0);
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << typeClass;
        EXPECT_STREQ(parsed.at(0).typeName, "T") << typeClass;
    }
}

TEST(SymbolFileTypes, ArraysMayHaveAnyNumberOfDimensions) {
    for (std::uint32_t const dimensions : {0U, 1U, 3U, 50U}) {
        SdbBytes file;
        file.fileHeader().section(2, 5000, 2).arrayType("ARRAY OF INT", 20, 1, dimensions).simpleType("INT", 3, 2);
        file.section(3, 500, 2).variable("a", 0).variable("b", 1);
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << dimensions;
        EXPECT_STREQ(parsed.at(0).typeName, "ARRAY OF INT") << dimensions;
        EXPECT_STREQ(parsed.at(1).typeName, "INT") << dimensions;
    }
}

TEST(SymbolFileTypes, DimensionsThatTheFileCannotHoldAreRefused) {
    for (std::uint32_t const dimensions : {100U, 0x20000000U, 0x20000001U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        SdbBytes file;
        file.fileHeader().section(2, 500, 1).typeRecord(4, 18 + 2 + 8, 9, 20, 2).text("A").byte(0);
        file.u32(0).u32(dimensions).section(3, 500, 1).variable("a", 0);
        expectRefused(file);
    }
}

TEST(SymbolFileTypes, RecordThatDoesNotLeadForwardIsRefused) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 1).typeRecord(4, 0, 3, 2, 4).text("INT").byte(0);
    expectRefused(file.section(3, 500, 1).variable("a", 0));
}

TEST(SymbolFileTypes, RecordThatEndsBehindTheFileIsRefused) {
    for (std::uint32_t const length : {500U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        SdbBytes type;
        type.fileHeader().section(2, 500, 1).typeRecord(4, length, 3, 2, 4).text("INT").byte(0);
        expectRefused(type.section(3, 500, 1).variable("a", 0));
        SdbBytes other;
        other.fileHeader().section(2, 500, 1).typeRecord(3, length, 3, 2, 4);
        expectRefused(other.section(3, 500, 1).variable("a", 0));
    }
}

TEST(SymbolFileTypes, MoreTypesThanTheFileCanHoldAreRefused) {
    for (std::uint32_t const count : {2U, 3U, 1000U, 0x0E38E38EU, 0x10000000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        SdbBytes file;
        file.fileHeader().section(2, 38, count).simpleType("INT", 3, 2);
        expectRefused(file);
    }
}

TEST(SymbolFileTypes, NoTypesAreFineAsLongAsNoVariableNeedsOne) {
    SdbBytes file;
    file.fileHeader().section(2, 16, 0).section(3, 500, 1).variableRecord(6, 26, 0, 0, 0, 0);
    EXPECT_EQ(Parsed(file).result, 1);
}

// --- the names of types ---

TEST(SymbolTypeName, StructureIsData) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 1).typeWithFourBytes("POINT", 11, 12);
    file.section(3, 500, 1).variable("a", 0);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "DATA");
    EXPECT_EQ(parsed.at(0).size, 12U);
}

TEST(SymbolTypeName, ArrayOfStructuresOrArraysIsData) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 4).typeWithFourBytes("POINT", 11, 12).arrayType("ARRAY OF POINT", 120, 0);
    file.arrayType("ARRAY OF ARRAY", 240, 3).arrayType("ARRAY OF INT", 20, 3);
    file.section(3, 500, 2).variable("points", 1).variable("nested", 2);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "DATA");
    EXPECT_EQ(parsed.at(0).size, 120U);
    EXPECT_STREQ(parsed.at(1).typeName, "DATA");
    EXPECT_EQ(parsed.at(1).size, 240U);
}

TEST(SymbolTypeName, ArrayOfASimpleTypeKeepsItsOwnName) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 6).arrayType("ARRAY OF INT", 20, 1).simpleType("INT", 3, 2);
    file.arrayType("ARRAY OF ENUM", 20, 3).typeWithFourBytes("ENUM", 13, 2);
    file.arrayType("ARRAY OF REF", 20, 5).typeWithFourBytes("REF", 23, 4);
    file.section(3, 500, 3).variable("a", 0).variable("b", 2).variable("c", 4);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "ARRAY OF INT");
    EXPECT_STREQ(parsed.at(1).typeName, "ARRAY OF ENUM");
    EXPECT_STREQ(parsed.at(2).typeName, "ARRAY OF REF");
}

TEST(SymbolTypeName, Classes13And23KeepTheirName) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 2).typeWithFourBytes("ENUM", 13, 2).typeWithFourBytes("REF", 23, 4);
    file.section(3, 500, 2).variable("a", 0).variable("b", 1);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "ENUM");
    EXPECT_STREQ(parsed.at(1).typeName, "REF");
}

TEST(SymbolTypeName, ArrayOfPlaceholdersKeepsItsOwnName) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 2).typeRecord(7, 0, 11, 2, 0).arrayType("ARRAY", 20, 0);
    file.section(3, 500, 1).variable("a", 1);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "ARRAY");
}

TEST(SymbolTypeName, TypeNumbersBeyondTheTableAreRefused) {
    for (std::uint32_t const number : {1U, 29U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        expectRefused(SdbBytes::withInt().section(3, 500, 1).variable("a", number));
    }
    SdbBytes empty;
    expectRefused(empty.fileHeader().section(2, 16, 0).section(3, 500, 1).variable("a", 0));
}

TEST(SymbolTypeName, ElementTypeNumbersBeyondTheTableAreRefused) {
    for (std::uint32_t const number : {1U, 2U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        SdbBytes file;
        file.fileHeader().section(2, 500, 1).arrayType("ARRAY", 20, number);
        expectRefused(file.section(3, 500, 1).variable("a", 0));
    }
}

TEST(SymbolTypeName, ArrayOfItselfIsAnArrayOfArrays) {
    SdbBytes file;
    file.fileHeader().section(2, 500, 1).arrayType("ARRAY", 20, 0);
    file.section(3, 500, 1).variable("a", 0);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_STREQ(parsed.at(0).typeName, "DATA");
}

// --- variables ---

TEST(SymbolFileVariables, WithoutAGapReadingGoesOnRightBehindTheName) {
    // The record length may claim one or two bytes more than there are: 28 is still no gap.
    for (std::uint32_t const overhead : {26U, 27U, 28U}) {
        SdbBytes file = SdbBytes::withInt();
        file.section(3, 500, 2).variableRecord(5, overhead + 6, 0, 1, 10, 6).text("first").byte(0);
        file.variable("second", 0, 2, 20);
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << overhead;
        EXPECT_EQ(names(parsed), (Names{"first", "second"})) << overhead;
        EXPECT_EQ(parsed.at(1).offset, 20U) << overhead;
    }
}

TEST(SymbolFileVariables, ShortRecordLengthWithoutAGapIsNotUsedEither) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 500, 2).variableRecord(5, 6, 0, 1, 10, 6).text("first").byte(0).variable("second");
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), (Names{"first", "second"}));
}

TEST(SymbolFileVariables, TwoBytesStandBeforeTheNameInALongerRecord) {
    for (std::uint32_t const overhead : {29U, 30U, 40U}) {
        SdbBytes file = SdbBytes::withInt();
        file.section(3, 500, 2).variableRecord(5, overhead + 6, 0, 1, 10, 6).hex("EE EE").text("first").byte(0);
        for (std::uint32_t i = 28; i < overhead; ++i) {
            file.byte(0xEE);
        }
        file.variable("second", 0, 2, 20);
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << overhead;
        EXPECT_EQ(names(parsed), (Names{"first", "second"})) << overhead;
        EXPECT_EQ(parsed.at(1).offset, 20U) << overhead;
    }
}

TEST(SymbolFileVariables, NameLongerThanItsRecordStandsBehindTheGapToo) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 500, 1).variableRecord(5, 27, 0, 1, 10, 30).hex("EE EE");
    file.text("name-of-twenty-nine-character").byte(0);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), Names{"name-of-twenty-nine-character"});
}

TEST(SymbolFileVariables, NextRecordMayLieInsideTheNameOfTheLast) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 500, 2).variableRecord(5, 28, 0, 1, 10, 29).hex("EE EE"); // next: directly after the gap
    file.variable("second", 0, 2, 20);
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), (Names{"\x05", "second"}));
}

TEST(SymbolFileVariables, NameWithoutATerminatingZeroIsTerminated) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 500, 2).variableRecord(5, 26 + 5, 0, 1, 10, 5).text("first").variable("second");
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), (Names{"first", "second"}));
}

TEST(SymbolFileVariables, NameMayBeEmptyOrLong) {
    SdbBytes file = SdbBytes::withInt();
    std::string const longest(65534, 'n');
    file.section(3, 500, 3).variableRecord(5, 26, 0, 1, 10, 0).variable(longest).variable("last");
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), (Names{"", longest, "last"}));
}

TEST(SymbolFileVariables, OtherKindsGivePlaceholders) {
    for (std::uint32_t const kind : {0U, 4U, 6U, 0xFFFFFFFFU}) {
        SdbBytes file = SdbBytes::withInt();
        file.section(3, 500, 3).variable("first");
        file.variableRecord(kind, 26 + 9, 0xFFFFFFFF, 4, 1234, 5).hex("EE EE EE EE EE EE EE EE EE");
        file.variable("last");
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << kind;
        ASSERT_EQ(parsed.list.count, 3U) << kind;
        EXPECT_EQ(names(parsed), (Names{"first", "", "last"})) << kind;
        Symbol const& placeholder = parsed.at(1);
        EXPECT_STREQ(placeholder.typeName, "NONE");
        EXPECT_EQ(placeholder.typeNumber, 29U);
        EXPECT_EQ(placeholder.area, 0U);
        EXPECT_EQ(placeholder.offset, 0U);
        EXPECT_EQ(placeholder.size, 0U);
        EXPECT_EQ(placeholder.flags[0], 0x6E);
        EXPECT_EQ(placeholder.flags[1], 0x00);
    }
}

TEST(SymbolFileVariables, RecordThatDoesNotLeadForwardIsRefused) {
    expectRefused(SdbBytes::withInt().section(3, 500, 1).variableRecord(6, 0, 0, 0, 0, 0));
    // Length 0 with a name is handled as with the gap, whose next record would be the same one again.
    SdbBytes variable = SdbBytes::withInt();
    expectRefused(variable.section(3, 500, 2).variableRecord(5, 0, 0, 0, 0, 1).hex("EE EE").byte(0).variable("b"));
}

TEST(SymbolFileVariables, RecordThatEndsBehindTheFileIsRefusedWhenAnotherFollows) {
    for (std::uint32_t const length : {500U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        expectRefused(SdbBytes::withInt().section(3, 500, 2).variableRecord(6, length, 0, 0, 0, 0).variable("b"));
        SdbBytes variable = SdbBytes::withInt();
        variable.section(3, 500, 2).variableRecord(5, length, 0, 0, 0, 2).hex("EE EE").text("a").byte(0);
        expectRefused(variable.variable("b"));
    }
}

TEST(SymbolFileVariables, LastRecordMayEndBehindTheFile) {
    // Nothing is read there: the fixed part and the name are whole.
    for (std::uint32_t const length : {29U + 2U, 30U + 2U, 500U, 0xFFFFFFFFU}) {
        SdbBytes file = SdbBytes::withInt();
        file.section(3, 500, 2).variable("first").variableRecord(5, length, 0, 1, 10, 2).hex("EE EE").text("l").byte(0);
        Parsed const parsed(file);
        ASSERT_EQ(parsed.result, 1) << length;
        EXPECT_EQ(names(parsed), (Names{"first", "l"})) << length;
    }
    SdbBytes placeholder = SdbBytes::withInt();
    Parsed const parsed(placeholder.section(3, 500, 2).variable("first").variableRecord(6, 500, 0, 0, 0, 0));
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), (Names{"first", ""}));
}

TEST(SymbolFileVariables, PlaceholderShorterThanItsFixedPartLeadsToItsOwnMiddle) {
    // 12 bytes after its start the placeholder contains another complete record.
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 500, 2).u32(6).u32(12).u32(0);
    file.variableRecord(5, 26 + 2, 0, 4, 1234, 2).text("b").byte(0);
    file.hex("EE EE EE EE EE EE EE EE EE EE EE EE"); // the least number of bytes of two records
    Parsed const parsed(file);
    ASSERT_EQ(parsed.result, 1);
    EXPECT_EQ(names(parsed), (Names{"", "b"}));
    EXPECT_EQ(parsed.at(1).offset, 1234U);
}

TEST(SymbolFileVariables, MoreVariablesThanTheFileCanHoldAreRefused) {
    for (std::uint32_t const count : {2U, 3U, 1000U, 0x09D89D8AU, 0x10000000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        expectRefused(SdbBytes::withInt().section(3, 500, count).variable("a"));
    }
}

TEST(SymbolFileVariables, NoVariablesAreAnEmptyListAndNoFailure) {
    Parsed const parsed(SdbBytes::withInt().section(3, 16, 0));
    EXPECT_EQ(parsed.result, 1);
    EXPECT_EQ(parsed.list.count, 0U);
    EXPECT_EQ(parsed.yields, 0);
}

TEST(SymbolFileVariables, FileThatEndsInsideTheSectionIsRefused) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 500, 2).variable("first").variableRecord(5, 26 + 7, 0, 1, 10, 7).text("secon");
    expectRefused(file);
}

// --- yields ---

SdbBytes fileWithVariables(std::uint32_t count) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 0x100000, count);
    for (std::uint32_t i = 0; i < count; ++i) {
        file.variable("v" + std::to_string(i));
    }
    return file;
}

TEST(SymbolFileYield, AfterEveryHundredthVariableTheFirstIncluded) {
    EXPECT_EQ(Parsed(fileWithVariables(1)).yields, 1);
    EXPECT_EQ(Parsed(fileWithVariables(99)).yields, 1);
    EXPECT_EQ(Parsed(fileWithVariables(100)).yields, 1);
    EXPECT_EQ(Parsed(fileWithVariables(101)).yields, 2);
    EXPECT_EQ(Parsed(fileWithVariables(200)).yields, 2);
    EXPECT_EQ(Parsed(fileWithVariables(201)).yields, 3);
    EXPECT_EQ(Parsed(fileWithVariables(1000)).yields, 10);
}

TEST(SymbolFileYield, PlaceholdersCountLikeVariables) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 0x100000, 101);
    for (int i = 0; i < 101; ++i) {
        file.variableRecord(6, 26, 0, 0, 0, 0);
    }
    EXPECT_EQ(Parsed(file).yields, 2);
}

TEST(SymbolFileYield, WithoutASchedulerNothingIsCalled) {
    RtsSym const table(1);
    SymbolListTag list;
    OpenFile const open = openFile(fileWithVariables(201).bytes());
    parserYields = 0;
    EXPECT_EQ(table.SymParseBinaryFile(open.get(), &list), 1);
    EXPECT_EQ(parserYields, 0);
}

// --- the table of data types ---

TEST(SymClearSdb, ReleasesTheTypes) {
    SDBTag types;
    types.types.resize(5);
    types.types[0].name = types.texts.copy("INT");
    RtsSym::SymClearSDB(types);
    EXPECT_TRUE(types.types.empty());
    RtsSym::SymClearSDB(types);
    EXPECT_TRUE(types.types.empty());
}

} // namespace
