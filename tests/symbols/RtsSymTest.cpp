#include "symbols/RtsSym.h"

#include "tests/support/Cancellation.h"
#include "tests/support/TempDir.h"
#include "tests/symbols/SdbBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace _VELK;

constexpr std::uint32_t kUntouched = 0xDEADBEEF;

int yieldCount = 0;

void countYield() {
    ++yieldCount;
}

/** A file with the given variables of type INT, at the offsets 0, 2, 4 and so on of area 1. */
velktest::Bytes fileWith(std::vector<std::string> const& names, std::uint32_t projectId = 0x11223344) {
    SdbBytes file;
    file.fileHeader(projectId).section(2, 38, 1).simpleType("INT", 3, 2);
    file.section(3, 0x1000, static_cast<std::uint32_t>(names.size()));
    std::uint32_t offset = 0;
    for (auto const& name : names) {
        file.variable(name, 0, 1, offset);
        offset += 2;
    }
    return file.bytes();
}

/** A file that is corrupted after its first variable. */
velktest::Bytes corruptedFile() {
    SdbBytes file = SdbBytes::withInt();
    return file.section(3, 500, 2).variable("Half").hex("05 00 00 00").bytes();
}

struct Table : testing::Test {
    /** Writes the bytes to a file and loads it; -1 as identifier pointer means that none is requested. */
    short load(std::uint16_t node, velktest::Bytes const& bytes) {
        directory.Put("test.sdb", bytes);
        projectId = kUntouched;
        return table.SymLoadSymbolsFromFile(node, directory.Path("test.sdb").c_str(), &projectId);
    }

    void expectNoSymbols() {
        EXPECT_EQ(table.SymGetSymbol("a"), nullptr);
        EXPECT_EQ(table.SymGetSymbol("Half"), nullptr);
        EXPECT_EQ(table.SymGetSymbol(""), nullptr);
        EXPECT_EQ(table.symbols().loaded, 0);
        EXPECT_EQ(table.symbols().index, nullptr);
    }

    velktest::TempDir directory;
    RtsSym table{257};
    std::uint32_t projectId = kUntouched;
};

// --- flags ---

TEST_F(Table, NewOneIsEmptyAndActiveForNobody) {
    expectNoSymbols();
    EXPECT_EQ(table.symbols().count, 0U);
    for (std::uint16_t node = 0; node < 300; ++node) {
        EXPECT_FALSE(table.SymIsActive(node)) << node;
    }
}

TEST_F(Table, FlagsBelongToTheirNode) {
    table.SetSymIsActive(0);
    table.SetSymIsActive(256);
    EXPECT_TRUE(table.SymIsActive(0));
    EXPECT_FALSE(table.SymIsActive(1));
    EXPECT_FALSE(table.SymIsActive(255));
    EXPECT_TRUE(table.SymIsActive(256));
    table.ResetSymIsActive(256);
    EXPECT_TRUE(table.SymIsActive(0));
    EXPECT_FALSE(table.SymIsActive(256));
    table.SetSymIsActive(0);
    EXPECT_TRUE(table.SymIsActive(0));
}

TEST_F(Table, NodesOutOfRangeAreIgnored) {
    for (std::uint16_t const node : std::vector<std::uint16_t>{257, 300, 512, 65535}) {
        table.SetSymIsActive(node);
        EXPECT_FALSE(table.SymIsActive(node)) << node;
        table.ResetSymIsActive(node);
    }
    for (std::uint16_t node = 0; node < 257; ++node) {
        EXPECT_FALSE(table.SymIsActive(node)) << node;
    }
}

TEST_F(Table, TableForNoNodesKnowsNone) {
    for (int const count : {0, -1}) {
        RtsSym none(count);
        none.SetSymIsActive(0);
        EXPECT_FALSE(none.SymIsActive(0));
        directory.Put("test.sdb", fileWith({"a"}));
        EXPECT_EQ(none.SymLoadSymbolsFromFile(0, directory.Path("test.sdb").c_str(), nullptr), 0);
        none.SymExit();
    }
}

// --- a successful load ---

