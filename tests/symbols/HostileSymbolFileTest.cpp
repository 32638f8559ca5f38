#include "symbols/RtsSym.h"
#include "tests/symbols/SdbBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace {

using namespace _VELK;
using velktest::Bytes;

/** A valid file with everything that a file can hold; it ends with the name of its last variable. */
Bytes fullFile() {
    SdbBytes file;
    file.fileHeader(0xCAFE0001, 20).hex("DD DD DD DD").otherSection(1, 7);
    file.section(2, 300, 8);
    file.simpleType("BOOL", 0, 1).simpleType("INT", 3, 2).typeWithFourBytes("POINT", 11, 12);
    file.arrayType("ARRAY OF INT", 20, 1, 2).arrayType("ARRAY OF POINT", 120, 2).typeWithFourBytes("ENUM", 13, 2);
    file.typeRecord(3, 3, 1, 1, 1).hex("EE EE EE").typeWithFourBytes("REF", 23, 4);
    file.otherSection(4, 3);
    file.section(3, 400, 7);
    file.variable("MAIN.Flag", 0, 0, 1).variable("MAIN.Count", 1, 1, 2).variable("MAIN.Point", 2, 2, 3);
    file.variableRecord(5, 30 + 6, 3, 3, 4, 6).hex("EE EE").text("Array").byte(0).hex("EE EE");
    file.variableRecord(9, 29, 0, 0, 0, 0).hex("EE EE EE");
    file.variable("main.flag", 4, 4, 5).variable("MAIN.Last", 7, 5, 6);
    return file.bytes();
}

/** Parses from memory, because many thousands of files are created here. */
int parse(RtsSym const& table, Bytes bytes, SymbolListTag& list) {
    OpenFile const open(fmemopen(bytes.data(), bytes.size(), "rb"));
    return table.SymParseBinaryFile(open.get(), &list);
}

/** Uses everything that a parse has produced, so that a wild pointer or an unterminated text is noticed. */
std::size_t walk(SymbolListTag const& list) {
    std::size_t characters = 0;
    for (auto const& symbol : list.all()) {
        characters += std::strlen(symbol.name) + std::strlen(symbol.typeName);
    }
    return characters;
}

/** Whatever the file is: the parse ends, its list can be walked, cleared, and used for a good file. */
int parseAnything(Bytes const& bytes, Bytes const& good) {
    RtsSym table(1);
    SymbolListTag list;
    int const result = parse(table, bytes, list);
    EXPECT_TRUE(result == 0 || result == 1);
    walk(list);
    table.SymClearSymbolList(0, &list);
    EXPECT_EQ(list.count, 0U);
    EXPECT_EQ(list.symbols, nullptr);
    EXPECT_EQ(parse(table, good, list), 1);
    EXPECT_EQ(list.count, 7U);
    EXPECT_STREQ(list.all()[6].name, "MAIN.Last");
    return result;
}

TEST(HostileSymbolFile, FullFileIsValid) {
    RtsSym const table(1);
    SymbolListTag list;
    ASSERT_EQ(parse(table, fullFile(), list), 1);
    ASSERT_EQ(list.count, 7U);
    EXPECT_EQ(list.projectId, 0xCAFE0001U);
    constexpr char const* kExpected[][2] = {{"MAIN.Flag", "BOOL"},     {"MAIN.Count", "INT"}, {"MAIN.Point", "DATA"},
                                            {"Array", "ARRAY OF INT"}, {"", "NONE"},          {"main.flag", "DATA"},
                                            {"MAIN.Last", "REF"}};
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_STREQ(list.all()[i].name, kExpected[i][0]) << i;
        EXPECT_STREQ(list.all()[i].typeName, kExpected[i][1]) << i;
    }
}

TEST(HostileSymbolFile, CutAtAnyByteIsRefused) {
    Bytes const good = fullFile();
    for (std::size_t length = 0; length < good.size(); ++length) {
        EXPECT_EQ(parseAnything(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)), good), 0)
            << length;
    }
}

TEST(HostileSymbolFile, AnyCorruptedByteIsHarmless) {
    Bytes const good = fullFile();
    int refused = 0;
    for (std::size_t offset = 0; offset < good.size(); ++offset) {
        for (unsigned const value : {0x00U, 0x01U, 0x7FU, 0x80U, 0xFFU}) {
            Bytes bad = good;
            bad[offset] = static_cast<unsigned char>(value);
            if (parseAnything(bad, good) == 0) {
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 100);
}

TEST(HostileSymbolFile, AnyFourBytesMayBeAHugeNumber) {
    Bytes const good = fullFile();
    for (std::size_t offset = 0; offset + 4 <= good.size(); ++offset) {
        for (std::uint32_t const value : {0xFFFFFFFFU, 0x7FFFFFFFU, 0x80000000U, 0x20000000U, 0x00010000U, 0U}) {
            Bytes bad = good;
            for (unsigned i = 0; i < 4; ++i) {
                bad[offset + i] = static_cast<unsigned char>((value >> (8 * i)) & 0xFFU);
            }
            parseAnything(bad, good);
        }
    }
}

TEST(HostileSymbolFile, RandomChangesAreHarmless) {
    Bytes const good = fullFile();
    std::mt19937 random(987654);
    std::uniform_int_distribution<std::size_t> place(0, good.size() - 1);
    std::uniform_int_distribution<int> count(1, 8);
    std::uniform_int_distribution<unsigned> value(0, 255);
    for (int round = 0; round < 4000; ++round) {
        Bytes bad = good;
        for (int i = count(random); i > 0; --i) {
            bad[place(random)] = static_cast<unsigned char>(value(random));
        }
        parseAnything(bad, good);
    }
}

TEST(HostileSymbolFile, RandomBytesBehindAGoodHeaderAreHarmless) {
    Bytes const good = fullFile();
    std::mt19937 random(13579);
    std::uniform_int_distribution<std::size_t> length(0, 300);
    std::uniform_int_distribution<unsigned> value(0, 255);
    for (int round = 0; round < 2000; ++round) {
        SdbBytes file;
        file.fileHeader().section(2, 100, value(random) % 4);
        for (std::size_t i = length(random); i > 0; --i) {
            file.byte(value(random) % 3 == 0 ? value(random) : value(random) % 6);
        }
        parseAnything(file.bytes(), good);
    }
}

TEST(HostileSymbolFile, OverlappingRecordsDoNotMultiplyTheMemory) {
    // Each of the many records claims the longest possible name, which consists of all the records after it.
    SdbBytes file = SdbBytes::withInt();
    constexpr std::uint32_t kCount = 20000;
    file.section(3, 0x100000, kCount);
    for (std::uint32_t i = 0; i < kCount; ++i) {
        file.variableRecord(5, 26, 0, 0, 0, 0xFFFF);
    }
    RtsSym table(1);
    SymbolListTag list;
    parse(table, file.bytes(), list);
    EXPECT_LE(walk(list), file.bytes().size() + std::size_t{8} * kCount) << "names of more bytes than the file has";
}

} // namespace
