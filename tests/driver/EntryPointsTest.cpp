#include "tests/support/AllocationGate.h"
#include "tests/support/VelkTest.h"

#include <string>

/** The operations through which the host reads and writes: attempts, conversions, statuses, blocks. */
namespace {

using namespace velktest;

/** Node 1 has declared project 7, so that tags are sent with their configured addresses. */
class EntryPointsTest : public VelkTest {
protected:
    void StartDeclared(ConfigText const& text = {}) {
        ConfigureAndStart(text);
        Tag("1?ID?PROJ_ID?7?unsignedInt");
    }

    static Bytes ReadOf(std::string_view descriptor) {
        return Hex("2E 00 | 01 00 00 00") + Hex(descriptor) + Hex("07 00 00 00");
    }
    static Bytes WriteOf(std::string_view descriptor, Bytes const& value) {
        return Hex("3C 00 | 01 00 00 00") + Hex(descriptor) + value + Hex("07 00 00 00");
    }
    static Bytes Value(Bytes const& value) { return Hex("00 00 | 00 00 00 00 | 01") + value; }
};

// --- not started ---

TEST_F(EntryPointsTest, NothingIsReadOrWrittenBeforeStart) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    ITag* const tag = Tag("1?A?M?0?short");
    ITag const* const tags[] = {tag};
    Bytes value = Hex("CC CC");
    auto const expectRefusal = [&](bool ok) {
        EXPECT_FALSE(ok);
        ExpectError(-3, "Protocol not started");
        driver->Config("none");
    };
    expectRefusal(driver->ReadBlock(tag, value.data(), 2));
    expectRefusal(driver->Read(tag, value.data()));
    expectRefusal(driver->Write(tag, value.data()));
    expectRefusal(driver->ReadDatagram(tags, 1, value.data()));
    expectRefusal(Read({tag}).ok);
    expectRefusal(Write({tag}, value));
    EXPECT_EQ(value, Hex("CC CC"));
    EXPECT_EQ(port.purges, 0);
}

TEST_F(EntryPointsTest, NothingIsReadOrWrittenAfterStop) {
    StartDeclared();
    ITag* const tag = Tag("1?A?M?0?short");
    EXPECT_TRUE(driver->Stop());
    ReadOutcome const outcome = Read({tag});
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.status[0], 0);
    ExpectError(-3, "Protocol not started");
    driver->Config("none");
    EXPECT_FALSE(Write({tag}, Hex("00 00")));
    ExpectError(-3, "Protocol not started");
    unsigned char value[2];
    driver->Config("none");
    EXPECT_FALSE(driver->Read(tag, value));
    ExpectError(-3, "Protocol not started");
    EXPECT_EQ(port.purges, 0);
}

TEST_F(EntryPointsTest, LargeDatagramIsRefusedForTheFirstReasonThereIs) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    std::vector<ITag*> const tooLong(2, Tag("1?A?M?0?string-40000"));
    std::vector<ITag*> const tooMany(91, Tag("1?A?M?0?string-1000"));
    auto const expectRefusals = [&](std::vector<ITag*> const& tags, int code, char const* read, char const* write) {
        EXPECT_FALSE(Read(tags).ok);
        ExpectError(code, read);
        EXPECT_FALSE(Write(tags, Bytes(91000)));
        ExpectError(code, write);
    };
    expectRefusals(tooLong, -3, "Protocol not started", "Protocol not started");
    expectRefusals(tooMany, -3, "Protocol not started", "Protocol not started");
    ASSERT_TRUE(driver->Start());
    expectRefusals(tooLong, -1, "Rx Buffer dimension exceeded", "Tx Buffer dimension exceeded");
    expectRefusals(tooMany, -1, "Too many items in datagram", "Too many items in datagram");
    EXPECT_TRUE(port.writes.empty());
}

// --- attempts ---

TEST_F(EntryPointsTest, EveryAttemptBeginsWithAnEmptiedPort) {
    StartDeclared(ConfigText().Set("repeat", "3"));
    ITag* const tag = Tag("1?A?M?16?short");
    port.ExpectPurge();
    Intel().DeadLinkCheck();
    port.ExpectPurge();
    Intel().DeadLinkCheck();
    port.ExpectPurge();
    Intel().LinkCheck().Login().Exchange(ReadOf("00 00 10 00 00 00 02 00 00 00"), Value(Hex("34 12")));
    ReadOutcome const outcome = Read({tag});
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.values, Hex("34 12"));
    EXPECT_EQ(port.purges, 3);
}

TEST_F(EntryPointsTest, PortIsEmptiedUntilNothingIsLeft) {
    StartDeclared(ConfigText().Set("repeat", "2"));
    ITag* const tag = Tag("1?A?M?16?short");
    port.purgesThatRemove = 4;
    Intel().DeadLinkCheck().DeadLinkCheck();
    EXPECT_FALSE(Read({tag}).ok);
    EXPECT_EQ(port.purges, 5 + 1);
}

TEST_F(EntryPointsTest, EmptyingThePortEndsAfterAThousandCalls) {
    StartDeclared();
    ITag* const tag = Tag("1?A?M?16?short");
    port.purgesForEver = true;
    Intel().LinkCheck().Login().Exchange(ReadOf("00 00 10 00 00 00 02 00 00 00"), Value(Hex("34 12")));
    EXPECT_TRUE(Read({tag}).ok);
    EXPECT_EQ(port.purges, 1000);
}

