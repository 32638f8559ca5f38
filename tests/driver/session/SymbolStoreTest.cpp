#include "driver/session/SymbolStore.h"

#include "driver/config/MemoryModels.h"
#include "driver/tag/TagServices.h"
#include "driver/tag/Tag_VELK.h"
#include "protlib/protocol/HostServiceVariables.h"
#include "tests/support/ConfigText.h"
#include "tests/support/FakeHost.h"
#include "tests/support/RecordedErrors.h"
#include "tests/support/SymbolFileBytes.h"
#include "tests/support/TempDir.h"

#include <filesystem>
#include <memory>
#include <string>

/** The driver's knowledge of the nodes' variables, from a folder of files; nothing is exchanged here. */
namespace {

using namespace velktest;
using _VELK::StoredFile;
using _VELK::SymbolStore;

class SymbolStoreTest : public ::testing::Test {
protected:
    SymbolStoreTest() {
        _VELK::registerModels(memory);
        EXPECT_TRUE(params.parse(ConfigText().Build().c_str()));
    }

    /** The file of a node in the test's folder, whether it exists or not. */
    StoredFile FileOf(int node) const {
        StoredFile file;
        file.node = static_cast<std::uint16_t>(node);
        std::string const path = dir.Path(std::to_string(node) + ".sdb");
        path.copy(file.path.data(), file.path.size() - 1);
        return file;
    }
    void Put(int node, SymbolFileBytes const& bytes) const { dir.Put(std::to_string(node) + ".sdb", bytes.Build()); }

    Tag_VELK MakeTag(std::string const& address) const { return Tag_VELK(address.c_str(), {params, memory}); }

    /** Does what a read or write does for one tag of @p node. */
    bool Bind(Tag_VELK const& tag, int node) {
        ITag const* const tags[] = {&tag};
        return store.areReady(FileOf(node)) && store.provideTable(FileOf(node), tags) && store.bind(tag, node);
    }

    TempDir dir;
    _VELK::ParamManager params;
    MemoryManager memory;
    RecordedErrors errors;
    SymbolStore store{errors.sink};
};

TEST_F(SymbolStoreTest, StoredFileMakesANodesSymbolsReady) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    EXPECT_TRUE(store.areReady(FileOf(1)));
    EXPECT_EQ(store.projectIdentifier(1), 7U);
    EXPECT_EQ(store.projectIdentifier(2), 0U);
    errors.Expect(1, "");
}

TEST_F(SymbolStoreTest, LoadedOnceIsReadyWithoutItsFile) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    ASSERT_TRUE(store.areReady(FileOf(1)));
    std::filesystem::remove(dir.Path("1.sdb"));
    EXPECT_TRUE(store.areReady(FileOf(1)));
}

TEST_F(SymbolStoreTest, FileThatIsNotThereHasToBeFetched) {
    EXPECT_FALSE(store.areReady(FileOf(1)));
    errors.Expect(-6, "Symbol file is corrupted");
    EXPECT_FALSE(errors.sink.hasCommunicationFault());
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    EXPECT_TRUE(store.takeFetched(FileOf(1), true));
    EXPECT_EQ(store.projectIdentifier(1), 7U);
}

TEST_F(SymbolStoreTest, FailedFetchWithoutADeclaredProjectIsAFault) {
    EXPECT_FALSE(store.takeFetched(FileOf(1), false));
    errors.Expect(-6, "Symbol file not present");
    EXPECT_TRUE(errors.sink.hasCommunicationFault());
}

TEST_F(SymbolStoreTest, FetchedFileThatIsBrokenIsAFault) {
    dir.Put("1.sdb", Hex("00 01 02"));
    EXPECT_FALSE(store.takeFetched(FileOf(1), true));
    errors.Expect(-6, "Symbol file is corrupted");
    EXPECT_TRUE(errors.sink.hasCommunicationFault());
}

TEST_F(SymbolStoreTest, DeclaredProjectNeedsNoFile) {
    store.declareProject(1, 9);
    EXPECT_TRUE(store.areReady(FileOf(1)));
    EXPECT_EQ(store.projectIdentifier(1), 9U);
    EXPECT_EQ(store.confirmedProjectIdentifier(1), 9U);
    EXPECT_TRUE(store.usesDefaultAddresses(1));
}