TEST_F(Table, LoadMakesTheSymbolsFindable) {
    ASSERT_EQ(load(3, fileWith({"Main.Counter", "Main.Level"}, 0xCAFE1234)), 1);
    EXPECT_EQ(projectId, 0xCAFE1234U);
    EXPECT_EQ(table.symbols().count, 2U);
    EXPECT_EQ(table.symbols().loaded, 1);
    EXPECT_EQ(table.symbols().projectId, 0xCAFE1234U);
    EXPECT_TRUE(table.SymIsActive(3));
    Symbol const* const symbol = table.SymGetSymbol("Main.Level");
    ASSERT_NE(symbol, nullptr);
    EXPECT_EQ(symbol, &table.symbols().all()[1]);
    EXPECT_STREQ(symbol->name, "Main.Level");
    EXPECT_STREQ(symbol->typeName, "INT");
    EXPECT_EQ(symbol->area, 1U);
    EXPECT_EQ(symbol->offset, 2U);
    EXPECT_EQ(symbol->size, 2U);
    EXPECT_EQ(table.SymGetSymbol("Main.Level2"), nullptr);
    EXPECT_EQ(table.SymGetSymbol("Main.Leve"), nullptr);
    EXPECT_EQ(table.SymGetSymbol(nullptr), nullptr);
}

TEST_F(Table, ProjectIdentifierNeedNotBeWanted) {
    directory.Put("test.sdb", fileWith({"a"}));
    EXPECT_EQ(table.SymLoadSymbolsFromFile(0, directory.Path("test.sdb").c_str(), nullptr), 1);
    EXPECT_NE(table.SymGetSymbol("a"), nullptr);
}

TEST_F(Table, OnlyTheLoadingNodesFlagIsSet) {
    ASSERT_EQ(load(256, fileWith({"a"})), 1);
    for (std::uint16_t node = 0; node < 256; ++node) {
        EXPECT_FALSE(table.SymIsActive(node)) << node;
    }
    EXPECT_TRUE(table.SymIsActive(256));
}

TEST_F(Table, NamesThatDifferOnlyInCaseAreOneAndTheFirstIsFound) {
    ASSERT_EQ(load(0, fileWith({"other", "Main.Counter", "MAIN.COUNTER"})), 1);
    EXPECT_EQ(table.symbols().count, 3U);
    for (char const* const name : {"Main.Counter", "MAIN.COUNTER", "main.counter"}) {
        ASSERT_NE(table.SymGetSymbol(name), nullptr) << name;
        EXPECT_EQ(table.SymGetSymbol(name), &table.symbols().all()[1]) << name;
    }
}

TEST_F(Table, IndexHasOneAndAHalfBucketsForEachSymbolAndKeepsTheListsNames) {
    ASSERT_EQ(load(0, fileWith({"a"})), 1);
    EXPECT_EQ(table.symbols().index->bucketCount(), 1);
    ASSERT_EQ(load(0, fileWith({"a", "b"})), 1);
    EXPECT_EQ(table.symbols().index->bucketCount(), 3);
    ASSERT_EQ(load(0, fileWith({"a", "b", "c"})), 1);
    EXPECT_EQ(table.symbols().index->bucketCount(), 4);
    EXPECT_FALSE(table.symbols().index->copiesKeys());
    // a is 65, b 66, c 67: buckets 1, 2 and 3 of 4.
    ASSERT_NE(table.symbols().index->chain(1), nullptr);
    EXPECT_EQ(table.symbols().index->chain(0), nullptr);
    EXPECT_EQ(table.symbols().index->chain(1)->key, table.symbols().all()[0].name);
    EXPECT_EQ(table.symbols().index->chain(2)->key, table.symbols().all()[1].name);
    EXPECT_EQ(table.symbols().index->chain(3)->key, table.symbols().all()[2].name);
    EXPECT_EQ(table.symbols().index->chain(3)->value, &table.symbols().all()[2]);
}

TEST_F(Table, SymbolsOfOneBucketAreChainedInTheOrderOfTheFile) {
    ASSERT_EQ(load(0, fileWith({"ba", "ab", "x", "AB"})), 1);
    RtsHashNode const* const first = table.symbols().index->chain(131 % 6);
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first->key, "ba");
    ASSERT_NE(first->next, nullptr);
    EXPECT_STREQ(first->next->key, "ab");
    EXPECT_EQ(first->next->next, nullptr);
}

