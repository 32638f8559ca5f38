#include "tests/support/VelkTest.h"

#include <string>

/** The variable list itself: what is requested, what is written, and which part of the answer reaches the host. */
namespace {

using namespace velktest;

/** Node 1 has a stored file of project 7; LogIn() does the login. */
class VariableListTest : public VelkTest {
protected:
    void SetUp() override {
        VelkTest::SetUp();
        Store(1, SymbolFileBytes(7)
                     .Variable("A", 0, 16)
                     .Variable("PLC_PRG.B", 1, 0x01020304)
                     .Variable("FLAG", 0, 13)
                     .Variable("AREA6", 6, 40)
                     .Variable("FAR", 0, 0x80000000)
                     .Variable("EDGE", 0, 0x7FFFFFFF)
                     .Build());
    }

    /** The request of a read of one item. */
    static Bytes OneItem(std::string_view descriptor) {
        return Hex("2E 00 | 01 00 00 00") + Hex(descriptor) + Hex("07 00 00 00");
    }

    /** Checks the link, logs in and answers the list. */
    void Script(Bytes const& request, Bytes const& reply) { Intel().LinkCheck().Login().Exchange(request, reply); }
    void Script(std::string_view request, std::string_view reply) { Script(Hex(request), Hex(reply)); }
};

TEST_F(VariableListTest, AreaAndOffsetAreTheVariables) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?PLC_PRG/B?M?5?int");
    Script("2E 00 | 01 00 00 00 | 01 00 04 03 02 01 04 00 00 00 | 07 00 00 00", "00 00 | 00 00 00 00 | 01 78 56 34 12");
    ReadOutcome const outcome = Read({tag});
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(outcome.values, Hex("78 56 34 12"));
    EXPECT_EQ(tag->GetByteOffset(), 0x01020304);
    EXPECT_STREQ(tag->GetVarName(), "1?PLC_PRG/B?M?5?int") << "the tag's name stays the address";
}

TEST_F(VariableListTest, NamesAreFoundWhateverTheirCase) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?plc_prg.b?M?5?byte");
    Script("2E 00 | 01 00 00 00 | 01 00 04 03 02 01 01 00 00 00 | 07 00 00 00", "00 00 | 00 00 00 00 | 01 78");
    EXPECT_TRUE(Read({tag}).ok);
}

TEST_F(VariableListTest, LargestOffsetThatFits) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?EDGE?M?0?byte");
    Script(OneItem("00 00 FF FF FF 7F 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 78"));
    EXPECT_EQ(Read({tag}).status[0], 1);
}

TEST_F(VariableListTest, SeveralItemsBothByteOrders) {
    Store(2, SymbolFileBytes(9).Variable("A", 0, 16).Variable("B", 1, 32).Build());
    ConfigureAndStart(ConfigText().Node(2, "model", "Motorola"));
    std::vector<ITag*> const little{Tag("1?A?M?0?short"), Tag("1?PLC_PRG.B?M?0?int"), Tag("1?A?M?0?string-3")};
    Script("2E 00 | 03 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 01 00 04 03 02 01 04 00 00 00 | "
           "00 00 10 00 00 00 03 00 00 00 | 07 00 00 00",
           "00 00 | 00 00 00 00 | 01 34 12 | 01 78 56 34 12 | 01 41 42 43");
    ReadOutcome outcome = Read(little);
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(outcome.values, Hex("34 12 78 56 34 12 41 42 43"));
    EXPECT_EQ(outcome.status, (std::vector<idal_error_t>{1, 1, 1}));

    std::vector<ITag*> const big{Tag("2?A?M?0?short"), Tag("2?B?M?0?int"), Tag("2?A?M?0?string-3")};
    Intel().Logout();
    Motorola().LinkCheck().Login().Exchange(
        "2E 00 | 00 00 00 03 | 00 00 00 00 00 10 00 00 00 02 | 00 01 00 00 00 20 00 00 00 04 | "
        "00 00 00 00 00 10 00 00 00 03 | 00 00 00 09",
        "00 00 | 00 00 00 00 | 01 12 34 | 01 12 34 56 78 | 01 41 42 43");
    outcome = Read(big);
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(outcome.values, Hex("34 12 78 56 34 12 41 42 43"));
}

