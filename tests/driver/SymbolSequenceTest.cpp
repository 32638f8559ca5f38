#include "tests/support/AnsweringPort.h"
#include "tests/support/VelkTest.h"

#include <filesystem>
#include <string>

/** Where a node's symbols come from: the stored file, the PLC, or a declared project. */
namespace {

using namespace velktest;

class SymbolSequenceTest : public VelkTest {
protected:
    static Bytes FileOf(std::uint32_t id, std::uint32_t offset) {
        return SymbolFileBytes(id).Variable("A", 0, offset).Build();
    }

    /** A read of one short in area 0. */
    static Bytes ListAt(std::uint32_t offset, std::uint32_t id) {
        return Hex("2E 00 | 01 00 00 00 | 00 00") + Little(offset, 4) + Hex("02 00 00 00") + Little(id, 4);
    }
    static Bytes GoodReply() { return Hex("00 00 | 00 00 00 00 | 01 34 12"); }

    Conversation GoodRead(std::uint32_t offset, std::uint32_t id, bool login = true) {
        Conversation line = Intel();
        line.LinkCheck();
        if (login) {
            line.Login();
        }
        line.Exchange(ListAt(offset, id), GoodReply());
        return line;
    }

    void ExpectGoodRead(ITag* tag) {
        ReadOutcome const outcome = Read({tag});
        EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
        EXPECT_EQ(outcome.values, Hex("34 12"));
        EXPECT_EQ(outcome.status[0], 1);
    }
};

TEST_F(SymbolSequenceTest, StoredFileIsLoadedWithoutAskingThePlc) {
    ConfigureAndStart();
    Store(1, FileOf(0x0A0B0C0D, 0x1234));
    ITag* const tag = Tag("1?A?M?0?short");
    GoodRead(0x1234, 0x0A0B0C0D);
    ExpectGoodRead(tag);
    EXPECT_EQ(Symbols().projectIdentifier(1), 0x0A0B0C0DU);
    EXPECT_FALSE(HasFault());
}

TEST_F(SymbolSequenceTest, FileIsFetchedBetweenLoginAndList) {
    ConfigureAndStart();
    Bytes const file = FileOf(0x0A0B0C0D, 16);
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Upload(file).Exchange(ListAt(16, 0x0A0B0C0D), GoodReply());
    ExpectGoodRead(tag);
    EXPECT_EQ(dir.Get("PLCSymbols_1.sdb"), file);
    ExpectError(-6, "Symbol file is corrupted"); // about the missing stored file; success does not clear an error
    GoodRead(16, 0x0A0B0C0D, false);
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, FileIsFetchedInTheNodesByteOrder) {
    ConfigureAndStart(ConfigText().Set("model", "Motorola"));
    Bytes const file = FileOf(0x0A0B0C0D, 16);
    ITag* const tag = Tag("1?A?M?0?short");
    Motorola().LinkCheck().Login().Upload(file).Exchange(
        Hex("2E 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 00 02 | 0A 0B 0C 0D"),
        Hex("00 00 | 00 00 00 00 | 01 12 34"));
    ExpectGoodRead(tag);
    EXPECT_EQ(dir.Get("PLCSymbols_1.sdb"), file);
}

TEST_F(SymbolSequenceTest, CorruptedStoredFileIsFetchedAnew) {
    ConfigureAndStart();
    Store(1, Hex("01 00 00 00 10 00"));
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Upload(FileOf(7, 16)).Exchange(ListAt(16, 7), GoodReply());
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, StoredFileWithoutVariablesIsFetchedAnew) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(7).Build());
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Upload(FileOf(7, 16)).Exchange(ListAt(16, 7), GoodReply());
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, NoFileAnywhereFailsTheCall) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().RefusedUpload();
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Symbol file not present");
    EXPECT_TRUE(HasFault());
    EXPECT_FALSE(dir.Has("PLCSymbols_1.sdb"));
    EXPECT_EQ(Symbols().projectIdentifier(1), 0U);
}