TEST_F(Table, PlaceholderIsFoundUnderTheEmptyName) {
    SdbBytes file = SdbBytes::withInt();
    file.section(3, 500, 3).variable("a").variableRecord(6, 26, 0, 0, 0, 0).variableRecord(7, 26, 0, 0, 0, 0);
    ASSERT_EQ(load(0, file.bytes()), 1);
    EXPECT_EQ(table.SymGetSymbol(""), &table.symbols().all()[1]);
}

TEST_F(Table, LoadForAnotherNodeReplacesTheSymbolsButKeepsTheOtherFlags) {
    ASSERT_EQ(load(1, fileWith({"a", "common"}, 1)), 1);
    ASSERT_EQ(load(2, fileWith({"b", "x", "common"}, 2)), 1);
    EXPECT_EQ(table.SymGetSymbol("a"), nullptr);
    ASSERT_NE(table.SymGetSymbol("b"), nullptr);
    ASSERT_NE(table.SymGetSymbol("common"), nullptr);
    EXPECT_EQ(table.SymGetSymbol("common")->offset, 4U);
    EXPECT_EQ(table.symbols().projectId, 2U);
    EXPECT_TRUE(table.SymIsActive(1));
    EXPECT_TRUE(table.SymIsActive(2));
}

TEST_F(Table, LoadClosesItsFile) {
    ASSERT_EQ(load(0, fileWith({"a"})), 1);
    EXPECT_EQ(velktest::OpenHandles(directory.Path("test.sdb")), 0);
    EXPECT_EQ(load(0, corruptedFile()), 0);
    EXPECT_EQ(velktest::OpenHandles(directory.Path("test.sdb")), 0);
    EXPECT_EQ(load(0, fileWith({})), 0);
    EXPECT_EQ(velktest::OpenHandles(directory.Path("test.sdb")), 0);
}

// --- a failed load ---

TEST_F(Table, UnknownNodeLeavesEverythingAsItWas) {
    ASSERT_EQ(load(1, fileWith({"a"})), 1);
    for (std::uint16_t const node : std::vector<std::uint16_t>{257, 300, 65535}) {
        EXPECT_EQ(load(node, fileWith({"b"})), 0) << node;
        EXPECT_EQ(projectId, kUntouched);
        EXPECT_FALSE(table.SymIsActive(node));
    }
    EXPECT_NE(table.SymGetSymbol("a"), nullptr);
    EXPECT_TRUE(table.SymIsActive(1));
}

TEST_F(Table, FileThatCannotBeOpenedLeavesEverythingAsItWas) {
    ASSERT_EQ(load(1, fileWith({"a"}, 7)), 1);
    projectId = kUntouched;
    EXPECT_EQ(table.SymLoadSymbolsFromFile(1, directory.Path("missing.sdb").c_str(), &projectId), 0);
    EXPECT_EQ(table.SymLoadSymbolsFromFile(2, "", &projectId), 0);
    EXPECT_EQ(projectId, kUntouched);
    EXPECT_NE(table.SymGetSymbol("a"), nullptr);
    EXPECT_EQ(table.symbols().loaded, 1);
    EXPECT_EQ(table.symbols().projectId, 7U);
    EXPECT_TRUE(table.SymIsActive(1));
    EXPECT_FALSE(table.SymIsActive(2));
}

TEST_F(Table, CorruptedFileLeavesNoNameAndResetsTheFlagOfItsNodeOnly) {
    ASSERT_EQ(load(1, fileWith({"a"})), 1);
    ASSERT_EQ(load(2, fileWith({"a"})), 1);
    EXPECT_EQ(load(1, corruptedFile()), 0);
    EXPECT_EQ(projectId, kUntouched);
    expectNoSymbols();
    EXPECT_FALSE(table.SymIsActive(1));
    EXPECT_TRUE(table.SymIsActive(2));
    ASSERT_EQ(load(1, fileWith({"a"})), 1);
    EXPECT_NE(table.SymGetSymbol("a"), nullptr);
    EXPECT_TRUE(table.SymIsActive(1));
}

TEST_F(Table, FileWithoutVariablesFailsToLoad) {
    ASSERT_EQ(load(1, fileWith({"a"})), 1);
    EXPECT_EQ(load(1, fileWith({})), 0);
    EXPECT_EQ(projectId, kUntouched);
    expectNoSymbols();
    EXPECT_FALSE(table.SymIsActive(1));
}