TEST_F(VariableListTest, SeveralWrittenItemsBothByteOrders) {
    Store(2, SymbolFileBytes(9).Variable("A", 0, 16).Variable("B", 1, 32).Build());
    ConfigureAndStart(ConfigText().Node(2, "model", "Motorola"));
    Script("3C 00 | 03 00 00 00 | 00 00 10 00 00 00 02 00 00 00 34 12 | 01 00 04 03 02 01 04 00 00 00 78 56 34 12 | "
           "00 00 10 00 00 00 03 00 00 00 41 42 43 | 07 00 00 00",
           "00 00");
    EXPECT_TRUE(Write({Tag("1?A?M?0?short"), Tag("1?PLC_PRG.B?M?0?int"), Tag("1?A?M?0?string-3")},
                      Hex("34 12 78 56 34 12 41 42 43")))
        << driver->GetLastErrorString();
    Intel().Logout();
    Motorola().LinkCheck().Login().Exchange(
        "3C 00 | 00 00 00 03 | 00 00 00 00 00 10 00 00 00 02 12 34 | 00 01 00 00 00 20 00 00 00 04 12 34 56 78 | "
        "00 00 00 00 00 10 00 00 00 03 41 42 43 | 00 00 00 09",
        "00 00");
    EXPECT_TRUE(
        Write({Tag("2?A?M?0?short"), Tag("2?B?M?0?int"), Tag("2?A?M?0?string-3")}, Hex("34 12 78 56 34 12 41 42 43")))
        << driver->GetLastErrorString();
}

TEST_F(VariableListTest, EmptyListIsTenBytesAndItsReplySix) {
    ConfigureAndStart();
    ITag const* const tags[] = {Tag("1?A?M?0?short")};
    unsigned char nothing = 0xCC;
    Script("2E 00 | 00 00 00 00 | 07 00 00 00", "00 00 00 00 00 00");
    EXPECT_TRUE(Velk().doProtocolInner(false, tags, 0, &nothing, 0)) << driver->GetLastErrorString();
    Intel().LinkCheck().Exchange("2E 00 | 00 00 00 00 | 07 00 00 00", "00 00 00 00 00 00 01");
    EXPECT_FALSE(Velk().doProtocolInner(false, tags, 0, &nothing, 0));
    ExpectError(-6, "Wrong number of bytes received");
    EXPECT_EQ(nothing, 0xCC);
}

TEST_F(VariableListTest, ReplyToAnEmptyListMustNotBeShorterEither) {
    ConfigureAndStart();
    ITag const* const tags[] = {Tag("1?A?M?0?short")};
    unsigned char nothing = 0xCC;
    for (std::string const reply : {"00 00 00 00 00", "00 00"}) {
        Conversation line = Intel();
        line.LinkCheck();
        if (reply.size() > 6) {
            line.Login();
        }
        line.Exchange("2E 00 | 00 00 00 00 | 07 00 00 00", reply);
        EXPECT_FALSE(Velk().doProtocolInner(false, tags, 0, &nothing, 0));
        ExpectError(-6, "Wrong number of bytes received");
    }
}

TEST_F(VariableListTest, EmptyWrittenListHasATwoByteReply) {
    ConfigureAndStart();
    ITag const* const tags[] = {Tag("1?A?M?0?short")};
    unsigned char nothing = 0xCC;
    Script("3C 00 | 00 00 00 00 | 07 00 00 00", "00 00");
    EXPECT_TRUE(Velk().doProtocolInner(true, tags, 0, &nothing, 0)) << driver->GetLastErrorString();
}

TEST_F(VariableListTest, TooManyItemsAreRefusedBeforeAnythingIsSent) {
    ConfigureAndStart();
    std::vector<ITag*> const tags(91, Tag("1?A?M?0?byte"));
    EXPECT_FALSE(Read(tags).ok);
    ExpectError(-1, "Too many items in datagram");
    EXPECT_TRUE(port.writes.empty());
    EXPECT_FALSE(Write(tags, Bytes(91)));
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(VariableListTest, NinetyItemsTravelInEightBlocks) {
    ConfigureAndStart();
    std::vector<ITag*> const tags(90, Tag("1?A?M?0?byte"));
    Bytes request = Hex("2E 00 | 5A 00 00 00");
    Bytes reply = Hex("00 00 | 00 00 00 00");
    for (unsigned i = 0; i < 90; ++i) {
        request = request + Hex("00 00 10 00 00 00 01 00 00 00");
        reply = reply + Hex("01") + Little(i, 1);
    }
    Script(request + Hex("07 00 00 00"), reply); // 910 bytes in blocks of 120
    ReadOutcome const outcome = Read(tags);
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(outcome.values, Counting(90));
    EXPECT_EQ(port.writes.size(), 3U + 3U + 8U + 1U + 2U);
}

// --- replies to a read ---

TEST_F(VariableListTest, BytesTwoToFiveOfTheReplyAreNotExamined) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | DE AD BE EF | 01 34 12"));
    EXPECT_EQ(Read({tag}).values, Hex("34 12"));
}