TEST_F(EntryPointsTest, LastAttemptLeavesTheError) {
    StartDeclared(ConfigText().Set("repeat", "2"));
    ITag* const tag = Tag("1?A?M?16?short");
    Intel().DeadLinkCheck();
    port.Expect(Framing().Block(1, true, Conversation::LinkCheckRequest())).Fault();
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(0, "Generic error on receiving");
}

TEST_F(EntryPointsTest, NoAttemptFailsWithoutAWord) {
    for (char const* repeat : {"0", "-1", "-2147483648"}) {
        RemakeDriver();
        StartDeclared(ConfigText().Set("repeat", repeat));
        ITag* const tag = Tag("1?A?M?16?short");
        ITag const* const tags[] = {tag};
        Bytes value(2);
        EXPECT_FALSE(Read({tag}).ok);
        EXPECT_FALSE(driver->ReadDatagram(tags, 1, value.data()));
        EXPECT_FALSE(driver->Read(tag, value.data()));
        EXPECT_FALSE(driver->ReadBlock(tag, value.data(), 2));
        EXPECT_FALSE(driver->Write(tag, value.data()));
        EXPECT_FALSE(Write({tag}, value));
        ExpectError(1, "");
        EXPECT_EQ(port.purges, 0);
    }
}

TEST_F(EntryPointsTest, AttemptsAreThoseOfTheFirstTagsNode) {
    StartDeclared(ConfigText().Set("repeat", "1").Node(1, "repeat", "4").Node(2, "repeat", "2"));
    Intel().DeadLinkCheck().DeadLinkCheck().DeadLinkCheck().DeadLinkCheck();
    EXPECT_FALSE(Read({Tag("1?A?M?16?short")}).ok);
    Intel().DeadLinkCheck().DeadLinkCheck();
    EXPECT_FALSE(Write({Tag("2?A?M?16?short")}, Hex("00 00")));
    Intel().DeadLinkCheck();
    EXPECT_FALSE(Read({Tag("3?A?M?16?short")}).ok);
    EXPECT_EQ(port.purges, 4 + 2 + 1);
}

TEST_F(EntryPointsTest, EveryEntryPointRepeats) {
    StartDeclared(ConfigText().Set("repeat", "2"));
    ITag* const tag = Tag("1?A?M?16?short");
    ITag const* const tags[] = {tag};
    Bytes value(2);
    Intel().DeadLinkCheck().DeadLinkCheck();
    EXPECT_FALSE(driver->ReadDatagram(tags, 1, value.data()));
    Intel().DeadLinkCheck().DeadLinkCheck();
    EXPECT_FALSE(driver->ReadBlock(tag, value.data(), 2));
    Intel().DeadLinkCheck().DeadLinkCheck();
    EXPECT_FALSE(driver->Read(tag, value.data()));
    Intel().DeadLinkCheck().DeadLinkCheck();
    EXPECT_FALSE(driver->Write(tag, value.data()));
    Intel().DeadLinkCheck().DeadLinkCheck();
    EXPECT_FALSE(Write({tag}, value));
    EXPECT_EQ(port.purges, 10);
}

TEST_F(EntryPointsTest, NoMoreAttemptsAfterASuccess) {
    StartDeclared(ConfigText().Set("repeat", "5"));
    Intel().LinkCheck().Login().Exchange(ReadOf("00 00 10 00 00 00 02 00 00 00"), Value(Hex("34 12")));
    EXPECT_TRUE(Read({Tag("1?A?M?16?short")}).ok);
    EXPECT_EQ(port.purges, 1);
}

// --- statuses ---

TEST_F(EntryPointsTest, StatusesAreZeroAfterAFailedRead) {
    StartDeclared();
    Intel().DeadLinkCheck();
    ReadOutcome const outcome = Read({Tag("1?A?M?16?short"), Tag("1?A?M?16?short")});
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.status, (std::vector<idal_error_t>{0, 0}));
    EXPECT_EQ(outcome.values, Hex("CC CC CC CC"));
}

TEST_F(EntryPointsTest, StatusesAreLeftAloneAfterAFailedWrite) {
    StartDeclared();
    Intel().DeadLinkCheck();
    EXPECT_FALSE(Write({Tag("1?A?M?16?short"), Tag("1?A?M?16?short")}, Hex("01 02 03 04"))); // Write() checks them
}

TEST_F(EntryPointsTest, ReadDatagramConvertsEveryValue) {
    StartDeclared();
    ITag const* const tags[] = {Tag("1?A?M?16?short(swap2)"), Tag("1?A?M?16?unsignedShort(bcd)")};
    Intel().LinkCheck().Login().Exchange(
        "2E 00 | 02 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 07 00 00 00",
        "00 00 | 00 00 00 00 | 01 34 12 | 01 34 12");
    Bytes values(4);
    EXPECT_TRUE(driver->ReadDatagram(tags, 2, values.data()));
    EXPECT_EQ(values, Hex("12 34 D2 04"));
}