TEST_F(Table, EmptyFileFailsToLoad) {
    EXPECT_EQ(load(1, {}), 0);
    expectNoSymbols();
    EXPECT_FALSE(table.SymIsActive(1));
}

TEST_F(Table, DirectoryFailsToLoad) {
    EXPECT_EQ(table.SymLoadSymbolsFromFile(1, directory.Path().c_str(), &projectId), 0);
    EXPECT_EQ(projectId, kUntouched);
    expectNoSymbols();
}

// --- clearing ---

TEST_F(Table, ClearingReleasesTheSymbolsAndResetsTheFlagOfOneNode) {
    ASSERT_EQ(load(1, fileWith({"a"})), 1);
    ASSERT_EQ(load(2, fileWith({"a", "b"})), 1);
    // The table's own list can be cleared only through a load or the end; the rest is shown with the caller's own list.
    SymbolListTag list;
    OpenFile const open = openFile(fileWith({"x"}));
    ASSERT_EQ(table.SymParseBinaryFile(open.get(), &list), 1);
    list.loaded = 1;
    list.index = std::make_unique<RtsHashTag>(1, false);
    table.SymClearSymbolList(2, &list);
    EXPECT_EQ(list.count, 0U);
    EXPECT_EQ(list.loaded, 0);
    EXPECT_EQ(list.symbols, nullptr);
    EXPECT_EQ(list.index, nullptr);
    EXPECT_TRUE(list.all().empty());
    EXPECT_TRUE(table.SymIsActive(1));
    EXPECT_FALSE(table.SymIsActive(2));
    EXPECT_NE(table.SymGetSymbol("b"), nullptr);
}

TEST_F(Table, ClearingForAnUnknownNodeStillReleasesTheSymbols) {
    SymbolListTag list;
    OpenFile const open = openFile(fileWith({"x"}));
    ASSERT_EQ(table.SymParseBinaryFile(open.get(), &list), 1);
    table.SetSymIsActive(256);
    table.SymClearSymbolList(300, &list);
    EXPECT_EQ(list.count, 0U);
    EXPECT_TRUE(table.SymIsActive(256));
}

TEST_F(Table, ClearingAnEmptyListIsHarmless) {
    SymbolListTag list;
    table.SymClearSymbolList(0, &list);
    table.SymClearSymbolList(0, &list);
    table.SymClearSymbolList(0, nullptr);
    EXPECT_EQ(list.count, 0U);
}

TEST_F(Table, ExitClearsTheSymbolsAndTheFlagsOfAllNodes) {
    ASSERT_EQ(load(0, fileWith({"a"})), 1);
    ASSERT_EQ(load(256, fileWith({"a"})), 1);
    table.SymExit();
    expectNoSymbols();
    EXPECT_EQ(table.symbols().count, 0U);
    EXPECT_FALSE(table.SymIsActive(0));
    EXPECT_FALSE(table.SymIsActive(256));
    table.SymExit();
    ASSERT_EQ(load(0, fileWith({"a"})), 1);
    EXPECT_NE(table.SymGetSymbol("a"), nullptr);
}

// --- yields ---

int yieldsOfALoad(velktest::TempDir const& directory, std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i) {
        names.push_back("v" + std::to_string(i));
    }
    directory.Put("yield.sdb", fileWith(names));
    RtsSym table(1, countYield);
    yieldCount = 0;
    EXPECT_EQ(table.SymLoadSymbolsFromFile(0, directory.Path("yield.sdb").c_str(), nullptr), 1);
    return yieldCount;
}

TEST_F(Table, LoadYieldsAfterEveryHundredthRecordAndEverySecondIndexedSymbol) {
    EXPECT_EQ(yieldsOfALoad(directory, 1), 1);
    EXPECT_EQ(yieldsOfALoad(directory, 2), 2);
    EXPECT_EQ(yieldsOfALoad(directory, 3), 2);
    EXPECT_EQ(yieldsOfALoad(directory, 4), 3);
    EXPECT_EQ(yieldsOfALoad(directory, 100), 51);
    EXPECT_EQ(yieldsOfALoad(directory, 101), 52);
    EXPECT_EQ(yieldsOfALoad(directory, 1000), 510);
}