TEST_F(VariableListTest, BadQualityFailsTheCallAfterTheValuesWereCopied) {
    ConfigureAndStart();
    ITag const* const tags[] = {Tag("1?A?M?0?short"), Tag("1?A?M?0?byte"), Tag("1?A?M?0?short")};
    Script("2E 00 | 03 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 00 00 10 00 00 00 01 00 00 00 | "
           "00 00 10 00 00 00 02 00 00 00 | 07 00 00 00",
           "00 00 | 00 00 00 00 | 01 34 12 | 00 55 | 01 78 56");
    Bytes image(5, 0xCC);
    EXPECT_FALSE(Velk().doProtocolInner(false, tags, 3, image.data(), 0));
    ExpectError(-6, "One of the values has bad quality");
    EXPECT_EQ(image, Hex("34 12 55 78 56"));
}

TEST_F(VariableListTest, AnyQualityButOneIsBad) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | 02 34 12"));
    ReadOutcome outcome = Read({tag});
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.status[0], 0);
    ExpectError(-6, "One of the values has bad quality");
    Intel().LinkCheck().Exchange(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | FF 34 12"));
    EXPECT_FALSE(Read({tag}).ok);
}

TEST_F(VariableListTest, ReplyThatEndsInsideAValue) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-1, "Rx Buffer dimension exceeded");
    EXPECT_TRUE(HasFault());
}

TEST_F(VariableListTest, ReplyWithoutItsItems) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    // The full reply of a first read is still in the buffer when the shorter ones arrive.
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34 12"));
    EXPECT_TRUE(Read({tag}).ok);
    for (std::string_view const reply : {"00 00 | 00 00 00 00 | 01", "00 00 | 00 00 00 00", "00 00 00", "00 00"}) {
        Intel().LinkCheck().Exchange(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex(reply));
        ReadOutcome const outcome = Read({tag});
        EXPECT_FALSE(outcome.ok) << reply;
        EXPECT_EQ(outcome.values, Hex("CC CC")) << reply;
        ExpectError(-1, "Rx Buffer dimension exceeded");
    }
}

TEST_F(VariableListTest, ReplyWithoutAStatusWordIsAWrongReply) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34 12"));
    EXPECT_TRUE(Read({tag}).ok);
    for (std::string_view const reply : {"00", ""}) {
        Intel().LinkCheck().Exchange(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex(reply));
        ReadOutcome const outcome = Read({tag});
        EXPECT_FALSE(outcome.ok) << reply;
        EXPECT_EQ(outcome.values, Hex("CC CC")) << reply;
        EXPECT_EQ(driver->GetLastError(), -6) << driver->GetLastErrorString();
    }
}

TEST_F(VariableListTest, ReplyLongerThanItsItems) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34 12 | 00"));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Wrong number of bytes received");
}

TEST_F(VariableListTest, WrongLengthIsReportedBeforeBadQuality) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | 00 34 12 | 00"));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Wrong number of bytes received");
}

TEST_F(VariableListTest, AnyOtherStatusWordIsARefusal) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("E8 03"));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Command not acknowledged by PLC");
    for (std::string_view const status : {"01 00", "00 01", "48 01", "33 33", "FF FF 00 00 00 00 01 34 12"}) {
        driver->Config("none"); // another text replaces the error
        Intel().LinkCheck().Exchange(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex(status));
        EXPECT_FALSE(Read({tag}).ok);
        ExpectError(-6, "Command not acknowledged by PLC");
        // A good read in between, so that the login is not discarded.
        Intel().LinkCheck().Exchange(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34 12"));
        EXPECT_TRUE(Read({tag}).ok);
    }
}

// --- replies to a write ---