TEST_F(SymbolSequenceTest, RefusedUploadKeepsTheLogin) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().RefusedUpload().LinkCheck().Upload(FileOf(7, 16)).Exchange(ListAt(16, 7), GoodReply());
    EXPECT_FALSE(Read({tag}).ok);
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, FifthRefusedUploadInARowForgetsTheLogin) {
    // A PLC that has restarted has no login, and refuses the file as it would refuse a list.
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    for (int call = 0; call < 5; ++call) {
        Conversation line = Intel();
        line.LinkCheck();
        if (call == 0) {
            line.Login();
        }
        line.RefusedUpload();
        EXPECT_FALSE(Read({tag}).ok);
        EXPECT_EQ(LoginState().isLoggedIn(), call < 4) << call;
    }
    Intel().LinkCheck().Login().Upload(FileOf(7, 16)).Exchange(ListAt(16, 7), GoodReply());
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, DeadUploadForgetsTheLogin) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().DeadUpload();
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Symbol file not present");
    EXPECT_FALSE(LoginState().isLoggedIn());
    EXPECT_EQ(LoginState().node(), 0U);
    Intel().LinkCheck().Login().Upload(FileOf(7, 16)).Exchange(ListAt(16, 7), GoodReply());
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, CorruptedFetchedFileFailsTheCall) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Upload(Hex("02 00 00 00"));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Symbol file is corrupted");
    EXPECT_TRUE(HasFault());
    Intel().LinkCheck().Upload(FileOf(7, 16)).Exchange(ListAt(16, 7), GoodReply());
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, FetchedFileWithoutVariablesIsCorrupted) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Upload(SymbolFileBytes(7).Build());
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Symbol file is corrupted");
}

TEST_F(SymbolSequenceTest, StorageIsAskedWithIdentAndNumberedName) {
    ConfigureAndStart();
    driver->SetIdent("line A");
    Store(12, FileOf(7, 16));
    ITag* const tag = Tag("12?A?M?0?short");
    GoodRead(16, 7);
    ExpectGoodRead(tag);
    ASSERT_FALSE(host.storage.asked.empty());
    EXPECT_EQ(host.storage.asked[0].first, "line A");
    EXPECT_EQ(host.storage.asked[0].second, "PLCSymbols_12.sdb");
    EXPECT_EQ(host.storage.lastSize, 260);
}

TEST_F(SymbolSequenceTest, WithoutAnIdentTheInstanceIsTheDriversName) {
    ConfigureAndStart();
    Store(0, FileOf(7, 16));
    ITag* const tag = Tag("0?A?M?0?short");
    GoodRead(16, 7);
    ExpectGoodRead(tag);
    ASSERT_FALSE(host.storage.asked.empty());
    EXPECT_EQ(host.storage.asked[0].first, "VELK");
    EXPECT_EQ(host.storage.asked[0].second, "PLCSymbols_0.sdb");
}

/** Runs in a temporary working directory. */
class BareNameTest : public SymbolSequenceTest {
protected:
    BareNameTest() { std::filesystem::current_path(dir.Path()); }
    ~BareNameTest() override { std::filesystem::current_path(before_); }