TEST_F(Table, SymbolsThatAreNotIndexedYieldAllTheSame) {
    directory.Put("yield.sdb", fileWith({"a", "A", "a", "A"}));
    RtsSym counting(1, countYield);
    yieldCount = 0;
    ASSERT_EQ(counting.SymLoadSymbolsFromFile(0, directory.Path("yield.sdb").c_str(), nullptr), 1);
    EXPECT_EQ(yieldCount, 1 + 2);
}

TEST_F(Table, LoadWithoutASchedulerSucceeds) {
    yieldCount = 0;
    EXPECT_EQ(load(0, fileWith({"a", "b", "c"})), 1);
    EXPECT_EQ(yieldCount, 0);
}

/** The yields of a load of four symbols: one after the first variable record, two while they are indexed. */
constexpr int kYieldsOfFour = 3;

int yieldsUntilTrouble = 0;

struct HostTrouble {};

TEST_F(Table, WhatTheHostThrowsInAYieldFailsTheLoadAndPassesThrough) {
    directory.Put("yield.sdb", fileWith({"a", "b", "c", "d"}));
    std::string const path = directory.Path("yield.sdb");
    for (int yields = 1; yields <= kYieldsOfFour; ++yields) {
        RtsSym throwing(1, [] {
            if (--yieldsUntilTrouble == 0) {
                throw HostTrouble{};
            }
        });
        yieldsUntilTrouble = yields;
        EXPECT_THROW(throwing.SymLoadSymbolsFromFile(0, path.c_str(), nullptr), HostTrouble) << yields;
        EXPECT_FALSE(throwing.SymIsActive(0)) << yields;
        EXPECT_EQ(throwing.SymGetSymbol("a"), nullptr) << yields;
        EXPECT_EQ(velktest::OpenHandles(path), 0) << yields;
        EXPECT_EQ(throwing.SymLoadSymbolsFromFile(0, path.c_str(), nullptr), 1) << yields;
        EXPECT_NE(throwing.SymGetSymbol("d"), nullptr) << yields;
    }
}

TEST_F(Table, ThreadThatIsCancelledInAYieldEndsAndLeavesAUsableTable) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    directory.Put("yield.sdb", fileWith({"a", "b", "c", "d"}));
    std::string const path = directory.Path("yield.sdb");
    for (int yields = 1; yields <= kYieldsOfFour; ++yields) {
        RtsSym cancelled(1, [] {
            if (--yieldsUntilTrouble == 0) {
                velktest::CancelThisThread();
            }
        });
        yieldsUntilTrouble = yields;
        EXPECT_TRUE(velktest::IsCancelledIn([&] { cancelled.SymLoadSymbolsFromFile(0, path.c_str(), nullptr); }));
        EXPECT_FALSE(cancelled.SymIsActive(0)) << yields;
        EXPECT_EQ(velktest::OpenHandles(path), 0) << yields;
        EXPECT_EQ(cancelled.SymLoadSymbolsFromFile(0, path.c_str(), nullptr), 1) << yields;
        EXPECT_NE(cancelled.SymGetSymbol("d"), nullptr) << yields;
    }
}

/** An open file whose first read ends the thread, as a cancelled thread ends when it reads a file. */
struct CancellingFile {
    explicit CancellingFile(velktest::Bytes content) : bytes(std::move(content)) {}

    OpenFile open() {
        return OpenFile(fopencookie(this, "rb", {.read = &read, .write = nullptr, .seek = &seek, .close = nullptr}));
    }

    static ssize_t read(void* cookie, char* buffer, std::size_t size) {
        auto& file = *static_cast<CancellingFile*>(cookie);
        if (std::exchange(file.cancels, false)) {
            velktest::CancelThisThread();
        }
        std::size_t const count = std::min(size, file.bytes.size() - file.position);
        std::copy_n(&file.bytes[file.position], count, buffer);
        file.position += count;
        return static_cast<ssize_t>(count);
    }

    static int seek(void* cookie, off64_t* offset, int whence) {
        auto& file = *static_cast<CancellingFile*>(cookie);
        std::size_t const origin = whence == SEEK_END ? file.bytes.size() : whence == SEEK_CUR ? file.position : 0;
        file.position = origin + static_cast<std::size_t>(*offset);
        *offset = static_cast<off64_t>(file.position);
        return 0;
    }

    velktest::Bytes bytes;
    std::size_t position = 0;
    bool cancels = true;
};