TEST_F(VariableListTest, WriteReplyIsExactlyAStatusWordOfZero) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Bytes const request = Hex("3C 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 34 12 | 07 00 00 00");
    Script(request, Hex("00 00"));
    EXPECT_TRUE(Write({tag}, Hex("34 12")));
    for (std::string_view const reply : {"", "00", "00 00 00", "01 00", "00 01", "48 00"}) {
        driver->Config("none");
        Intel().LinkCheck().Exchange(request, Hex(reply));
        EXPECT_FALSE(Write({tag}, Hex("34 12"))) << reply;
        ExpectError(-6, "Wrong reply length or ack in WriteData operation");
        Intel().LinkCheck().Exchange(request, Hex("00 00"));
        EXPECT_TRUE(Write({tag}, Hex("34 12")));
    }
}

// --- missing variables ---

TEST_F(VariableListTest, MissingVariableIsReadFromItsDefaultAddress) {
    ConfigureAndStart();
    std::vector<ITag*> const tags{Tag("1?A?M?0?short"), Tag("1?NO/SUCH?I?0x63?short"), Tag("1?A?M?0?byte")};
    Script("2E 00 | 03 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 01 00 63 00 00 00 02 00 00 00 | "
           "00 00 10 00 00 00 01 00 00 00 | 07 00 00 00",
           "00 00 | 00 00 00 00 | 01 34 12 | 01 78 56 | 01 99");
    ReadOutcome const outcome = Read(tags);
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.values, Hex("34 12 78 56 99"));
    EXPECT_EQ(outcome.status, (std::vector<idal_error_t>{1, -1, 1}));
    ExpectError(-1, "tag NO.SUCH not present in symbol file");
}

TEST_F(VariableListTest, LastMissingVariableIsNamed) {
    ConfigureAndStart();
    Script("2E 00 | 02 00 00 00 | 00 00 01 00 00 00 01 00 00 00 | 00 00 02 00 00 00 01 00 00 00 | 07 00 00 00",
           "00 00 | 00 00 00 00 | 01 34 | 01 78");
    ReadOutcome const outcome = Read({Tag("1?X?M?1?byte"), Tag("1?Y?M?2?byte")});
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.status, (std::vector<idal_error_t>{-1, -1}));
    ExpectError(-1, "tag Y not present in symbol file");
}