TEST_F(EntryPointsTest, FailedConversionStopsADatagram) {
    StartDeclared();
    std::vector<ITag*> const tags{Tag("1?A?M?16?short"), Tag("1?A?M?16?unsignedShort(bcd)"), Tag("1?A?M?16?byte")};
    Bytes const request = Hex("2E 00 | 03 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | "
                              "00 00 10 00 00 00 01 00 00 00 | 07 00 00 00");
    Intel().LinkCheck().Login().Exchange(request, Hex("00 00 | 00 00 00 00 | 01 34 12 | 01 1A 00 | 01 77"));
    ReadOutcome const outcome = Read(tags);
    EXPECT_FALSE(outcome.ok);
    ExpectError(-9, "datagramItem conversion error");
    EXPECT_EQ(outcome.values, Hex("34 12 CC CC CC")) << "what comes before is delivered, what comes after is not";
    EXPECT_EQ(outcome.status[0], 1);
    EXPECT_EQ(outcome.status[2], 0);

    Bytes values(5, 0xCC);
    driver->Config("none");
    Intel().LinkCheck().Exchange(request, Hex("00 00 | 00 00 00 00 | 01 34 12 | 01 1A 00 | 01 77"));
    EXPECT_FALSE(driver->ReadDatagram(tags.data(), 3, values.data()));
    ExpectError(-9, "datagramItem conversion error");
    EXPECT_EQ(values, Hex("34 12 CC CC CC"));
}

TEST_F(EntryPointsTest, FailedConversionKeepsADatagramFromBeingWritten) {
    StartDeclared();
    EXPECT_FALSE(Write({Tag("1?A?M?16?short"), Tag("1?A?M?16?unsignedShort(bcd)")}, Hex("34 12 10 27"))); // 10000
    ExpectError(-9, "datagramItem conversion error");
    EXPECT_TRUE(port.writes.empty());
    EXPECT_EQ(port.purges, 0);
}

TEST_F(EntryPointsTest, UnknownConversionFailsAtTheFirstUse) {
    StartDeclared();
    ITag* const tag = Tag("1?A?M?16?short(SWAP2)");
    Intel().LinkCheck().Login().Exchange(ReadOf("00 00 10 00 00 00 02 00 00 00"), Value(Hex("34 12")));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-9, "datagramItem conversion error");
}

TEST_F(EntryPointsTest, FailedConversionOfASingleRead) {
    StartDeclared();
    ITag* const tag = Tag("1?A?M?16?unsignedShort(bcd)");
    Intel().LinkCheck().Login().Exchange(ReadOf("00 00 10 00 00 00 02 00 00 00"), Value(Hex("1A 00")));
    Bytes value(2, 0xCC);
    EXPECT_FALSE(driver->Read(tag, value.data()));
    ExpectError(-9, "read conversion error");
    EXPECT_EQ(value, Hex("CC CC"));
}

TEST_F(EntryPointsTest, FailedConversionOfASingleWrite) {
    StartDeclared();
    ITag* const tag = Tag("1?A?M?16?unsignedShort(bcd)");
    Bytes const value = Hex("10 27");
    EXPECT_FALSE(driver->Write(tag, value.data()));
    ExpectError(-9, "write conversion error");
    EXPECT_TRUE(port.writes.empty());
}

// --- single values ---