TEST_F(Table, ThreadThatIsCancelledWhileItReadsTheFileEnds) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    CancellingFile file(fileWith({"a", "b"}));
    OpenFile const open = file.open();
    ASSERT_NE(open, nullptr);
    SymbolListTag list;
    EXPECT_TRUE(velktest::IsCancelledIn([&] { table.SymParseBinaryFile(open.get(), &list); }));
    table.SymClearSymbolList(0, &list);
    EXPECT_EQ(table.SymParseBinaryFile(open.get(), &list), 1);
    EXPECT_EQ(list.count, 2U);
}

// --- large tables ---

TEST_F(Table, TensOfThousandsOfSimilarNamesAreAllFound) {
    constexpr std::uint32_t kCount = 60000;
    std::vector<std::string> names;
    for (std::uint32_t i = 0; i < kCount; ++i) {
        names.push_back("APPLICATION.GVL_Plant.stStation[" + std::to_string(i / 100) + "].rValue" +
                        std::to_string(i % 100));
    }
    ASSERT_EQ(load(0, fileWith(names)), 1);
    EXPECT_EQ(table.symbols().count, kCount);
    EXPECT_EQ(table.symbols().index->bucketCount(), 90000);
    for (std::uint32_t i = 0; i < kCount; ++i) {
        Symbol const* const symbol = table.SymGetSymbol(names[i].c_str());
        ASSERT_NE(symbol, nullptr) << names[i];
        ASSERT_EQ(symbol->offset, 2 * i) << names[i];
    }
}

// --- the default files ---

/** Makes a separate directory the current one for one test. */
struct DefaultFile : Table {
    DefaultFile() { std::filesystem::current_path(directory.Path()); }
    ~DefaultFile() override { std::filesystem::current_path(before); }
    DefaultFile(DefaultFile const&) = delete;
    DefaultFile& operator=(DefaultFile const&) = delete;

    short loadDefault() { return table.SymLoadSymbolsFromFile(0, nullptr, &projectId); }

    std::filesystem::path before = std::filesystem::current_path();
};

TEST_F(DefaultFile, IsSymbolsSdbWhenThatCanBeOpened) {
    directory.Put("Symbols.sdb", fileWith({"a"}, 1));
    directory.Put("DOWNLOAD.SDB", fileWith({"b"}, 2));
    EXPECT_EQ(loadDefault(), 1);
    EXPECT_EQ(projectId, 1U);
    EXPECT_NE(table.SymGetSymbol("a"), nullptr);
    EXPECT_EQ(table.SymGetSymbol("b"), nullptr);
}

TEST_F(DefaultFile, IsDownloadSdbWhenSymbolsSdbIsMissing) {
    directory.Put("DOWNLOAD.SDB", fileWith({"b"}, 2));
    EXPECT_EQ(loadDefault(), 1);
    EXPECT_EQ(projectId, 2U);
    EXPECT_NE(table.SymGetSymbol("b"), nullptr);
}

TEST_F(DefaultFile, CorruptedSymbolsSdbIsNotReplacedByDownloadSdb) {
    directory.Put("Symbols.sdb", corruptedFile());
    directory.Put("DOWNLOAD.SDB", fileWith({"b"}, 2));
    EXPECT_EQ(loadDefault(), 0);
    EXPECT_EQ(projectId, kUntouched);
    expectNoSymbols();
}

TEST_F(DefaultFile, WithoutEitherTheTableStaysAsItWas) {
    ASSERT_EQ(load(0, fileWith({"a"})), 1);
    projectId = kUntouched;
    EXPECT_EQ(loadDefault(), 0);
    EXPECT_EQ(projectId, kUntouched);
    EXPECT_NE(table.SymGetSymbol("a"), nullptr);
    EXPECT_TRUE(table.SymIsActive(0));
}

TEST_F(DefaultFile, NamesCountTheirCase) {
    directory.Put("symbols.sdb", fileWith({"a"}, 1));
    directory.Put("download.sdb", fileWith({"b"}, 2));
    EXPECT_EQ(loadDefault(), 0);
}

TEST_F(DefaultFile, LeavesNoFileOpen) {
    directory.Put("Symbols.sdb", fileWith({"a"}, 1));
    EXPECT_EQ(loadDefault(), 1);
    EXPECT_EQ(velktest::OpenHandles(directory.Path("Symbols.sdb")), 0);
}

} // namespace