    void ExpectBareNameUsed() {
        ConfigureAndStart();
        ITag* const tag = Tag("1?A?M?0?short");
        Intel().LinkCheck().Login().Upload(FileOf(7, 16)).Exchange(ListAt(16, 7), GoodReply());
        ExpectGoodRead(tag);
        EXPECT_EQ(dir.Get("PLCSymbols_1.sdb"), FileOf(7, 16));
    }

private:
    std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(BareNameTest, HostWithoutPermanentStorage) {
    DeleteDriver();
    host.lacking = {"IPermanentStorage"};
    MakeDriver();
    ExpectBareNameUsed();
    EXPECT_TRUE(host.storage.asked.empty());
}

TEST_F(BareNameTest, StorageWithoutPaths) {
    host.storage.directory = "/nonexistent";
    host.storage.hasPaths = false;
    ExpectBareNameUsed();
    EXPECT_FALSE(host.storage.asked.empty());
}

TEST_F(BareNameTest, StorageOfAnOlderKind) {
    host.storage.hasInterface2 = false;
    ExpectBareNameUsed();
    EXPECT_TRUE(host.storage.asked.empty());
}

TEST_F(SymbolSequenceTest, UnwritableStorageFailsTheCall) {
    host.storage.directory = dir.Path("missing");
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Upload(FileOf(7, 16));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Symbol file not present");
    EXPECT_TRUE(HasFault());
}

TEST_F(SymbolSequenceTest, LoadingYieldsToTheHost) {
    ConfigureAndStart();
    SymbolFileBytes file(7);
    for (int i = 0; i < 250; ++i) {
        file.Variable("V" + std::to_string(i), 0, 16);
    }
    Store(1, file.Build());
    ITag* const tag = Tag("1?V249?M?0?short");
    GoodRead(16, 7);
    ExpectGoodRead(tag);
    // records 0, 100 and 200, then every second of the 250 that are indexed
    EXPECT_EQ(host.scheduler.yields, 3 + 125);
    EXPECT_EQ(host.scheduler.lastAmount, 1);
    EXPECT_EQ(host.scheduler.foreignCalls, 0);
}

// --- another project in the PLC ---

class OtherProjectTest : public SymbolSequenceTest, public ::testing::WithParamInterface<char const*> {};

TEST_P(OtherProjectTest, FileIsFetchedAtOnceAndLoadedByTheNextCall) {
    ConfigureAndStart();
    Store(1, FileOf(7, 16));
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Exchange(ListAt(16, 7), Hex(GetParam())).Upload(FileOf(8, 200));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Project ID mismatch");
    EXPECT_TRUE(HasFault());
    EXPECT_EQ(Symbols().projectIdentifier(1), 0U);
    EXPECT_EQ(dir.Get("PLCSymbols_1.sdb"), FileOf(8, 200));
    GoodRead(200, 8, false);
    ExpectGoodRead(tag);
    EXPECT_EQ(Symbols().projectIdentifier(1), 8U);
}

INSTANTIATE_TEST_SUITE_P(BothStatusWords, OtherProjectTest, ::testing::Values("48 00", "33 00", "33 00 01 02 03"));

TEST_F(SymbolSequenceTest, OtherProjectIsSeenInTheNodesByteOrder) {
    ConfigureAndStart(ConfigText().Set("model", "Motorola"));
    Store(1, FileOf(7, 16));
    ITag* const tag = Tag("1?A?M?0?short");
    Bytes const list = Hex("2E 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 00 02 | 00 00 00 07");
    Motorola().LinkCheck().Login().Exchange(list, Hex("33 00"));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Command not acknowledged by PLC");
    Motorola().LinkCheck().Exchange(list, Hex("00 33")).Upload(FileOf(8, 200));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Project ID mismatch");
}

TEST_F(SymbolSequenceTest, SecondAttemptOfTheSameReadUsesTheNewFile) {
    ConfigureAndStart(ConfigText().Set("repeat", "2"));
    Store(1, FileOf(7, 16));
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Exchange(ListAt(16, 7), Hex("33 00")).Upload(FileOf(8, 200));
    GoodRead(200, 8, false);
    ExpectGoodRead(tag);
    EXPECT_EQ(port.purges, 2);
}

TEST_F(SymbolSequenceTest, OtherProjectWhoseFileIsNotHandedOver) {
    ConfigureAndStart();
    Store(1, FileOf(7, 16));
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Exchange(ListAt(16, 7), Hex("33 00")).RefusedUpload();
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Symbol file not present");
    EXPECT_EQ(Symbols().projectIdentifier(1), 0U);
    EXPECT_TRUE(HasFault());
    // The next call finds the stored file, which is still the old one, and the PLC answers as before.
    Intel().LinkCheck().Exchange(ListAt(16, 7), Hex("33 00")).Upload(FileOf(8, 200));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Project ID mismatch");
    GoodRead(200, 8, false);
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, FetchedFileClearsTheWholeTable) {
    ConfigureAndStart();
    Store(1, FileOf(7, 16));
    Store(2, SymbolFileBytes(9).Variable("A", 0, 200).Build());
    GoodRead(200, 9);
    ExpectGoodRead(Tag("2?A?M?0?short"));
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().Logout();
    GoodRead(16, 7);
    ExpectGoodRead(tag);
    EXPECT_TRUE(Symbols().table().SymIsActive(2));
    EXPECT_NE(Symbols().table().SymGetSymbol("A"), nullptr);
    Intel().LinkCheck().Exchange(ListAt(16, 7), Hex("33 00")).RefusedUpload();
    EXPECT_FALSE(Read({tag}).ok);
    EXPECT_NE(Symbols().table().SymGetSymbol("A"), nullptr) << "without a new file the table stays";
    EXPECT_TRUE(Symbols().table().SymIsActive(2));
    EXPECT_FALSE(Symbols().table().SymIsActive(1));
    Intel().LinkCheck().Exchange(ListAt(16, 7), Hex("33 00")).Upload(FileOf(8, 200));
    EXPECT_FALSE(Read({tag}).ok);
    EXPECT_EQ(Symbols().table().SymGetSymbol("A"), nullptr);
    EXPECT_FALSE(Symbols().table().SymIsActive(2));
    EXPECT_FALSE(Symbols().table().SymIsActive(1));
}

TEST_F(SymbolSequenceTest, OtherProjectAndADeadUploadForgetsTheLogin) {
    ConfigureAndStart();
    Store(1, FileOf(7, 16));
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Login().Exchange(ListAt(16, 7), Hex("33 00")).DeadUpload();
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Symbol file not present");
    EXPECT_FALSE(LoginState().isLoggedIn());
    GoodRead(16, 7, true);
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, VariableThatMovedIsBoundAgainAfterANewProject) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(7).Variable("A", 0, 16).Variable("B", 0, 32).Build());
    ITag* const a = Tag("1?A?M?0?short");
    ITag* const b = Tag("1?B?M?0?short");
    GoodRead(16, 7);
    ExpectGoodRead(a);
    GoodRead(32, 7, false);
    ExpectGoodRead(b);
    Intel()
        .LinkCheck()
        .Exchange(ListAt(16, 7), Hex("33 00"))
        .Upload(SymbolFileBytes(8).Variable("B", 0, 300).Variable("A", 0, 200).Build());
    EXPECT_FALSE(Read({a}).ok);
    GoodRead(300, 8, false);
    ExpectGoodRead(b);
    GoodRead(200, 8, false);
    ExpectGoodRead(a);
}

