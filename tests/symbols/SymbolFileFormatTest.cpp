#include "symbols/SymbolFileFormat.h"

#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace _VELK;
using velktest::Bytes;
using velktest::Hex;

template <std::size_t kSize>
std::span<std::uint8_t const, kSize> fixed(Bytes const& bytes) {
    return std::span<std::uint8_t const, kSize>(bytes.data(), kSize);
}

TEST(SymbolFileFormat, FileHeader) {
    Bytes const bytes = Hex("01 02 03 04 11 12 13 14 21 22 23 24 31 32 33 F4");
    SymbolFileHeader const header = parseSymbolFileHeader(fixed<16>(bytes));
    EXPECT_EQ(header.format, 0x04030201U);
    EXPECT_EQ(header.headerLength, 0x14131211U);
    EXPECT_EQ(header.variant, 0x24232221U);
    EXPECT_EQ(header.projectId, 0xF4333231U);
}

TEST(SymbolFileFormat, SectionHeader) {
    Bytes const bytes = Hex("01 02 03 04 11 12 13 94 21 22 23 24 31 32 33 F4");
    SectionHeader const header = parseSectionHeader(fixed<16>(bytes));
    EXPECT_EQ(header.kind, 0x04030201U);
    EXPECT_EQ(header.length, 0x94131211U);
    EXPECT_EQ(header.recordCount, 0xF4333231U);
}

TEST(SymbolFileFormat, TypeRecord) {
    Bytes const bytes = Hex("01 02 03 04 11 12 13 14 21 22 23 24 31 32 33 34 41 F2");
    TypeRecord const record = parseTypeRecord(fixed<18>(bytes));
    EXPECT_EQ(record.kind, 0x04030201U);
    EXPECT_EQ(record.length, 0x14131211U);
    EXPECT_EQ(record.typeClass, 0x24232221U);
    EXPECT_EQ(record.size, 0x34333231U);
    EXPECT_EQ(record.nameLength, 0xF241U);
}

TEST(SymbolFileFormat, OnlyKindFourIsAType) {
    TypeRecord record;
    record.kind = 4;
    EXPECT_FALSE(record.isPlaceholder());
    for (std::uint32_t const kind : {0U, 3U, 5U, 0x104U, 0x04000000U, 0xFFFFFFFFU}) {
        record.kind = kind;
        EXPECT_TRUE(record.isPlaceholder()) << kind;
    }
}

TEST(SymbolFileFormat, VariableRecord) {
    Bytes const bytes = Hex("01 02 03 04 11 12 13 14 21 22 23 24 31 32 33 34 41 F2 51 F3 61 62 63 F4 71 F5");
    VariableRecord const record = parseVariableRecord(fixed<26>(bytes));
    EXPECT_EQ(record.kind, 0x04030201U);
    EXPECT_EQ(record.length, 0x14131211U);
    EXPECT_EQ(record.typeNumber, 0x24232221U);
    EXPECT_EQ(record.flags[0], 0x41);
    EXPECT_EQ(record.flags[1], 0xF2);
    EXPECT_EQ(record.area, 0xF351U);
    EXPECT_EQ(record.offset, 0xF4636261U);
    EXPECT_EQ(record.nameLength, 0xF571U);
}

TEST(SymbolFileFormat, OnlyKindFiveIsAVariable) {
    VariableRecord record;
    record.kind = 5;
    EXPECT_FALSE(record.isPlaceholder());
    for (std::uint32_t const kind : {0U, 4U, 6U, 0x105U, 0x05000000U, 0xFFFFFFFFU}) {
        record.kind = kind;
        EXPECT_TRUE(record.isPlaceholder()) << kind;
    }
}

TEST(SymbolFileFormat, GapBeforeTheNameFromTwentyNineBytesOn) {
    VariableRecord record;
    record.nameLength = 10;
    for (std::uint32_t const length : {10U, 36U, 37U, 38U}) {
        record.length = length;
        EXPECT_FALSE(record.hasGapBeforeName()) << length;
    }
    for (std::uint32_t const length : {39U, 40U, 100U, 0xFFFFFFFFU}) {
        record.length = length;
        EXPECT_TRUE(record.hasGapBeforeName()) << length;
    }
}

TEST(SymbolFileFormat, NameLongerThanItsRecordHasAGap) {
    VariableRecord record;
    record.nameLength = 10;
    for (std::uint32_t const length : {0U, 1U, 9U}) {
        record.length = length;
        EXPECT_TRUE(record.hasGapBeforeName()) << length;
    }
}

TEST(SymbolFileFormat, ArrayExtra) {
    Bytes const bytes = Hex("01 02 03 F4 11 12 13 F5");
    ArrayExtra const extra = parseArrayExtra(fixed<8>(bytes));
    EXPECT_EQ(extra.elementType, 0xF4030201U);
    EXPECT_EQ(extra.dimensionCount, 0xF5131211U);
}

} // namespace