TEST_F(VariableListTest, PlainDatagramReadsAMissingVariableWithoutAWord) {
    ConfigureAndStart();
    ITag const* const tags[] = {Tag("1?X?M?1?byte")};
    unsigned char value = 0xCC;
    Script(OneItem("00 00 01 00 00 00 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
    EXPECT_TRUE(driver->ReadDatagram(tags, 1, &value));
    EXPECT_EQ(value, 0x34);
    ExpectError(1, "");
}

TEST_F(VariableListTest, VeryLongMissingNameIsReportedWithoutOverrun) {
    ConfigureAndStart();
    std::string const name(5000, 'N');
    ITag* const tag = Tag("1?" + name + "?M?1?byte");
    Script(OneItem("00 00 01 00 00 00 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
    EXPECT_EQ(Read({tag}).status[0], -1);
    ExpectError(-1, "tag " + name + " not present in symbol file");
}

TEST_F(VariableListTest, MissingVariableIsNeverWritten) {
    ConfigureAndStart();
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Write({Tag("1?A?M?0?short"), Tag("1?NO/SUCH?M?1?short")}, Hex("34 12 34 12")));
    ExpectError(-1, "1?NO/SUCH?M?1?short not present in Symbols files");
    EXPECT_TRUE(HasFault());
}

TEST_F(VariableListTest, VariableFoundLaterIsGoodAgain) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?LATE?M?1?byte");
    Script(OneItem("00 00 01 00 00 00 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
    EXPECT_EQ(Read({tag}).status[0], -1);
    Intel()
        .LinkCheck()
        .Exchange(OneItem("00 00 01 00 00 00 01 00 00 00"), Hex("33 00"))
        .Upload(SymbolFileBytes(8).Variable("LATE", 0, 77).Build());
    EXPECT_FALSE(Read({tag}).ok);
    Intel().LinkCheck().Exchange("2E 00 | 01 00 00 00 | 00 00 4D 00 00 00 01 00 00 00 | 08 00 00 00",
                                 "00 00 | 00 00 00 00 | 01 34");
    EXPECT_EQ(Read({tag}).status[0], 1);
}

TEST_F(VariableListTest, VariableThatWentAwayReturnsToItsDefaultAddress) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?I?1?byte");
    Script(OneItem("00 00 10 00 00 00 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
    EXPECT_EQ(Read({tag}).status[0], 1);
    Intel()
        .LinkCheck()
        .Exchange(OneItem("00 00 10 00 00 00 01 00 00 00"), Hex("33 00"))
        .Upload(SymbolFileBytes(8).Variable("OTHER", 0, 77).Build());
    EXPECT_FALSE(Read({tag}).ok);
    Intel().LinkCheck().Exchange("2E 00 | 01 00 00 00 | 01 00 01 00 00 00 01 00 00 00 | 08 00 00 00",
                                 "00 00 | 00 00 00 00 | 01 34");
    EXPECT_EQ(Read({tag}).status[0], -1);
    Intel().LinkCheck();
    EXPECT_FALSE(Write({tag}, Hex("55")));
    ExpectError(-1, "1?A?I?1?byte not present in Symbols files");
}

TEST_F(VariableListTest, VariableInAnUnknownAreaIsTreatedAsMissing) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?AREA6?Q?3?byte");
    Script(OneItem("02 00 03 00 00 00 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
    ReadOutcome const outcome = Read({tag});
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.status[0], -1);
    ExpectError(-1, "tag AREA6 not present in symbol file");
    Intel().LinkCheck();
    EXPECT_FALSE(Write({tag}, Hex("55")));
    ExpectError(-1, "1?AREA6?Q?3?byte not present in Symbols files");
}

TEST_F(VariableListTest, VariableAtAnOffsetBeyondAnIntIsTreatedAsMissing) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?FAR?Q?3?byte");
    Script(OneItem("02 00 03 00 00 00 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
    EXPECT_EQ(Read({tag}).status[0], -1);
    Intel().LinkCheck();
    EXPECT_FALSE(Write({tag}, Hex("55")));
    ExpectError(-1, "1?FAR?Q?3?byte not present in Symbols files");
}

TEST_F(VariableListTest, UnusableVariableStaysMissingOnEveryCall) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?AREA6?Q?3?byte");
    Script(OneItem("02 00 03 00 00 00 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
    EXPECT_EQ(Read({tag}).status[0], -1);
    for (int i = 0; i < 3; ++i) {
        Intel().LinkCheck().Exchange(OneItem("02 00 03 00 00 00 01 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34"));
        EXPECT_EQ(Read({tag}).status[0], -1);
    }
}

TEST_F(VariableListTest, ProjectIdentifierTagInsideAListIsRefused) {
    ConfigureAndStart();
    std::vector<ITag*> const tags{Tag("1?A?M?0?int"), Tag("1?ID?PROJ_ID?0?unsignedInt")};
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Read(tags).ok);
    ExpectError(-1, "1?ID?PROJ_ID?0?unsignedInt not present in Symbols files");
    Intel().LinkCheck();
    EXPECT_FALSE(Write(tags, Bytes(8)));
    ExpectError(-1, "1?ID?PROJ_ID?0?unsignedInt not present in Symbols files");
}

TEST_F(VariableListTest, ProjectIdentifierTagInsideAListWithDefaultAddressesIsRefused) {
    ConfigureAndStart();
    std::vector<ITag*> const tags{Tag("1?A?M?0?int"), Tag("1?ID?PROJ_ID?9?unsignedInt")};
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Read(tags).ok);
    ExpectError(-1, "1?ID?PROJ_ID?9?unsignedInt not present in Symbols files");
}

TEST_F(VariableListTest, ProjectIdentifierTagWithTheNameOfAVariableIsRefusedInAListToo) {
    ConfigureAndStart();
    std::vector<ITag*> const tags{Tag("1?A?M?0?int"), Tag("1?A?PROJ_ID?0?unsignedInt")};
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Read(tags).ok);
    ExpectError(-1, "1?A?PROJ_ID?0?unsignedInt not present in Symbols files");
}

TEST_F(VariableListTest, ExplicitLengthLeavesTheOutputWhereItIs) {
    ConfigureAndStart();
    ITag const* const tags[] = {Tag("1?A?M?0?short"), Tag("1?A?M?0?short")};
    Script("2E 00 | 02 00 00 00 | 00 00 10 00 00 00 01 00 00 00 | 00 00 10 00 00 00 01 00 00 00 | 07 00 00 00",
           "00 00 | 00 00 00 00 | 01 34 | 01 12");
    Bytes image(2, 0xCC);
    EXPECT_TRUE(Velk().doProtocolInner(false, tags, 2, image.data(), 1)) << driver->GetLastErrorString();
    EXPECT_EQ(image, Hex("12 CC"));
}

TEST_F(VariableListTest, ItemThatPassesTheRequestIsAFaultToo) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?string-74990");
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Write({tag}, Counting(74990)));
    ExpectError(-1, "Tx Buffer dimension exceeded");
    EXPECT_TRUE(HasFault());
}

TEST_F(VariableListTest, WrittenProjectIdentifierDatagramIsRefused) {
    ConfigureAndStart();
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Write({Tag("1?ID?PROJ_ID?9?unsignedInt")}, Hex("09 00 00 00")));
    ExpectError(-1, "1?ID?PROJ_ID?9?unsignedInt not present in Symbols files");
}

// --- bits ---

TEST_F(VariableListTest, BitAreaHasSizeZeroAndAnOffsetInBits) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?FLAG?MB?2?boolean");
    EXPECT_EQ(tag->GetBitIndex(), 2);
    Script(OneItem("00 00 0D 00 00 00 00 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 20"));
    ReadOutcome outcome = Read({tag});
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(outcome.values, Hex("01")) << "bit 13 modulo 8 of the byte";
    EXPECT_EQ(tag->GetBitIndex(), 5);
    EXPECT_EQ(tag->GetByteOffset(), 1);
    Intel().LinkCheck().Exchange(OneItem("00 00 0D 00 00 00 00 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 DF"));
    EXPECT_EQ(Read({tag}).values, Hex("00"));
}