TEST_F(SymbolSequenceTest, WriteThatMeetsAnotherProjectRecoversThroughARead) {
    ConfigureAndStart();
    Store(1, FileOf(7, 16));
    ITag* const tag = Tag("1?A?M?0?short");
    Bytes const write = Hex("3C 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 34 12 | 07 00 00 00");
    Intel().LinkCheck().Login().Exchange(write, Hex("33 00"));
    EXPECT_FALSE(Write({tag}, Hex("34 12")));
    ExpectError(-6, "Wrong reply length or ack in WriteData operation");
    EXPECT_EQ(Symbols().projectIdentifier(1), 7U);
    Intel().LinkCheck().Exchange(write, Hex("33 00"));
    EXPECT_FALSE(Write({tag}, Hex("34 12"))) << "a write alone does not fetch the file";
    Intel().LinkCheck().Exchange(ListAt(16, 7), Hex("33 00")).Upload(FileOf(8, 200));
    EXPECT_FALSE(Read({tag}).ok);
    Intel().LinkCheck().Exchange(Hex("3C 00 | 01 00 00 00 | 00 00 C8 00 00 00 02 00 00 00 34 12 | 08 00 00 00"),
                                 Hex("00 00"));
    EXPECT_TRUE(Write({tag}, Hex("34 12")));
}

// --- several nodes, one table ---

TEST_F(SymbolSequenceTest, LateTagIsBoundAgainstTheFileOfItsOwnNode) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(0xA1).Variable("A", 0, 16).Variable("B", 0, 32).Build());
    Store(2, SymbolFileBytes(0xB2).Variable("A", 0, 200).Variable("B", 0, 300).Build());
    ITag* const oneA = Tag("1?A?M?0?short");
    ITag* const twoA = Tag("2?A?M?0?short");
    GoodRead(16, 0xA1);
    ExpectGoodRead(oneA);
    Intel().Logout();
    GoodRead(200, 0xB2);
    ExpectGoodRead(twoA);
    // Only the table of node 2 is in memory now; nothing but the list may be sent for node 1's file.
    ITag* const oneB = Tag("1?B?M?0?short");
    Intel().Logout();
    GoodRead(32, 0xA1);
    ExpectGoodRead(oneB);
    ITag* const twoB = Tag("2?B?M?0?short");
    Intel().Logout();
    GoodRead(300, 0xB2);
    ExpectGoodRead(twoB);
}