TEST_F(SymbolStoreTest, NothingIsDeclaredWithoutAnIdentifierOrANode) {
    store.declareProject(1, 0);
    store.declareProject(-1, 9);
    store.declareProject(257, 9);
    EXPECT_FALSE(store.usesDefaultAddresses(1));
    EXPECT_EQ(store.projectIdentifier(-1), 0U);
    EXPECT_EQ(store.projectIdentifier(257), 0U);
    EXPECT_FALSE(store.usesDefaultAddresses(257));
}

TEST_F(SymbolStoreTest, DeclaredProjectThatThePlcDoesNotRunIsGivenUpWithoutAFetch) {
    store.declareProject(1, 9);
    EXPECT_FALSE(store.giveUpProject(1));
    EXPECT_EQ(store.projectIdentifier(1), 0U);
    EXPECT_FALSE(store.usesDefaultAddresses(1));
    EXPECT_FALSE(store.areReady(FileOf(1)));
}

TEST_F(SymbolStoreTest, DeclaredProjectIsTheWayOutWhenNoFileIsToBeHad) {
    store.declareProject(1, 9);
    ASSERT_FALSE(store.giveUpProject(1));
    EXPECT_TRUE(store.takeFetched(FileOf(1), false));
    EXPECT_TRUE(store.usesDefaultAddresses(1));
    EXPECT_EQ(store.projectIdentifier(1), 9U);
    EXPECT_FALSE(errors.sink.hasCommunicationFault());
}

TEST_F(SymbolStoreTest, LoadedProjectThatThePlcDoesNotRunIsFetchedAnew) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    ASSERT_TRUE(store.areReady(FileOf(1)));
    EXPECT_TRUE(store.giveUpProject(1));
    EXPECT_EQ(store.projectIdentifier(1), 0U);
    store.clearTable();
    Put(1, SymbolFileBytes(8).Variable("A", 0, 32));
    EXPECT_TRUE(store.areReady(FileOf(1)));
    EXPECT_EQ(store.projectIdentifier(1), 8U);
}

TEST_F(SymbolStoreTest, TagThatAnotherNodesFileLacksIsStillLookedUpInItsOwn) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    Put(2, SymbolFileBytes(7).Variable("B", 0, 32));
    Tag_VELK const tag = MakeTag("2?B?M?7?short");
    EXPECT_FALSE(Bind(tag, 1)) << "a list of node 1 that the tag does not belong to";
    ASSERT_TRUE(Bind(tag, 2));
    EXPECT_EQ(tag.index(), 32);
}

TEST_F(SymbolStoreTest, TagIsBoundAgainstItsOwnNodesFile) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    Put(2, SymbolFileBytes(7).Variable("A", 0, 200));
    Tag_VELK const one = MakeTag("1?A?M?0?short");
    Tag_VELK const two = MakeTag("2?A?M?0?short");
    Tag_VELK const late = MakeTag("1?A?M?0?short");
    ASSERT_TRUE(Bind(one, 1));
    ASSERT_TRUE(Bind(two, 2));
    ASSERT_TRUE(Bind(late, 1));
    EXPECT_EQ(one.index(), 16);
    EXPECT_EQ(two.index(), 200);
    EXPECT_EQ(late.index(), 16);
}

TEST_F(SymbolStoreTest, BoundTagsNeedNoTable) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    Put(2, SymbolFileBytes(7).Variable("A", 0, 200));
    Tag_VELK const one = MakeTag("1?A?M?0?short");
    ASSERT_TRUE(Bind(one, 1));
    ASSERT_TRUE(Bind(MakeTag("2?A?M?0?short"), 2));
    std::filesystem::remove(dir.Path("1.sdb"));
    EXPECT_TRUE(Bind(one, 1)) << "the file is not looked at";
}

TEST_F(SymbolStoreTest, LostFileOfANodeWhoseTableIsNeededIsAFault) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    Put(2, SymbolFileBytes(7).Variable("A", 0, 200));
    ASSERT_TRUE(store.areReady(FileOf(1)));
    ASSERT_TRUE(store.areReady(FileOf(2)));
    std::filesystem::remove(dir.Path("1.sdb"));
    EXPECT_FALSE(Bind(MakeTag("1?A?M?0?short"), 1));
    errors.Expect(-6, "Symbol file is corrupted");
    EXPECT_TRUE(errors.sink.hasCommunicationFault());
    EXPECT_EQ(store.projectIdentifier(1), 0U);
}