TEST_F(VariableListTest, FirstWriteOfABitLandsInTheBoundBit) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?FLAG?MB?2?boolean");
    Bytes const head = Hex("3C 00 | 01 00 00 00 | 00 00 0D 00 00 00 00 00 00 00");
    Script(head + Hex("20") + Hex("07 00 00 00"), Hex("00 00"));
    EXPECT_TRUE(Write({tag}, Hex("01"))) << driver->GetLastErrorString();
    Intel().LinkCheck().Exchange(head + Hex("20") + Hex("07 00 00 00"), Hex("00 00"));
    EXPECT_TRUE(Write({tag}, Hex("01"))) << "the second as the first";
    Intel().LinkCheck().Exchange(head + Hex("00") + Hex("07 00 00 00"), Hex("00 00"));
    EXPECT_TRUE(Write({tag}, Hex("00")));
}

TEST_F(VariableListTest, FirstSingleWriteOfABitLandsInTheBoundBit) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?FLAG?MB?2?boolean");
    Script("3C 00 | 01 00 00 00 | 00 00 0D 00 00 00 00 00 00 00 20 | 07 00 00 00", "00 00");
    unsigned char const value = 1;
    EXPECT_TRUE(driver->Write(tag, &value)) << driver->GetLastErrorString();
}

TEST_F(VariableListTest, FirstWriteOfABitBetweenOtherItems) {
    ConfigureAndStart();
    std::vector<ITag*> const tags{Tag("1?A?M?0?short"), Tag("1?FLAG?MB?2?boolean"), Tag("1?A?M?0?byte")};
    Script("3C 00 | 03 00 00 00 | 00 00 10 00 00 00 02 00 00 00 34 12 | 00 00 0D 00 00 00 00 00 00 00 20 | "
           "00 00 10 00 00 00 01 00 00 00 77 | 07 00 00 00",
           "00 00");
    EXPECT_TRUE(Write(tags, Hex("34 12 01 77"))) << driver->GetLastErrorString();
}

TEST_F(VariableListTest, FirstInvertedBitWriteLandsInTheBoundBit) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?FLAG?MB?2?boolean(inv)");
    Script("3C 00 | 01 00 00 00 | 00 00 0D 00 00 00 00 00 00 00 20 | 07 00 00 00", "00 00");
    EXPECT_TRUE(Write({tag}, Hex("00"))) << driver->GetLastErrorString();
}