TEST_F(SymbolSequenceTest, LateTagIsWrittenToTheAddressOfItsOwnNode) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(0xA1).Variable("A", 0, 16).Variable("B", 0, 32).Build());
    Store(2, SymbolFileBytes(0xB2).Variable("A", 0, 200).Variable("B", 0, 300).Build());
    GoodRead(16, 0xA1);
    ExpectGoodRead(Tag("1?A?M?0?short"));
    Intel().Logout();
    GoodRead(200, 0xB2);
    ExpectGoodRead(Tag("2?A?M?0?short"));
    ITag* const oneB = Tag("1?B?M?0?short");
    Intel().Logout().LinkCheck().Login().Exchange(
        Hex("3C 00 | 01 00 00 00 | 00 00 20 00 00 00 02 00 00 00 34 12 | A1 00 00 00"), Hex("00 00"));
    EXPECT_TRUE(Write({oneB}, Hex("34 12")));
}

TEST_F(SymbolSequenceTest, LateTagOfANodeWithTheSameIdentifierGetsItsOwnAddress) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(0xA1).Variable("A", 0, 16).Variable("B", 0, 32).Build());
    Store(2, SymbolFileBytes(0xA1).Variable("A", 0, 200).Variable("B", 0, 300).Build());
    GoodRead(16, 0xA1);
    ExpectGoodRead(Tag("1?A?M?0?short"));
    Intel().Logout();
    GoodRead(200, 0xA1);
    ExpectGoodRead(Tag("2?A?M?0?short"));
    Intel().Logout();
    GoodRead(32, 0xA1);
    ExpectGoodRead(Tag("1?B?M?0?short"));
}

TEST_F(SymbolSequenceTest, LateTagMissingInItsOwnNodesFileIsMissing) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(0xA1).Variable("A", 0, 16).Build());
    Store(2, SymbolFileBytes(0xB2).Variable("A", 0, 200).Variable("B", 0, 300).Build());
    GoodRead(16, 0xA1);
    ExpectGoodRead(Tag("1?A?M?0?short"));
    Intel().Logout();
    GoodRead(200, 0xB2);
    ExpectGoodRead(Tag("2?A?M?0?short"));
    ITag* const oneB = Tag("1?B?M?7?short");
    Intel().Logout();
    GoodRead(7, 0xA1);
    ReadOutcome const outcome = Read({oneB});
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.status[0], -1) << "the other node's variable of that name is not this node's";
    ExpectError(-1, "tag B not present in symbol file");
}

TEST_F(SymbolSequenceTest, BoundTagsNeedNoFileWhenNodesTakeTurns) {
    ConfigureAndStart();
    Store(1, FileOf(0xA1, 16));
    Store(2, FileOf(0xB2, 200));
    ITag* const one = Tag("1?A?M?0?short");
    ITag* const two = Tag("2?A?M?0?short");
    GoodRead(16, 0xA1);
    ExpectGoodRead(one);
    Intel().Logout();
    GoodRead(200, 0xB2);
    ExpectGoodRead(two);
    int const yields = host.scheduler.yields;
    std::filesystem::remove(dir.Path("PLCSymbols_1.sdb"));
    std::filesystem::remove(dir.Path("PLCSymbols_2.sdb"));
    for (int turn = 0; turn < 3; ++turn) {
        Intel().Logout();
        GoodRead(16, 0xA1);
        ExpectGoodRead(one);
        Intel().Logout();
        GoodRead(200, 0xB2);
        ExpectGoodRead(two);
    }
    EXPECT_EQ(host.scheduler.yields, yields) << "nothing was loaded";
}

TEST_F(SymbolSequenceTest, LateTagIsBoundAfterAnotherNodesMismatchClearedTheTable) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(0xA1).Variable("A", 0, 16).Build());
    Store(2, SymbolFileBytes(0xB2).Variable("A", 0, 200).Variable("B", 0, 300).Build());
    ITag* const one = Tag("1?A?M?0?short");
    GoodRead(16, 0xA1);
    ExpectGoodRead(one);
    Intel().Logout();
    GoodRead(200, 0xB2);
    ExpectGoodRead(Tag("2?A?M?0?short"));
    Intel().Logout().LinkCheck().Login().Exchange(ListAt(16, 0xA1), Hex("48 00")).Upload(FileOf(0xA9, 17));
    EXPECT_FALSE(Read({one}).ok);
    Intel().Logout();
    GoodRead(300, 0xB2);
    ExpectGoodRead(Tag("2?B?M?0?short"));
    Intel().Logout();
    GoodRead(17, 0xA9);
    ExpectGoodRead(one);
}