TEST_F(EntryPointsTest, SingleReadInBothByteOrders) {
    StartDeclared(ConfigText().Node(2, "model", "Motorola"));
    Tag("2?ID?PROJ_ID?7?unsignedInt");
    Bytes value(4);
    Intel().LinkCheck().Login().Exchange(ReadOf("00 00 10 00 00 00 04 00 00 00"), Value(Hex("78 56 34 12")));
    EXPECT_TRUE(driver->Read(Tag("1?A?M?16?int"), value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(value, Hex("78 56 34 12"));
    Intel().Logout();
    Motorola().LinkCheck().Login().Exchange(Hex("2E 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 00 04 | 00 00 00 07"),
                                            Value(Hex("12 34 56 78")));
    value = Bytes(4);
    EXPECT_TRUE(driver->Read(Tag("2?A?M?16?int"), value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(value, Hex("78 56 34 12"));
}

TEST_F(EntryPointsTest, SingleWriteInBothByteOrders) {
    StartDeclared(ConfigText().Node(2, "model", "Motorola"));
    Tag("2?ID?PROJ_ID?7?unsignedInt");
    Bytes const value = Hex("78 56 34 12");
    Intel().LinkCheck().Login().Exchange(WriteOf("00 00 10 00 00 00 04 00 00 00", Hex("78 56 34 12")), Hex("00 00"));
    EXPECT_TRUE(driver->Write(Tag("1?A?M?16?int"), value.data())) << driver->GetLastErrorString();
    Intel().Logout();
    Motorola().LinkCheck().Login().Exchange(
        Hex("3C 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 00 04 12 34 56 78 | 00 00 00 07"), Hex("00 00"));
    EXPECT_TRUE(driver->Write(Tag("2?A?M?16?int"), value.data())) << driver->GetLastErrorString();
}

TEST_F(EntryPointsTest, SingleBit) {
    StartDeclared();
    ITag* const tag = Tag("1?A?MB?13?boolean");
    Bytes value = Hex("CC");
    Intel().LinkCheck().Login().Exchange(ReadOf("00 00 0D 00 00 00 00 00 00 00"), Value(Hex("20")));
    EXPECT_TRUE(driver->Read(tag, value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(value, Hex("01"));
    Intel().LinkCheck().Exchange(WriteOf("00 00 0D 00 00 00 00 00 00 00", Hex("20")), Hex("00 00"));
    EXPECT_TRUE(driver->Write(tag, value.data())) << driver->GetLastErrorString();
}

TEST_F(EntryPointsTest, FailedSingleReadLeavesTheValueAlone) {
    StartDeclared();
    Bytes value = Hex("CC CC");
    Intel().DeadLinkCheck();
    EXPECT_FALSE(driver->Read(Tag("1?A?M?16?short"), value.data()));
    EXPECT_EQ(value, Hex("CC CC"));
    ExpectError(-4, "Timeout on Acknowledge");
}

TEST_F(EntryPointsTest, RefusedSingleWrite) {
    StartDeclared();
    Bytes const value = Hex("34 12");
    Intel().LinkCheck().Login().Exchange(WriteOf("00 00 10 00 00 00 02 00 00 00", value), Hex("09 00"));
    EXPECT_FALSE(driver->Write(Tag("1?A?M?16?short"), value.data()));
    ExpectError(-6, "Wrong reply length or ack in WriteData operation");
}

// --- blocks ---

TEST_F(EntryPointsTest, BlockIsReadAsThePlcHasIt) {
    StartDeclared(ConfigText().Set("model", "Motorola"));
    Bytes block(7, 0xCC);
    Motorola().LinkCheck().Login().Exchange(Hex("2E 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 00 05 | 00 00 00 07"),
                                            Value(Hex("01 02 03 04 05")));
    EXPECT_TRUE(driver->ReadBlock(Tag("1?A?M?16?short"), block.data(), 5)) << driver->GetLastErrorString();
    EXPECT_EQ(block, Hex("01 02 03 04 05 CC CC"));
}

TEST_F(EntryPointsTest, BlockOfABitIsOneByte) {
    StartDeclared();
    Bytes block(2, 0xCC);
    Intel().LinkCheck().Login().Exchange(ReadOf("00 00 0D 00 00 00 00 00 00 00"), Value(Hex("FF")));
    EXPECT_TRUE(driver->ReadBlock(Tag("1?A?MB?13?boolean"), block.data(), 1)) << driver->GetLastErrorString();
    EXPECT_EQ(block, Hex("FF CC"));
}

TEST_F(EntryPointsTest, BlockLongerThanItsBitOverrunsNothing) {
    for (int const length : {2, 129, 200}) {
        RemakeDriver();
        StartDeclared();
        Bytes block(200, 0xCC);
        Intel().LinkCheck().Login().Exchange(ReadOf("00 00 0D 00 00 00 00 00 00 00"), Value(Hex("FF")));
        // A sanitized run sees whether more is read than there is. The delivered bytes must come from the PLC, or there
        // must be none.
        EXPECT_TRUE(driver->ReadBlock(Tag("1?A?MB?13?boolean"), block.data(), length)) << driver->GetLastErrorString();
        auto const wanted = static_cast<std::size_t>(length);
        EXPECT_EQ(block, Hex("FF") + Bytes(wanted - 1, 0x00) + Bytes(200 - wanted, 0xCC));
    }
}

TEST_F(EntryPointsTest, BlockOfNothingSucceedsWithoutAnExchange) {
    StartDeclared();
    unsigned char nothing = 0xCC;
    EXPECT_TRUE(driver->ReadBlock(Tag("1?A?M?16?short"), &nothing, 0)) << driver->GetLastErrorString();
    EXPECT_EQ(nothing, 0xCC);
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(EntryPointsTest, NegativeBlockIsRefused) {
    StartDeclared();
    unsigned char nothing = 0xCC;
    for (int const length : {-1, -75000, -2147483647 - 1}) {
        EXPECT_FALSE(driver->ReadBlock(Tag("1?A?M?16?short"), &nothing, length)) << length;
        EXPECT_EQ(nothing, 0xCC);
    }
}

TEST_F(EntryPointsTest, BlockBeyondTheBuffersIsRefused) {
    StartDeclared();
    ITag* const tag = Tag("1?A?M?16?short");
    Bytes block(80000, 0xCC);
    for (int const length : {74994, 75000, 75001, 80000}) {
        driver->Config("none");
        EXPECT_FALSE(driver->ReadBlock(tag, block.data(), length)) << length;
        EXPECT_EQ(driver->GetLastError(), -1);
        std::string const text = driver->GetLastErrorString();
        EXPECT_EQ(text, "Rx Buffer dimension exceeded");
        EXPECT_TRUE(HasFault());
        EXPECT_EQ(block, Bytes(80000, 0xCC));
        EXPECT_TRUE(port.writes.empty()) << "nothing goes out";
    }
    EXPECT_FALSE(driver->ReadBlock(tag, block.data(), 2147483647));
    EXPECT_EQ(driver->GetLastError(), -1);
}

TEST_F(EntryPointsTest, LargestBlock) {
    StartDeclared(ConfigText().Set("BlockSize", "1460"));
    Bytes block(74994, 0xCC);
    Conversation(port, {.blockSize = 1460})
        .LinkCheck()
        .Login()
        .Exchange(ReadOf("00 00 10 00 00 00 F1 24 01 00"), Value(Counting(74993)));
    EXPECT_TRUE(driver->ReadBlock(Tag("1?A?M?16?short"), block.data(), 74993)) << driver->GetLastErrorString();
    EXPECT_EQ(block, Counting(74993) + Hex("CC"));
}

TEST_F(EntryPointsTest, WriteBlockIsNotSupported) {
    StartDeclared();
    unsigned char const value = 1;
    EXPECT_FALSE(driver->WriteBlock(Tag("1?A?M?16?byte"), &value, 1));
    ExpectError(-3, "Optimized writing not supported");
}

// --- project identifiers ---

TEST_F(EntryPointsTest, ProjectIdentifierReadsAsItself) {
    for (char const* model : {"Intel", "Motorola"}) {
        RemakeDriver();
        ConfigureAndStart(ConfigText().Set("model", model));
        ITag* const tag = Tag("1?ID?PROJ_ID?0x12345678?unsignedInt");
        Bytes value(4, 0xCC);
        EXPECT_TRUE(driver->Read(tag, value.data())) << model;
        EXPECT_EQ(value, Hex("78 56 34 12")) << model;
        ITag const* const tags[] = {tag};
        value = Bytes(4, 0xCC);
        EXPECT_TRUE(driver->ReadDatagram(tags, 1, value.data())) << model;
        EXPECT_EQ(value, Hex("78 56 34 12")) << model;
        ReadOutcome const outcome = Read({tag});
        EXPECT_TRUE(outcome.ok) << model;
        EXPECT_EQ(outcome.values, Hex("78 56 34 12")) << model;
        EXPECT_EQ(outcome.status[0], 1) << model;
        EXPECT_TRUE(port.writes.empty());
        EXPECT_EQ(port.purges, 0);
    }
}

TEST_F(EntryPointsTest, LargestProjectIdentifierReadsAsItself) {
    StartDeclared();
    ITag* const tag = Tag("2?ID?PROJ_ID?0x7FFFFFFF?unsignedInt");
    EXPECT_EQ(Read({tag}).values, Hex("FF FF FF 7F"));
    Bytes value(4);
    EXPECT_TRUE(driver->Read(tag, value.data()));
    EXPECT_EQ(value, Hex("FF FF FF 7F"));
    EXPECT_TRUE(driver->ReadBlock(tag, value.data(), 4));
    EXPECT_EQ(value, Hex("FF FF FF 7F"));
}

TEST_F(EntryPointsTest, TagsBehindAProjectIdentifierAreNotAskedForAndKeepTheirFirstStatus) {
    StartDeclared();
    ReadOutcome const outcome = Read({Tag("1?ID?PROJ_ID?7?unsignedInt"), Tag("1?A?M?16?short")});
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.values, Hex("07 00 00 00 | 00 00"));
    EXPECT_EQ(outcome.status, (std::vector<idal_error_t>{1, 1})) << "a tag is good until an exchange finds otherwise";
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(EntryPointsTest, ProjectIdentifierZeroReadsAsZero) {
    StartDeclared();
    EXPECT_EQ(Read({Tag("2?ID?PROJ_ID??unsignedInt")}).values, Hex("00 00 00 00"));
}

TEST_F(EntryPointsTest, ProjectIdentifierDatagramNeedsNoStart) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    ReadOutcome const outcome = Read({Tag("1?ID?PROJ_ID?7?unsignedInt")});
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.values, Hex("07 00 00 00"));
}

TEST_F(EntryPointsTest, SingleProjectIdentifierNeedsAStart) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    ITag* const tag = Tag("1?ID?PROJ_ID?7?unsignedInt");
    Bytes value(4);
    EXPECT_FALSE(driver->Read(tag, value.data()));
    ExpectError(-3, "Protocol not started");
    driver->Config("none");
    EXPECT_FALSE(driver->Write(tag, value.data()));
    ExpectError(-3, "Protocol not started");
}

TEST_F(EntryPointsTest, ProjectIdentifierIsConvertedToo) {
    StartDeclared();
    EXPECT_EQ(Read({Tag("2?ID?PROJ_ID?0x12345678?unsignedInt(swap4)")}).values, Hex("12 34 56 78"));
}

TEST_F(EntryPointsTest, ProjectIdentifierReadsWithoutAnyAttempt) {
    ConfigureAndStart(ConfigText().Set("repeat", "0"));
    EXPECT_TRUE(Read({Tag("1?ID?PROJ_ID?7?unsignedInt")}).ok);
}

TEST_F(EntryPointsTest, WrittenProjectIdentifierGoesNowhere) {
    StartDeclared();
    ITag* const tag = Tag("1?ID?PROJ_ID?7?unsignedInt");
    Bytes const value = Hex("09 00 00 00");
    EXPECT_TRUE(driver->Write(tag, value.data())) << "it is reported as done all the same";
    EXPECT_TRUE(port.writes.empty());
    EXPECT_EQ(Read({tag}).values, Hex("07 00 00 00"));
}

TEST_F(EntryPointsTest, WrittenProjectIdentifierIsConverted) {
    StartDeclared();
    ITag* const tag = Tag("1?ID?PROJ_ID?7?unsignedInt(bcd)");
    Bytes const tooBig = Hex("00 E1 F5 05"); // 100,000,000
    EXPECT_FALSE(driver->Write(tag, tooBig.data()));
    ExpectError(-9, "write conversion error");
    EXPECT_TRUE(port.writes.empty());
}

// --- a memory type of 4-byte elements ---

/** A model with the address spaces "M4" (4-byte elements) and "MR" (read-only); it is not "Intel". */
class ElementTest : public EntryPointsTest {
protected:
    void SetUp() override {
        EntryPointsTest::SetUp();
        Model model("Elements");
        model.setMaxDatagramItems(90);
        model.setMaxDatagramLength(1024);
        MemoryType type;
        type.setName("M4");
        type.setNaturalType(ICU_INT);
        type.setMaxIndex(0x7fffffff);
        model.addMemoryType(type);
        type.setName("MR");
        type.setReadOnly(true);
        model.addMemoryType(type);
        type.setName("PROJ_ID");
        type.setReadOnly(false);
        type.setNaturalType(ICU_UNSIGNED_INT);
        model.addMemoryType(type);
        Velk().getMemoryManager().addModel(model);
        ConfigureAndStart(ConfigText().Set("model", "Elements"));
        Tag("1?ID?PROJ_ID?7?unsignedInt");
    }

    static Bytes BigReadOf(std::string_view descriptor) {
        return Hex("2E 00 | 00 00 00 01") + Hex(descriptor) + Hex("00 00 00 07");
    }
    static Bytes BigWriteOf(std::string_view descriptor, std::string_view value) {
        return Hex("3C 00 | 00 00 00 01") + Hex(descriptor) + Hex(value) + Hex("00 00 00 07");
    }
};

TEST_F(ElementTest, OffsetsCountElements) {
    EXPECT_EQ(Tag("1?A?M4?5?int")->GetByteOffset(), 20);
    EXPECT_EQ(Tag("1?A?M4?5.1?short")->GetByteOffset(), 22);
    EXPECT_EQ(Tag("1?A?M4?5.3?byte")->GetByteOffset(), 23);
    EXPECT_EQ(Tag("1?A?M4?5.9?boolean")->GetByteOffset(), 21);
    EXPECT_EQ(Tag("1?A?M4?5.9?boolean")->GetBitIndex(), 1);
    EXPECT_EQ(Tag("1?A?M4?5.31?boolean")->GetByteOffset(), 23);
}

TEST_F(ElementTest, SubindexStaysInsideTheElement) {
    for (char const* address :
         {"1?A?M4?5.2?short", "1?A?M4?5.4?byte", "1?A?M4?5.32?boolean", "1?A?M4?5.1?int", "1?A?M4?5.1?double"}) {
        EXPECT_EQ(driver->CreateTag(address), nullptr) << address;
        ExpectError(-1, "Tag URI error: " + std::string(address) + " - Subindex invalid");
    }
}

TEST_F(ElementTest, PartOfAnElementIsCutOutOfItsBlock) {
    Motorola().LinkCheck().Login().Exchange(BigReadOf("00 00 00 00 00 05 00 00 00 04"), Value(Hex("01 02 03 04")));
    Bytes value(2);
    EXPECT_TRUE(driver->Read(Tag("1?A?M4?5.1?short"), value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(value, Hex("04 03")) << "bytes 2 and 3, most significant first";
}

TEST_F(ElementTest, BlockIsRoundedUpToElements) {
    Motorola().LinkCheck().Login().Exchange(BigReadOf("00 00 00 00 00 05 00 00 00 08"),
                                            Value(Hex("01 02 03 04 05 06 07 08")));
    Bytes value(6, 0xCC);
    EXPECT_TRUE(driver->ReadBlock(Tag("1?A?M4?5.1?short"), value.data(), 4)) << driver->GetLastErrorString();
    EXPECT_EQ(value, Hex("03 04 05 06 CC CC"));
}

TEST_F(ElementTest, WholeElementIsWrittenWithoutReading) {
    Motorola().LinkCheck().Login().Exchange(BigWriteOf("00 00 00 00 00 05 00 00 00 04", "12 34 56 78"), Hex("00 00"));
    Bytes const value = Hex("78 56 34 12");
    EXPECT_TRUE(driver->Write(Tag("1?A?M4?5?int"), value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(port.purges, 1);
}

TEST_F(ElementTest, FirstPartOfAnElementIsWrittenAfterReadingTheElement) {
    Motorola()
        .LinkCheck()
        .Login()
        .Exchange(BigReadOf("00 00 00 00 00 05 00 00 00 04"), Value(Hex("01 02 03 04")))
        .LinkCheck()
        .Exchange(BigWriteOf("00 00 00 00 00 05 00 00 00 02", "12 34"), Hex("00 00"));
    Bytes const value = Hex("34 12");
    EXPECT_TRUE(driver->Write(Tag("1?A?M4?5?short"), value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(port.purges, 2);
}

TEST_F(ElementTest, WriteOfALaterPartCarriesTheFirstBytesOfTheBlock) {
    // Kept on purpose: the image is sent from its start, not from the part.
    Motorola()
        .LinkCheck()
        .Login()
        .Exchange(BigReadOf("00 00 00 00 00 05 00 00 00 04"), Value(Hex("01 02 03 04")))
        .LinkCheck()
        .Exchange(BigWriteOf("00 00 00 00 00 05 00 00 00 02", "01 02"), Hex("00 00"));
    Bytes const value = Hex("34 12");
    EXPECT_TRUE(driver->Write(Tag("1?A?M4?5.1?short"), value.data())) << driver->GetLastErrorString();
}

TEST_F(ElementTest, PartIsNotWrittenWhenItsElementCannotBeRead) {
    Motorola().LinkCheck().Login().Exchange(BigReadOf("00 00 00 00 00 05 00 00 00 04"), Hex("00 09"));
    Bytes const value = Hex("34 12");
    EXPECT_FALSE(driver->Write(Tag("1?A?M4?5.1?short"), value.data()));
    ExpectError(-6, "Command not acknowledged by PLC");
}

TEST_F(ElementTest, ConversionOfAPartFailsAfterReadingTheElement) {
    Motorola().LinkCheck().Login().Exchange(BigReadOf("00 00 00 00 00 05 00 00 00 04"), Value(Hex("01 02 03 04")));
    Bytes const value = Hex("10 27");
    EXPECT_FALSE(driver->Write(Tag("1?A?M4?5?unsignedShort(bcd)"), value.data()));
    ExpectError(-9, "write conversion error");
}

TEST_F(ElementTest, BitInAnElementIsReadFromItsByte) {
    Motorola().LinkCheck().Login().Exchange(BigReadOf("00 00 00 00 00 05 00 00 00 04"), Value(Hex("00 02 00 00")));
    Bytes value = Hex("CC");
    EXPECT_TRUE(driver->Read(Tag("1?A?M4?5.9?boolean"), value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(value, Hex("01"));
}

TEST_F(ElementTest, ReadOnlyMemoryIsNotWritten) {
    ITag* const tag = Tag("1?A?MR?5?int");
    EXPECT_TRUE(tag->IsReadOnly());
    EXPECT_FALSE(tag->IsWriteOnly());
    Bytes const value(4);
    EXPECT_FALSE(driver->Write(tag, value.data()));
    ExpectError(-1, "writing to read_only type");
    EXPECT_TRUE(port.writes.empty());
    EXPECT_FALSE(Tag("1?A?M4?5?int")->IsReadOnly());
}

TEST_F(ElementTest, ReadOnlyMemoryIsReportedOnlyOnceStarted) {
    ITag* const tag = Tag("1?A?MR?5?int");
    driver->Stop();
    Bytes const value(4);
    EXPECT_FALSE(driver->Write(tag, value.data()));
    ExpectError(-3, "Protocol not started");
}

// --- memory ---

class FootprintTest : public EntryPointsTest {
protected:
    void SetUp() override {
        EntryPointsTest::SetUp();
        StartDeclared(ConfigText().Set("BlockSize", "1460"));
    }

    Conversation Line() { return {port, {.blockSize = 1460}}; }

    ITag* String(int length) { return Tag("1?A?M?16?string-" + std::to_string(length)); }

    static Bytes ReadOfLength(int length) {
        return Hex("2E 00 | 01 00 00 00 | 00 00 10 00 00 00") + Little(static_cast<unsigned>(length), 4) +
               Hex("07 00 00 00");
    }
    static Bytes WriteOfLength(int length) {
        return Hex("3C 00 | 01 00 00 00 | 00 00 10 00 00 00") + Little(static_cast<unsigned>(length), 4) +
               Bytes(static_cast<std::size_t>(length), 0x41) + Hex("07 00 00 00");
    }

    /** Logs in, so that a steady cycle follows. */
    void WarmUp() {
        Line().LinkCheck().Login().Exchange(ReadOfLength(1), Value(Hex("41")));
        EXPECT_TRUE(Read({String(1)}).ok);
    }

    std::size_t AllocationsOfARead(int length) {
        ITag* const tag = String(length);
        ITag const* const tags[] = {tag};
        Bytes value(static_cast<std::size_t>(length));
        idal_error_t status = 0;
        Line().LinkCheck().Exchange(ReadOfLength(length), Value(Bytes(static_cast<std::size_t>(length), 0x41)));
        AllocationGate const gate;
        bool const ok = driver->ReadDatagramWithStatus(tags, 1, value.data(), &status);
        std::size_t const seen = AllocationGate::Seen();
        EXPECT_EQ(AllocationGate::Freed(), seen);
        EXPECT_TRUE(ok);
        return seen;
    }

    std::size_t AllocationsOfAWrite(int length) {
        ITag* const tag = String(length);
        ITag const* const tags[] = {tag};
        Bytes const value(static_cast<std::size_t>(length), 0x41);
        idal_error_t status = 0;
        Line().LinkCheck().Exchange(WriteOfLength(length), Hex("00 00"));
        AllocationGate const gate;
        bool const ok = driver->WriteDatagramWithStatus(tags, 1, value.data(), &status);
        std::size_t const seen = AllocationGate::Seen();
        EXPECT_EQ(AllocationGate::Freed(), seen);
        EXPECT_TRUE(ok);
        return seen;
    }

    std::size_t AllocationsOfASingleRead(int length) {
        ITag* const tag = String(length);
        Bytes value(static_cast<std::size_t>(length));
        Line().LinkCheck().Exchange(ReadOfLength(length), Value(Bytes(static_cast<std::size_t>(length), 0x41)));
        AllocationGate const gate;
        bool const ok = driver->Read(tag, value.data());
        std::size_t const seen = AllocationGate::Seen();
        EXPECT_EQ(AllocationGate::Freed(), seen);
        EXPECT_TRUE(ok);
        return seen;
    }
};

TEST_F(FootprintTest, GateCountsWhatThisProgramAllocates) {
    AllocationGate const gate;
    auto const* const something = new int(1);
    EXPECT_EQ(AllocationGate::Seen(), 1U);
    delete something;
    EXPECT_EQ(AllocationGate::Freed(), 1U);
}

TEST_F(FootprintTest, ImageUpTo128BytesIsOnTheStack) {
    WarmUp();
    EXPECT_EQ(AllocationsOfARead(2), 0U);
    EXPECT_EQ(AllocationsOfARead(128), 0U);
    EXPECT_EQ(AllocationsOfARead(129), 1U);
    EXPECT_EQ(AllocationsOfAWrite(2), 0U);
    EXPECT_EQ(AllocationsOfAWrite(128), 0U);
    EXPECT_EQ(AllocationsOfAWrite(129), 1U);
}

TEST_F(FootprintTest, ScratchUpTo256BytesIsOnTheStack) {
    WarmUp();
    EXPECT_EQ(AllocationsOfARead(256), 1U) << "the image alone";
    EXPECT_EQ(AllocationsOfARead(257), 2U) << "and the conversion's scratch";
    EXPECT_EQ(AllocationsOfAWrite(256), 1U);
    EXPECT_EQ(AllocationsOfAWrite(257), 2U);
}

TEST_F(FootprintTest, SingleReadUpTo64BytesUsesNoHeap) {
    WarmUp();
    EXPECT_EQ(AllocationsOfASingleRead(64), 0U);
    EXPECT_EQ(AllocationsOfASingleRead(65), 1U);
    EXPECT_EQ(AllocationsOfASingleRead(128), 1U);
    EXPECT_EQ(AllocationsOfASingleRead(129), 2U);
}

TEST_F(FootprintTest, SteadyCycleOfBoundTagsUsesNoHeap) {
    DeleteDriver();
    MakeDriver();
    Store(1, SymbolFileBytes(7).Variable("PLC_PRG.SOME_RATHER_LONG_NAME", 0, 16).Build());
    ConfigureAndStart();
    driver->SetIdent("an instance with a name that is longer than a small string");
    std::vector<ITag*> const tags(20, Tag("1?PLC_PRG.SOME_RATHER_LONG_NAME?M?0?int(swap4)"));
    Bytes request = Hex("2E 00 | 14 00 00 00");
    Bytes reply = Hex("00 00 | 00 00 00 00");
    for (int i = 0; i < 20; ++i) {
        request = request + Hex("00 00 10 00 00 00 04 00 00 00");
        reply = reply + Hex("01 11 22 33 44");
    }
    request = request + Hex("07 00 00 00");
    Intel().LinkCheck().Login().Exchange(request, reply);
    EXPECT_TRUE(Read(tags).ok) << driver->GetLastErrorString();
    Bytes values(80);
    std::vector<idal_error_t> status(20);
    for (int cycle = 0; cycle < 3; ++cycle) {
        Intel().LinkCheck().Exchange(request, reply);
    }
    AllocationGate const gate;
    for (int cycle = 0; cycle < 3; ++cycle) {
        EXPECT_TRUE(driver->ReadDatagramWithStatus(tags.data(), 20, values.data(), status.data()));
    }
    EXPECT_EQ(AllocationGate::Seen(), 0U);
}

// --- what no exchange can carry, and lists of nothing ---

TEST_F(EntryPointsTest, ReadOfAValueThatNoExchangeCanCarryEndsAsTheOtherCallsDo) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    std::vector<ITag*> const tags{Tag("1?A?M?0?string-75001"), Tag("1?A?M?0?string-16777217"),
                                  Tag("1?A?M?0?string-2147483647")};
    unsigned char value = 0xCC; // of which nothing is written
    for (ITag const* tag : tags) {
        driver->Config("none");
        EXPECT_FALSE(driver->Read(tag, &value));
        ExpectError(-3, "Protocol not started");
    }
    StartDeclared();
    for (ITag const* tag : tags) {
        driver->Config("none");
        EXPECT_FALSE(driver->Read(tag, &value));
        ExpectError(-1, "Rx Buffer dimension exceeded");
        driver->Config("none");
        EXPECT_FALSE(driver->Write(tag, &value));
        ExpectError(-1, "Tx Buffer dimension exceeded");
    }
    EXPECT_EQ(value, 0xCC);
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(EntryPointsTest, ListOfNoItemsNeedsNeitherValuesNorStatuses) {
    StartDeclared();
    ITag const* const tags[] = {Tag("1?A?M?0?short")};
    Intel().LinkCheck().Login();
    for (int i = 0; i < 2; ++i) {
        Intel().Exchange(Hex("2E 00 | 00 00 00 00 | 07 00 00 00"), Hex("00 00 00 00 00 00")).LinkCheck();
    }
    Intel().Exchange(Hex("3C 00 | 00 00 00 00 | 07 00 00 00"), Hex("00 00"));
    EXPECT_TRUE(driver->ReadDatagram(tags, 0, nullptr)) << driver->GetLastErrorString();
    EXPECT_TRUE(driver->ReadDatagramWithStatus(tags, 0, nullptr, nullptr)) << driver->GetLastErrorString();
    EXPECT_TRUE(driver->WriteDatagramWithStatus(tags, 0, nullptr, nullptr)) << driver->GetLastErrorString();
}

TEST_F(EntryPointsTest, ListOfItemsNeedsStatuses) {
    StartDeclared();
    ITag const* const tags[] = {Tag("1?A?M?0?byte")};
    unsigned char value = 0xCC;
    EXPECT_FALSE(driver->ReadDatagramWithStatus(tags, 1, &value, nullptr));
    ExpectError(-1, "Invalid argument");
    driver->Config("none");
    EXPECT_FALSE(driver->WriteDatagramWithStatus(tags, 1, &value, nullptr));
    ExpectError(-1, "Invalid argument");
    EXPECT_EQ(value, 0xCC);
}

} // namespace