TEST_F(VariableListTest, WriteOfABitThatMovedLandsInTheNewBit) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?FLAG?MB?2?boolean");
    Script("3C 00 | 01 00 00 00 | 00 00 0D 00 00 00 00 00 00 00 20 | 07 00 00 00", "00 00");
    EXPECT_TRUE(Write({tag}, Hex("01")));
    Tag("1?ID?PROJ_ID?9?unsignedInt"); // from now on with the configured bit 2
    Intel().LinkCheck().Exchange("3C 00 | 01 00 00 00 | 00 00 02 00 00 00 00 00 00 00 04 | 09 00 00 00", "00 00");
    EXPECT_TRUE(Write({tag}, Hex("01")));
}

TEST_F(VariableListTest, BooleanInAByteAreaWritesTheWholeByte) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0.3?boolean");
    Script("3C 00 | 01 00 00 00 | 00 00 10 00 00 00 01 00 00 00 08 | 07 00 00 00", "00 00");
    EXPECT_TRUE(Write({tag}, Hex("01"))) << driver->GetLastErrorString();
    Intel().LinkCheck().Exchange("2E 00 | 01 00 00 00 | 00 00 10 00 00 00 01 00 00 00 | 07 00 00 00",
                                 "00 00 | 00 00 00 00 | 01 08");
    EXPECT_EQ(Read({tag}).values, Hex("01"));
}

TEST_F(VariableListTest, BigEndianBooleanInAByteAreaStartsFromZeroedBytes) {
    ConfigureAndStart(ConfigText().Set("model", "Motorola"));
    ITag* const tag = Tag("1?A?M?0.3?boolean");
    Motorola().LinkCheck().Login().Exchange("3C 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 00 01 08 | 00 00 00 07",
                                            "00 00");
    EXPECT_TRUE(Write({tag}, Hex("01"))) << driver->GetLastErrorString();
}

TEST_F(VariableListTest, BooleanArraysTravelPacked) {
    for (std::string const model : {"Intel", "Motorola"}) {
        RemakeDriver();
        ConfigureAndStart(ConfigText().Set("model", model));
        Framing const framing{.bigEndian = model != "Intel"};
        std::vector<ITag*> const tags{Tag("1?A?M?0.6?boolean-12"), Tag("1?A?M?0?byte")};
        EXPECT_EQ(tags[0]->GetVarLength(), 12);
        EXPECT_EQ(tags[0]->PackedLen(), 3);
        Bytes const bits = framing.Word(0) + framing.Long(16) + framing.Long(3);
        Bytes const byte = framing.Word(0) + framing.Long(16) + framing.Long(1);
        Conversation line(port, framing);
        line.LinkCheck()
            .Login()
            .Exchange(Hex("2E 00") + framing.Long(2) + bits + byte + framing.Long(7),
                      Hex("00 00 | 00 00 00 00 | 01 C0 0F 01 | 01 77"))
            .LinkCheck()
            .Exchange(Hex("3C 00") + framing.Long(2) + bits + Hex("40 08 02") + byte + Hex("77") + framing.Long(7),
                      Hex("00 00"));
        ReadOutcome const outcome = Read(tags);
        EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
        // bits 6 and 7 of C0, bits 0 to 7 of 0F, bits 0 and 1 of 01
        EXPECT_EQ(outcome.values, Hex("01 01 | 01 01 01 01 00 00 00 00 | 01 00 | 77")) << model;
        EXPECT_TRUE(Write(tags, Hex("01 00 | 00 00 00 01 00 00 00 00 | 00 01 | 77"))) << model;
        port.ExpectDone();
    }
}

TEST_F(VariableListTest, LongBooleanArrayDoesNotOverrunItsImage) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?boolean-800");
    EXPECT_EQ(tag->PackedLen(), 100);
    Script(OneItem("00 00 10 00 00 00 64 00 00 00"), Hex("00 00 | 00 00 00 00 | 01") + Bytes(100, 0xAA));
    ReadOutcome const outcome = Read({tag});
    EXPECT_TRUE(outcome.ok);
    for (std::size_t i = 0; i < 800; ++i) {
        ASSERT_EQ(outcome.values[i], i % 2) << i;
    }
    Intel().LinkCheck().Exchange(Hex("3C 00 | 01 00 00 00 | 00 00 10 00 00 00 64 00 00 00") + Bytes(100, 0xAA) +
                                     Hex("07 00 00 00"),
                                 Hex("00 00"));
    EXPECT_TRUE(Write({tag}, outcome.values));
}

// --- limits ---