TEST_F(SymbolSequenceTest, LateTagWhoseOwnFileIsGoneIsNeverSentWithAnotherNodesAddress) {
    bool handsOver = false;
    Bytes const ownFile = SymbolFileBytes(0xA1).Variable("A", 0, 16).Variable("B", 0, 32).Build();
    AnsweringPort plc({}, [&](Bytes const& request) {
        switch (request[0]) {
        case 0x01:
            return Hex("E8 03");
        case 0x31:
            return handsOver ? Intel().FilePiece(ownFile, false) : Hex("05 00 00 00 00 00");
        case 0x2E:
            EXPECT_NE(Bytes(request.begin() + 8, request.begin() + 12), Little(300, 4));
            return GoodReply();
        default:
            return Hex("00 00");
        }
    });
    host.serial.port = &plc;
    ConfigureAndStart();
    Store(1, ownFile);
    Store(2, SymbolFileBytes(0xB2).Variable("A", 0, 200).Variable("B", 0, 300).Build());
    ExpectGoodRead(Tag("1?A?M?0?short"));
    ExpectGoodRead(Tag("2?A?M?0?short"));
    std::filesystem::remove(dir.Path("PLCSymbols_1.sdb"));
    ITag* const late = Tag("1?B?M?0?short");
    Read({late});
    Read({late});
    handsOver = true;
    Read({late});
    ExpectGoodRead(late);
    EXPECT_EQ(late->GetByteOffset(), 32);
    driver->Stop();
}

TEST_F(SymbolSequenceTest, LateTagIsBoundAfterABrokenFileOfAnotherNodeEmptiedTheTable) {
    ConfigureAndStart();
    Store(1, Hex("01 00 00 00 10 00"));
    Store(2, SymbolFileBytes(0xB2).Variable("A", 0, 200).Variable("B", 0, 300).Build());
    GoodRead(200, 0xB2);
    ExpectGoodRead(Tag("2?A?M?0?short"));
    Intel().Logout().LinkCheck().Login().RefusedUpload();
    EXPECT_FALSE(Read({Tag("1?A?M?0?short")}).ok);
    Intel().Logout();
    GoodRead(300, 0xB2);
    ExpectGoodRead(Tag("2?B?M?0?short"));
}

TEST_F(SymbolSequenceTest, ProjectIdentifierTagInAListNeedsNoFile) {
    ConfigureAndStart();
    Store(1, FileOf(0xA1, 16));
    Store(2, FileOf(0xB2, 200));
    ITag* const one = Tag("1?A?M?0?short");
    GoodRead(16, 0xA1);
    ExpectGoodRead(one);
    Intel().Logout();
    GoodRead(200, 0xB2);
    ExpectGoodRead(Tag("2?A?M?0?short"));
    std::filesystem::remove(dir.Path("PLCSymbols_1.sdb"));
    Intel().Logout().LinkCheck().Login();
    EXPECT_FALSE(Read({one, Tag("1?ID?PROJ_ID?0?unsignedInt")}).ok);
    ExpectError(-1, "1?ID?PROJ_ID?0?unsignedInt not present in Symbols files");
    GoodRead(16, 0xA1, false);
    ExpectGoodRead(one);
}

TEST_F(SymbolSequenceTest, FileOfProjectZeroServesToo) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(0).Variable("A", 0, 16).Variable("B", 0, 32).Build());
    GoodRead(16, 0);
    ExpectGoodRead(Tag("1?A?M?0?short"));
    GoodRead(32, 0, false);
    ExpectGoodRead(Tag("1?B?M?0?short"));
}

TEST_F(SymbolSequenceTest, PathThatTheHostDoesNotTerminateOverrunsNothing) {
    host.storage.unterminated = true;
    ConfigureAndStart();
    Intel().LinkCheck().Login().RefusedUpload();
    EXPECT_FALSE(Read({Tag("1?A?M?0?short")}).ok);
    ExpectError(-6, "Symbol file not present");
}

// --- a declared project ---

TEST_F(SymbolSequenceTest, DeclaredProjectNeedsNoSymbolFile) {
    ConfigureAndStart();
    Tag("1?ID?PROJ_ID?287454020?unsignedInt"); // 0x11223344
    EXPECT_TRUE(Symbols().usesDefaultAddresses(1));
    EXPECT_EQ(Symbols().projectIdentifier(1), 0x11223344U);
    EXPECT_EQ(Symbols().confirmedProjectIdentifier(1), 0x11223344U);
    ITag* const tag = Tag("1?A?M?0x1234?short");
    GoodRead(0x1234, 0x11223344);
    ExpectGoodRead(tag);
    EXPECT_EQ(host.scheduler.yields, 0);
    EXPECT_FALSE(Symbols().usesDefaultAddresses(2));
    EXPECT_EQ(Symbols().projectIdentifier(2), 0U);
}