TEST_F(SymbolStoreTest, MissingVariableIsLookedUpOncePerFileOfItsNode) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    Put(2, SymbolFileBytes(7).Variable("A", 0, 200));
    Tag_VELK const missing = MakeTag("1?NO/SUCH?M?0?short");
    EXPECT_FALSE(Bind(missing, 1));
    ITag const* const tags[] = {&missing};
    // Other nodes' files, and the node's own file loaded again for another tag, cause no new search.
    ASSERT_TRUE(Bind(MakeTag("2?A?M?0?short"), 2));
    std::filesystem::rename(dir.Path("1.sdb"), dir.Path("aside"));
    EXPECT_TRUE(store.provideTable(FileOf(1), tags)) << "the file is not looked at";
    std::filesystem::rename(dir.Path("aside"), dir.Path("1.sdb"));
    ASSERT_TRUE(Bind(MakeTag("1?A?M?0?short"), 1));
    ASSERT_TRUE(Bind(MakeTag("2?A?M?0?short"), 2));
    std::filesystem::remove(dir.Path("1.sdb"));
    EXPECT_TRUE(store.provideTable(FileOf(1), tags)) << "nor now";
}

TEST_F(SymbolStoreTest, NewFileOfTheNodeIsSearchedForWhatTheOldOneLacked) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    Tag_VELK const tag = MakeTag("1?B?M?0?short");
    EXPECT_FALSE(Bind(tag, 1));
    ASSERT_TRUE(store.giveUpProject(1));
    store.clearTable();
    Put(1, SymbolFileBytes(7).Variable("B", 0, 64)); // the same identifier
    EXPECT_TRUE(Bind(tag, 1));
    EXPECT_EQ(tag.index(), 64);
}

TEST_F(SymbolStoreTest, OtherFileThatIsFoundWhenTheTableIsTakenBackIsSearchedToo) {
    Put(1, SymbolFileBytes(7).Variable("A", 0, 16));
    Put(2, SymbolFileBytes(7).Variable("A", 0, 200));
    Tag_VELK const tag = MakeTag("1?B?M?0?short");
    EXPECT_FALSE(Bind(tag, 1));
    ASSERT_TRUE(Bind(MakeTag("2?A?M?0?short"), 2));
    Put(1, SymbolFileBytes(8).Variable("A", 0, 32).Variable("B", 0, 64));
    Tag_VELK const other = MakeTag("1?A?M?0?short");
    EXPECT_TRUE(Bind(other, 1));
    EXPECT_EQ(other.index(), 32);
    EXPECT_EQ(store.projectIdentifier(1), 8U);
    EXPECT_TRUE(Bind(tag, 1));
    EXPECT_EQ(tag.index(), 64);
}

TEST_F(SymbolStoreTest, VariableThatTheDriverCannotAddressIsMissing) {
    Put(1, SymbolFileBytes(7).Variable("A", 9, 16));
    EXPECT_FALSE(Bind(MakeTag("1?A?M?0?short"), 1));
}

/** Gives the module the host's storage, or none, for one test. */
class StoredFileTest : public ::testing::Test {
protected:
    ~StoredFileTest() override { piPermanentStorage = nullptr; }
    FakeStorage storage;
};

TEST_F(StoredFileTest, LiesWhereTheHostSays) {
    piPermanentStorage = &storage;
    storage.directory = "/panel/files";
    StoredFile const file = _VELK::storedFileOf(256, "line 1");
    EXPECT_EQ(file.node, 256);
    EXPECT_STREQ(file.path.data(), "/panel/files/PLCSymbols_256.sdb");
    ASSERT_EQ(storage.asked.size(), 1U);
    EXPECT_EQ(storage.asked[0].first, "line 1");
    EXPECT_EQ(storage.lastSize, 260);
}

TEST_F(StoredFileTest, LiesInTheCurrentFolderWithoutStorage) {
    EXPECT_STREQ(_VELK::storedFileOf(1, "x").path.data(), "PLCSymbols_1.sdb");
    piPermanentStorage = &storage;
    storage.hasInterface2 = false;
    EXPECT_STREQ(_VELK::storedFileOf(1, "x").path.data(), "PLCSymbols_1.sdb");
    storage.hasInterface2 = true;
    storage.hasPaths = false;
    EXPECT_STREQ(_VELK::storedFileOf(1, "x").path.data(), "PLCSymbols_1.sdb");
}

TEST_F(StoredFileTest, PathWithoutItsEndIsCut) {
    piPermanentStorage = &storage;
    storage.unterminated = true;
    EXPECT_EQ(std::string(_VELK::storedFileOf(1, "x").path.data()), std::string(259, 'x'));
}

} // namespace