TEST_F(VariableListTest, ZeroLengthValues) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?string-0");
    Script(OneItem("00 00 10 00 00 00 00 00 00 00"), Hex("00 00 | 00 00 00 00 | 01"));
    EXPECT_TRUE(Read({tag}).ok) << driver->GetLastErrorString();
    Intel().LinkCheck().Exchange("3C 00 | 01 00 00 00 | 00 00 10 00 00 00 00 00 00 00 | 07 00 00 00", "00 00");
    EXPECT_TRUE(Write({tag}, {}));
}

TEST_F(VariableListTest, LargestWriteThatFitsTheRequest) {
    ConfigureAndStart(ConfigText().Set("BlockSize", "1460"));
    ITag* const tag = Tag("1?A?M?0?string-74980"); // 6 + 10 + 74,980 + 4 = 75,000
    Bytes const value = Counting(74980);
    Framing const framing{.blockSize = 1460};
    Conversation(port, framing)
        .LinkCheck()
        .Login()
        .Exchange(Hex("3C 00 | 01 00 00 00 | 00 00 10 00 00 00 E4 24 01 00") + value + Hex("07 00 00 00"),
                  Hex("00 00"));
    EXPECT_TRUE(Write({tag}, value)) << driver->GetLastErrorString();
}

TEST_F(VariableListTest, WriteThatPassesTheRequestByOneByte) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?string-74981");
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Write({tag}, Counting(74981)));
    ExpectError(-1, "Tx Buffer dimension exceeded");
    EXPECT_TRUE(HasFault());
}

TEST_F(VariableListTest, WriteWhoseSecondItemPassesTheRequest) {
    ConfigureAndStart();
    // 6 + 10 + 74,960 + 10 + 10 + 4 = 75,000; one byte more is too many
    std::vector<ITag*> const tags{Tag("1?A?M?0?string-74960"), Tag("1?A?M?0?string-11")};
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Write(tags, Counting(74971)));
    ExpectError(-1, "Tx Buffer dimension exceeded");
}

TEST_F(VariableListTest, HugeWriteIsRefusedBeforeItIsCopied) {
    ConfigureAndStart();
    std::vector<ITag*> const tags{Tag("1?A?M?0?string-60000"), Tag("1?A?M?0?string-60000"),
                                  Tag("1?A?M?0?string-60000")};
    Intel().LinkCheck().Login();
    EXPECT_FALSE(Write(tags, Bytes(180000)));
    port.Forget(); // it is open whether link check and login are sent before
    ExpectError(-1, "Tx Buffer dimension exceeded");
    for (Bytes const& written : port.writes) {
        EXPECT_LE(written.size(), 22U) << "nothing of the list is sent";
    }
}

TEST_F(VariableListTest, LargestReadThatFitsTheReply) {
    ConfigureAndStart(ConfigText().Set("BlockSize", "1460"));
    ITag* const tag = Tag("1?A?M?0?string-74993"); // 6 + 1 + 74,993 = 75,000
    Framing const framing{.blockSize = 1460};
    Conversation(port, framing)
        .LinkCheck()
        .Login()
        .Exchange(Hex("2E 00 | 01 00 00 00 | 00 00 10 00 00 00 F1 24 01 00 | 07 00 00 00"),
                  Hex("00 00 | 00 00 00 00 | 01") + Counting(74993));
    ReadOutcome const outcome = Read({tag});
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(outcome.values, Counting(74993));
}

// --- node numbers ---

TEST_F(VariableListTest, NodeNumbersEndAt256) {
    ConfigureAndStart();
    Store(256, SymbolFileBytes(7).Variable("A", 0, 16).Build());
    Script(OneItem("00 00 10 00 00 00 02 00 00 00"), Hex("00 00 | 00 00 00 00 | 01 34 12"));
    EXPECT_TRUE(Read({Tag("256?A?M?0?short")}).ok);
    for (char const* address : {"257?A?M?0?short", "-1?A?M?0?short", "65536?A?M?0?short", "2147483647?A?M?0?short"}) {
        driver->Config("none");
        std::size_t const writes = port.writes.size();
        ITag* const tag = Tag(address);
        EXPECT_FALSE(Read({tag}).ok) << address;
        ExpectError(-1, "Node number out of range");
        EXPECT_FALSE(Write({tag}, Hex("00 00"))) << address;
        ExpectError(-1, "Node number out of range");
        EXPECT_EQ(port.writes.size(), writes) << "nothing is sent";
    }
}

} // namespace