TEST_F(SymbolSequenceTest, DeclaredProjectIgnoresAStoredFile) {
    ConfigureAndStart();
    Store(1, FileOf(0x11223344, 16));
    Tag("1?ID?PROJ_ID?287454020?unsignedInt");
    ITag* const tag = Tag("1?A?M?99?short");
    GoodRead(99, 0x11223344);
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, DeclaredProjectUsesTheAreaOfTheAddressSpace) {
    ConfigureAndStart();
    Tag("1?ID?PROJ_ID?7?unsignedInt");
    Tag("1?ID?PROJ_ID?7?unsignedInt");
    std::vector<ITag*> const tags{Tag("1?A?M?1?byte"),     Tag("1?A?I?2?byte"),     Tag("1?A?Q?3?byte"),
                                  Tag("1?A?3?4?byte"),     Tag("1?A?4?5?byte"),     Tag("1?A?5?6?byte"),
                                  Tag("1?A?MB?7?boolean"), Tag("1?A?IB?8?boolean"), Tag("1?A?QB?9?boolean")};
    Intel().LinkCheck().Login().Exchange("2E 00 | 09 00 00 00 | 00 00 01 00 00 00 01 00 00 00 | "
                                         "01 00 02 00 00 00 01 00 00 00 | 02 00 03 00 00 00 01 00 00 00 | "
                                         "03 00 04 00 00 00 01 00 00 00 | 04 00 05 00 00 00 01 00 00 00 | "
                                         "05 00 06 00 00 00 01 00 00 00 | 00 00 07 00 00 00 00 00 00 00 | "
                                         "01 00 08 00 00 00 00 00 00 00 | 02 00 09 00 00 00 00 00 00 00 | 07 00 00 00",
                                         "00 00 | 00 00 00 00 | 01 11 | 01 12 | 01 13 | 01 14 | 01 15 | 01 16 | "
                                         "01 80 | 01 01 | 01 02");
    ReadOutcome const outcome = Read(tags);
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(outcome.values, Hex("11 12 13 14 15 16 01 01 01"));
    EXPECT_EQ(outcome.status, std::vector<idal_error_t>(9, 1));
}

TEST_F(SymbolSequenceTest, MismatchOfADeclaredProjectOnlyEndsTheUseOfItsAddresses) {
    ConfigureAndStart();
    Tag("1?ID?PROJ_ID?7?unsignedInt");
    ITag* const tag = Tag("1?A?M?99?short");
    Intel().LinkCheck().Login().Exchange(ListAt(99, 7), Hex("33 00")); // and no file is fetched in this call
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Project ID mismatch");
    EXPECT_FALSE(Symbols().usesDefaultAddresses(1));
    EXPECT_EQ(Symbols().projectIdentifier(1), 0U);
    EXPECT_EQ(Symbols().confirmedProjectIdentifier(1), 7U);
    EXPECT_FALSE(HasFault());
    Intel().LinkCheck().Upload(FileOf(8, 16)).Exchange(ListAt(16, 8), GoodReply());
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, StoredFileServesAfterTheMismatchOfADeclaredProject) {
    ConfigureAndStart();
    Store(1, FileOf(8, 16));
    Tag("1?ID?PROJ_ID?7?unsignedInt");
    ITag* const tag = Tag("1?A?M?99?short");
    Intel().LinkCheck().Login().Exchange(ListAt(99, 7), Hex("48 00"));
    EXPECT_FALSE(Read({tag}).ok);
    GoodRead(16, 8, false);
    ExpectGoodRead(tag);
}

/** The declared project of node 1 did not match; the tag's configured offset is 99. */
class FallbackTest : public SymbolSequenceTest {
protected:
    void SetUp() override {
        SymbolSequenceTest::SetUp();
        ConfigureAndStart();
        Tag("1?ID?PROJ_ID?7?unsignedInt");
        tag = Tag("1?A?M?99?short");
        Intel().LinkCheck().Login().Exchange(ListAt(99, 7), Hex("33 00"));
        EXPECT_FALSE(Read({tag}).ok);
    }

