#include "symbols/RtsSym.h"
#include "tests/support/AllocationGate.h"
#include "tests/support/TempDir.h"
#include "tests/symbols/SdbBytes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace _VELK;
using velktest::AllocationGate;

velktest::Bytes fileWithVariables(std::uint32_t count) {
    SdbBytes file;
    file.fileHeader(5).section(2, 500, 2).arrayType("ARRAY OF INT", 20, 1).simpleType("INT", 3, 2);
    file.section(3, 0x100000, count);
    for (std::uint32_t i = 0; i < count; ++i) {
        file.variable("PLC_PRG.Value" + std::to_string(i), i % 2, 0, i);
    }
    return file.bytes();
}

struct SymbolMemory : testing::Test {
    explicit SymbolMemory() { directory.Put("good.sdb", fileWithVariables(300)); }
    velktest::TempDir directory;
};

TEST_F(SymbolMemory, LoadSurvivesTheRefusalOfAnyAllocation) {
    std::string const path = directory.Path("good.sdb");
    RtsSym table(2);
    for (std::size_t refused = 1;; ++refused) {
        ASSERT_LT(refused, 10000U);
        std::uint32_t projectId = 77;
        short result = -1;
        bool wasRefused = false;
        {
            AllocationGate const gate(refused, true);
            result = table.SymLoadSymbolsFromFile(1, path.c_str(), &projectId);
            wasRefused = AllocationGate::Refused();
        }
        if (!wasRefused) {
            EXPECT_EQ(result, 1);
            break;
        }
        EXPECT_EQ(result, 0) << refused;
        EXPECT_EQ(projectId, 77U) << refused;
        EXPECT_FALSE(table.SymIsActive(1)) << refused;
        EXPECT_EQ(table.SymGetSymbol("PLC_PRG.Value0"), nullptr) << refused;
        EXPECT_EQ(velktest::OpenHandles(path), 0) << refused;
    }
    EXPECT_NE(table.SymGetSymbol("plc_prg.value299"), nullptr);
}

TEST_F(SymbolMemory, SingleRefusedAllocationIsAFailureToo) {
    std::string const path = directory.Path("good.sdb");
    for (std::size_t refused = 1;; ++refused) {
        ASSERT_LT(refused, 10000U);
        RtsSym table(1);
        short result = -1;
        bool wasRefused = false;
        {
            AllocationGate const gate(refused);
            result = table.SymLoadSymbolsFromFile(0, path.c_str(), nullptr);
            wasRefused = AllocationGate::Refused();
        }
        // A load may succeed although an allocation fails, but then it must be a real success.
        if (result == 1) {
            EXPECT_NE(table.SymGetSymbol("PLC_PRG.Value0"), nullptr) << refused;
            EXPECT_NE(table.SymGetSymbol("PLC_PRG.Value299"), nullptr) << refused;
        } else {
            EXPECT_EQ(table.SymGetSymbol("PLC_PRG.Value0"), nullptr) << refused;
        }
        EXPECT_EQ(table.SymLoadSymbolsFromFile(0, path.c_str(), nullptr), 1) << refused;
        if (!wasRefused) {
            break;
        }
    }
}

TEST_F(SymbolMemory, NamesAreRefusedWhenTheirMemoryIs) {
    for (std::size_t refused = 1; refused < 200; ++refused) {
        RtsHashTag index(10, true);
        AllocationGate const gate(refused, true);
        bool missing = false;
        for (int i = 0; i < 100; ++i) {
            char const key[] = {static_cast<char>('a' + i % 26), static_cast<char>('0' + i / 26), '\0'};
            bool const added = RtsSym::UtlHashAdd(&index, key, nullptr);
            EXPECT_EQ(RtsSym::UtlHashGet(&index, key) != nullptr, added) << refused << ' ' << key;
            missing = missing || !added;
        }
        EXPECT_EQ(missing, AllocationGate::Refused()) << refused;
        if (!missing) {
            break;
        }
    }
}

TEST_F(SymbolMemory, HostileCountsAskForNoMemoryWorthMentioning) {
    SdbBytes types;
    types.fileHeader().section(2, 38, 0xFFFFFFFF).simpleType("INT", 3, 2);
    SdbBytes variables = SdbBytes::withInt();
    variables.section(3, 500, 0xFFFFFFFF).variable("a");
    for (SdbBytes const& file : {types, variables}) {
        OpenFile const open = openFile(file.bytes());
        RtsSym const table(1);
        SymbolListTag list;
        AllocationGate const gate;
        EXPECT_EQ(table.SymParseBinaryFile(open.get(), &list), 0);
        EXPECT_LT(AllocationGate::Seen(), 50U);
    }
}

std::size_t allocationsOfALoad(velktest::TempDir const& directory, std::uint32_t count) {
    directory.Put("counted.sdb", fileWithVariables(count));
    std::string const path = directory.Path("counted.sdb");
    RtsSym table(1);
    AllocationGate const gate;
    EXPECT_EQ(table.SymLoadSymbolsFromFile(0, path.c_str(), nullptr), 1);
    return AllocationGate::Seen();
}

TEST_F(SymbolMemory, NumberOfAllocationsGrowsNoFasterThanTheNumberOfSymbols) {
    std::size_t const few = allocationsOfALoad(directory, 2000);
    std::size_t const many = allocationsOfALoad(directory, 20000);
    EXPECT_LE(many, 10 * few);
    EXPECT_LE(many, 5U * 20000U);
}

TEST_F(SymbolMemory, LookingUpNeedsNoMemory) {
    RtsSym table(1);
    ASSERT_EQ(table.SymLoadSymbolsFromFile(0, directory.Path("good.sdb").c_str(), nullptr), 1);
    AllocationGate const gate;
    EXPECT_NE(table.SymGetSymbol("PLC_PRG.VALUE17"), nullptr);
    EXPECT_EQ(table.SymGetSymbol("PLC_PRG.VALUE300"), nullptr);
    EXPECT_EQ(AllocationGate::Seen(), 0U);
}

} // namespace