    ITag* tag = nullptr;
};

TEST_F(FallbackTest, RefusedFileFallsBackToTheConfirmedProject) {
    Intel().LinkCheck().RefusedUpload().Exchange(ListAt(99, 7), GoodReply());
    ExpectGoodRead(tag);
    ExpectError(-6, "Symbol file not present");
    EXPECT_TRUE(Symbols().usesDefaultAddresses(1));
    EXPECT_EQ(Symbols().projectIdentifier(1), 7U);
    EXPECT_FALSE(HasFault());
    GoodRead(99, 7, false);
    ExpectGoodRead(tag);
}

TEST_F(FallbackTest, CorruptedFileFallsBackToTheConfirmedProject) {
    Intel().LinkCheck().Upload(Hex("00 01 02")).Exchange(ListAt(99, 7), GoodReply());
    ExpectGoodRead(tag);
    ExpectError(-6, "Symbol file is corrupted");
    EXPECT_TRUE(Symbols().usesDefaultAddresses(1));
    EXPECT_FALSE(HasFault());
}

TEST_F(FallbackTest, AfterADeadUploadTheListGoesOutAllTheSame) {
    Intel().LinkCheck().DeadUpload().Exchange(ListAt(99, 7), GoodReply());
    ExpectGoodRead(tag);
    GoodRead(99, 7, true); // the upload discarded the login
    ExpectGoodRead(tag);
}

TEST_F(FallbackTest, NextMismatchBeginsAnew) {
    Intel().LinkCheck().RefusedUpload().Exchange(ListAt(99, 7), Hex("33 00"));
    EXPECT_FALSE(Read({tag}).ok);
    EXPECT_FALSE(Symbols().usesDefaultAddresses(1));
    Intel().LinkCheck().Upload(FileOf(8, 16)).Exchange(ListAt(16, 8), GoodReply());
    ExpectGoodRead(tag);
}

TEST_F(SymbolSequenceTest, DefaultAddressRestoresIndexAndAreaOfABoundTag) {
    ConfigureAndStart();
    Store(1, SymbolFileBytes(7).Variable("A", 2, 16).Build());
    ITag* const tag = Tag("1?A?I?99?short");
    Intel().LinkCheck().Login().Exchange(Hex("2E 00 | 01 00 00 00 | 02 00 10 00 00 00 02 00 00 00 | 07 00 00 00"),
                                         GoodReply());
    ExpectGoodRead(tag);
    Tag("1?ID?PROJ_ID?9?unsignedInt");
    Intel().LinkCheck().Exchange(Hex("2E 00 | 01 00 00 00 | 01 00 63 00 00 00 02 00 00 00 | 09 00 00 00"), GoodReply());
    ExpectGoodRead(tag);
    EXPECT_EQ(tag->GetByteOffset(), 99);
}

TEST_F(SymbolSequenceTest, IdentifierZeroDeclaresNothing) {
    ConfigureAndStart();
    Tag("1?ID?PROJ_ID?0?unsignedInt");
    EXPECT_FALSE(Symbols().usesDefaultAddresses(1));
    EXPECT_EQ(Symbols().projectIdentifier(1), 0U);
    EXPECT_EQ(Symbols().confirmedProjectIdentifier(1), 0U);
    Store(1, FileOf(8, 16));
    GoodRead(16, 8);
    ExpectGoodRead(Tag("1?A?M?99?short"));
}

TEST_F(SymbolSequenceTest, IdentifierZeroLeavesAnEarlierDeclarationAlone) {
    ConfigureAndStart();
    Tag("1?ID?PROJ_ID?7?unsignedInt");
    Tag("1?ID?PROJ_ID?0?unsignedInt");
    GoodRead(99, 7);
    ExpectGoodRead(Tag("1?A?M?99?short"));
}

TEST_F(SymbolSequenceTest, ReplacedStoredFileIsNotReadAgainWhileTheProjectMatches) {
    ConfigureAndStart();
    Store(1, FileOf(7, 16));
    ITag* const tag = Tag("1?A?M?0?short");
    GoodRead(16, 7);
    ExpectGoodRead(tag);
    Store(1, FileOf(8, 200));
    GoodRead(16, 7, false);
    ExpectGoodRead(tag);
    GoodRead(16, 7, false);
    ExpectGoodRead(Tag("1?A?M?0?short"));
}

} // namespace
