#include "tests/support/VelkTest.h"

#include <string>

/** Link check, login, logout and the switch between nodes, as they are sent over the line. */
namespace {

using namespace velktest;

/** Nodes 5 and 3 have stored symbol files with a variable "A" each. */
class LoginSequenceTest : public VelkTest {
protected:
    void SetUp() override {
        VelkTest::SetUp();
        for (int const node : {0, 1, 3, 5}) {
            Store(node, SymbolFileBytes(0x11223344).Variable("A", 0, 16).Build());
        }
    }

    static Bytes ListOfA() { return Hex("2E 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 44 33 22 11"); }
    static Bytes ListOfABigEndian() { return Hex("2E 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 00 02 | 11 22 33 44"); }
    static Bytes WriteOfA() { return Hex("3C 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 34 12 | 44 33 22 11"); }
    static Bytes ReplyOfA() { return Hex("00 00 | 00 00 00 00 | 01 34 12"); }

    /** One undisturbed read of A; with a login first when @p login is set. */
    void ScriptRead(bool login) {
        Conversation line = Intel();
        line.LinkCheck();
        if (login) {
            line.Login();
        }
        line.Exchange(ListOfA(), ReplyOfA());
    }

    void ExpectReadOf(ITag* tag) {
        ReadOutcome const outcome = Read({tag});
        EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
        EXPECT_EQ(outcome.values, Hex("34 12"));
        EXPECT_EQ(outcome.status[0], 1);
    }
};

/** The driver is logged in to node 1 and has read its tag A. */
class LoggedInTest : public LoginSequenceTest {
protected:
    void SetUp() override {
        LoginSequenceTest::SetUp();
        ConfigureAndStart();
        tag = Tag("1?A?M?0?short");
        ScriptRead(true);
        ExpectReadOf(tag);
    }

    ITag* tag = nullptr;
};

TEST_F(LoginSequenceTest, LiteralBytesOfAWholeLittleEndianRead) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    port
        // link check
        .Expect("AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05")
        .Answer("55 55 0A 00 01 00")
        .Expect("55 55 0A 00 00 00")
        .Answer("AA AA 01 00 01 00 57 01 00")
        .Expect("55 55 0A 00 01 00")
        .Answer("55 55 0A 00 00 00")
        // login: AA + AA + 0E + 01 + 01 + 01 + 02 + 06 = 16D
        .Expect("AA AA 0E 00 01 00 6D 01 01 02 00 00 00 06 00 00 00 00 00 00 00 00")
        .Answer("55 55 0A 00 01 00")
        .Expect("55 55 0A 00 00 00")
        // AA + AA + 02 + 01 + 01 + E8 + 03 = 243
        .Answer("AA AA 02 00 01 00 43 01 E8 03")
        .Expect("55 55 0A 00 01 00")
        .Answer("55 55 0A 00 00 00")
        // list: AA + AA + 14 + 01 + 01 + 2E + 01 + 10 + 02 + 44 + 33 + 22 + 11 = 255
        .Expect("AA AA 14 00 01 00 55 01 2E 00 01 00 00 00 00 00 10 00 00 00 02 00 00 00 44 33 22 11")
        .Answer("55 55 0A 00 01 00")
        .Expect("55 55 0A 00 00 00")
        // AA + AA + 09 + 01 + 01 + 01 + 34 + 12 = 1A6
        .Answer("AA AA 09 00 01 00 A6 01 00 00 00 00 00 00 01 34 12")
        .Expect("55 55 0A 00 01 00")
        .Answer("55 55 0A 00 00 00");
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, LiteralBytesOfAWholeBigEndianRead) {
    ConfigureAndStart(ConfigText().Set("model", "Motorola"));
    ITag* const tag = Tag("1?A?M?0?short");
    port.Expect("AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05")
        .Answer("55 55 00 0A 00 01")
        .Expect("55 55 00 0A 00 00")
        .Answer("AA AA 00 01 00 01 57 01 00")
        .Expect("55 55 00 0A 00 01")
        .Answer("55 55 00 0A 00 00")
        .Expect("AA AA 00 0E 00 01 6D 01 01 00 00 00 02 00 00 00 06 00 00 00 00 00")
        .Answer("55 55 00 0A 00 01")
        .Expect("55 55 00 0A 00 00")
        .Answer("AA AA 00 02 00 01 43 01 03 E8")
        .Expect("55 55 00 0A 00 01")
        .Answer("55 55 00 0A 00 00")
        .Expect("AA AA 00 14 00 01 55 01 2E 00 00 00 00 01 00 00 00 00 00 10 00 00 00 02 11 22 33 44")
        .Answer("55 55 00 0A 00 01")
        .Expect("55 55 00 0A 00 00")
        .Answer("AA AA 00 09 00 01 A6 01 00 00 00 00 00 00 01 12 34")
        .Expect("55 55 00 0A 00 01")
        .Answer("55 55 00 0A 00 00");
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, EveryListIsPrecededByALinkCheckButOnlyTheFirstByALogin) {
    ScriptRead(false);
    ExpectReadOf(tag);
    ScriptRead(false);
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, AnswerOfTheLinkCheckHasNoMeaning) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel()
        .Exchange(Conversation::LinkCheckRequest(), Hex("FF FF FF FF"))
        .Login()
        .Exchange(ListOfA(), ReplyOfA())
        .Exchange(Conversation::LinkCheckRequest(), {})
        .Exchange(ListOfA(), ReplyOfA());
    ExpectReadOf(tag);
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, FailedLinkCheckEndsTheCall) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().DeadLinkCheck();
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-4, "Timeout on Acknowledge");
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, FailedLinkCheckKeepsTheLogin) {
    Intel().DeadLinkCheck();
    EXPECT_FALSE(Read({tag}).ok);
    ScriptRead(false);
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, RefusedLoginEndsTheCallWithoutAnErrorOfItsOwn) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Exchange(Intel().LoginRequest(), Hex("E9 03"));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(1, "");
    Intel().LinkCheck().Exchange(Intel().LoginRequest(), Hex("00 00"));
    EXPECT_FALSE(Read({tag}).ok) << "0 is not the login's good answer";
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, LoginIsAcceptedInTheNodesByteOrderOnly) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Exchange(Intel().LoginRequest(), Hex("03 E8"));
    EXPECT_FALSE(Read({tag}).ok);
}

TEST_F(LoginSequenceTest, FailedLoginExchangeIsTheLinksError) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Dead(Intel().LoginRequest());
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-4, "Timeout on Acknowledge");
}

TEST_F(LoginSequenceTest, OldBufferContentIsNoAnswerToALogin) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    // The link check leaves the bytes of a good login reply in the buffer; the reply to the login itself is too short.
    Intel().Exchange(Conversation::LinkCheckRequest(), Hex("E8 03")).Exchange(Intel().LoginRequest(), {});
    EXPECT_FALSE(Read({tag}).ok);
    Intel().Exchange(Conversation::LinkCheckRequest(), Hex("E8 03")).Exchange(Intel().LoginRequest(), Hex("E8"));
    EXPECT_FALSE(Read({tag}).ok);
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, LongerLoginAnswerIsAccepted) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Intel().LinkCheck().Exchange(Intel().LoginRequest(), Hex("E8 03 01 02 03")).Exchange(ListOfA(), ReplyOfA());
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, NodeSwitchLogsOutThenChecksTheLinkThenLogsIn) {
    ConfigureAndStart();
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(five);
    Intel().Logout();
    ScriptRead(true);
    ExpectReadOf(three);
    ScriptRead(false);
    ExpectReadOf(three);
}

TEST_F(LoginSequenceTest, LogoutGoesToTheOldNodeWithItsParametersAndByteOrder) {
    ConfigureAndStart(ConfigText()
                          .Node(5, "model", "Motorola")
                          .Node(5, "Timeout", "700")
                          .Node(3, "model", "Intel")
                          .Node(3, "Timeout", "500"));
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    Motorola().LinkCheck().Login().Exchange(ListOfABigEndian(), Hex("00 00 | 00 00 00 00 | 01 12 34"));
    ExpectReadOf(five);
    port.reads.clear();
    // AA + AA + 01 + 01 + 01 + 02 = 159
    port.Expect("AA AA 00 01 00 01 59 01 02")
        .Answer("55 55 00 0A 00 01")
        .Expect("55 55 00 0A 00 00")
        .Answer("AA AA 00 02 00 01 58 01 00 00")
        .Expect("55 55 00 0A 00 01")
        .Answer("55 55 00 0A 00 00");
    ScriptRead(true);
    ExpectReadOf(three);
    ASSERT_EQ(port.reads.size(), 12U);
    for (std::size_t i = 0; i < port.reads.size(); ++i) {
        EXPECT_EQ(port.reads[i].firstByteTimeoutMs, i < 3 ? 700 : 500) << i;
    }
}

TEST_F(LoginSequenceTest, LogoutReplyIsReadInTheOldNodesByteOrder) {
    ConfigureAndStart(ConfigText().Node(5, "model", "Motorola").Node(3, "model", "Intel"));
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    Motorola().LinkCheck().Login().Exchange(ListOfABigEndian(), Hex("00 00 | 00 00 00 00 | 01 12 34"));
    ExpectReadOf(five);
    Motorola().Exchange(Hex("02"), Hex("00 01"));
    EXPECT_FALSE(Read({three}).ok);
    Motorola().Exchange(Hex("02"), Hex("01 00"));
    EXPECT_FALSE(Read({three}).ok);
    Motorola().Logout();
    ScriptRead(true);
    ExpectReadOf(three);
}

TEST_F(LoginSequenceTest, NodeZeroIsANodeToLogOutOf) {
    ConfigureAndStart();
    ITag* const zero = Tag("0?A?M?0?short");
    ITag* const one = Tag("1?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(zero);
    Intel().Logout();
    ScriptRead(true);
    ExpectReadOf(one);
    Intel().Logout();
    ScriptRead(true);
    ExpectReadOf(zero);
}

TEST_F(LoginSequenceTest, NodeZeroNeedsALoginToo) {
    ConfigureAndStart();
    ITag* const zero = Tag("0?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(zero);
    ScriptRead(false);
    ExpectReadOf(zero);
}

TEST_F(LoginSequenceTest, RefusedLogoutKeepsTheLogin) {
    ConfigureAndStart();
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(five);
    Intel().Exchange(Hex("02"), Hex("07 00"));
    EXPECT_FALSE(Read({three}).ok);
    ScriptRead(false);
    ExpectReadOf(five);
}

TEST_F(LoginSequenceTest, LogoutWithoutAStatusWordIsRefused) {
    ConfigureAndStart();
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(five);
    Intel().Exchange(Hex("02"), {});
    EXPECT_FALSE(Read({three}).ok);
    Intel().Exchange(Hex("02"), Hex("00"));
    EXPECT_FALSE(Read({three}).ok);
    Intel().Logout();
    ScriptRead(true);
    ExpectReadOf(three);
}

TEST_F(LoginSequenceTest, DeadLogoutIsTheLinksErrorAndKeepsTheLogin) {
    ConfigureAndStart();
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(five);
    Intel().Dead(Hex("02"));
    EXPECT_FALSE(Read({three}).ok);
    ExpectError(-4, "Timeout on Acknowledge");
    ScriptRead(false);
    ExpectReadOf(five);
}

TEST_F(LoggedInTest, FailedListExchangeForgetsTheLogin) {
    EXPECT_EQ(LoginState().node(), 1U);
    Intel().LinkCheck().Dead(ListOfA());
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-4, "Timeout on Acknowledge");
    EXPECT_FALSE(LoginState().isLoggedIn());
    EXPECT_EQ(LoginState().node(), 0U);
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, AfterAForgottenLoginAnotherNodeNeedsNoLogout) {
    ConfigureAndStart();
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(five);
    Intel().LinkCheck().Dead(ListOfA());
    EXPECT_FALSE(Read({five}).ok);
    ScriptRead(true);
    ExpectReadOf(three);
}

TEST_F(LoggedInTest, RefusedListKeepsTheLogin) {
    Intel().LinkCheck().Exchange(ListOfA(), Hex("05 00"));
    EXPECT_FALSE(Read({tag}).ok);
    ExpectError(-6, "Command not acknowledged by PLC");
    ScriptRead(false);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, LoginOutlivesStopAndStart) {
    EXPECT_TRUE(driver->Stop());
    EXPECT_TRUE(driver->Start());
    ScriptRead(false);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, LoginIsForgottenAtTheFifthFailedLinkCheckInARow) {
    for (int i = 0; i < 5; ++i) {
        Intel().DeadLinkCheck();
        EXPECT_FALSE(Read({tag}).ok);
    }
    ScriptRead(true); // no logout is sent
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, FourFailedLinkChecksDoNotForgetTheLogin) {
    for (int i = 0; i < 4; ++i) {
        Intel().DeadLinkCheck();
        EXPECT_FALSE(Read({tag}).ok);
    }
    ScriptRead(false);
    ExpectReadOf(tag);
    for (int i = 0; i < 4; ++i) { // after the success, counting started again
        Intel().DeadLinkCheck();
        EXPECT_FALSE(Read({tag}).ok);
    }
    ScriptRead(false);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, LoginIsForgottenAtTheFifthRefusedListInARow) {
    for (int i = 0; i < 5; ++i) {
        Intel().LinkCheck().Exchange(ListOfA(), Hex("05 00"));
        EXPECT_FALSE(Read({tag}).ok);
        ExpectError(-6, "Command not acknowledged by PLC");
    }
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, ListReplyWithoutAStatusWordCountsToo) {
    for (int i = 0; i < 5; ++i) {
        Intel().LinkCheck().Exchange(ListOfA(), Hex("00"));
        EXPECT_FALSE(Read({tag}).ok);
    }
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, RefusedListsAndFailedLinkChecksCountTogether) {
    for (int i = 0; i < 2; ++i) {
        Intel().LinkCheck().Exchange(ListOfA(), Hex("05 00"));
        EXPECT_FALSE(Read({tag}).ok);
        Intel().DeadLinkCheck();
        EXPECT_FALSE(Read({tag}).ok);
    }
    Intel().DeadLinkCheck();
    EXPECT_FALSE(Read({tag}).ok);
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, RefusedWritesCountToo) {
    for (int i = 0; i < 5; ++i) {
        Intel().LinkCheck().Exchange(WriteOfA(), Hex("05 00"));
        EXPECT_FALSE(Write({tag}, Hex("34 12")));
    }
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, SuccessfulWriteBeginsTheCountAnew) {
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 4; ++i) {
            Intel().DeadLinkCheck();
            EXPECT_FALSE(Read({tag}).ok);
        }
        Intel().LinkCheck().Exchange(WriteOfA(), Hex("00 00"));
        EXPECT_TRUE(Write({tag}, Hex("34 12")));
    }
}

TEST_F(LoginSequenceTest, DeadStationBlocksAnotherForFiveCallsOnly) {
    ConfigureAndStart();
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(five);
    for (int i = 0; i < 5; ++i) {
        Intel().Dead(Hex("02"));
        EXPECT_FALSE(Read({three}).ok);
    }
    ScriptRead(true);
    ExpectReadOf(three);
}

TEST_F(LoginSequenceTest, RestartedPlcIsLoggedInToAgainAfterFiveRefusals) {
    ConfigureAndStart();
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(five);
    for (int i = 0; i < 5; ++i) {
        Intel().Exchange(Hex("02"), Hex("07 00"));
        EXPECT_FALSE(Read({three}).ok);
    }
    ScriptRead(true);
    ExpectReadOf(three);
}

TEST_F(LoginSequenceTest, EveryAttemptIsACallThatCounts) {
    ConfigureAndStart(ConfigText().Set("repeat", "5"));
    ITag* const tag = Tag("1?A?M?0?short");
    ScriptRead(true);
    ExpectReadOf(tag);
    for (int i = 0; i < 5; ++i) {
        Intel().DeadLinkCheck();
    }
    EXPECT_FALSE(Read({tag}).ok);
    ScriptRead(true);
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, RefusalsWithoutAnExchangeDoNotCount) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    ITag* const missing = Tag("1?NO/SUCH?M?0?short");
    ScriptRead(true);
    ExpectReadOf(tag);
    Intel().DeadLinkCheck();
    EXPECT_FALSE(Read({tag}).ok);
    for (int i = 0; i < 6; ++i) {
        Intel().LinkCheck();
        EXPECT_FALSE(Write({missing}, Hex("34 12")));
    }
    ScriptRead(false);
    ExpectReadOf(tag);
}

TEST_F(LoginSequenceTest, FailuresBeforeALoginDoNotCount) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    for (int i = 0; i < 7; ++i) {
        Intel().DeadLinkCheck();
        EXPECT_FALSE(Read({tag}).ok);
    }
    ScriptRead(true);
    ExpectReadOf(tag);
    for (int i = 0; i < 4; ++i) {
        Intel().DeadLinkCheck();
        EXPECT_FALSE(Read({tag}).ok);
    }
    ScriptRead(false);
    ExpectReadOf(tag);
}

// --- a further configuration ---

TEST_F(LoginSequenceTest, LogoutAfterAFurtherConfigurationGoesOutAsTheLoginDid) {
    ConfigureAndStart(ConfigText().Set("model", "Motorola").Set("Timeout", "700"));
    ITag* const five = Tag("5?A?M?0?short");
    ITag* const three = Tag("3?A?M?0?short");
    Motorola().LinkCheck().Login().Exchange(ListOfABigEndian(), Hex("00 00 | 00 00 00 00 | 01 12 34"));
    ExpectReadOf(five);
    ASSERT_TRUE(driver->Config(ConfigText().Set("model", "Intel").Set("Timeout", "500").Build().c_str()));
    port.reads.clear();
    Motorola().Logout();
    ScriptRead(true);
    ExpectReadOf(three);
    ASSERT_EQ(port.reads.size(), 12U);
    for (std::size_t i = 0; i < port.reads.size(); ++i) {
        EXPECT_EQ(port.reads[i].firstByteTimeoutMs, i < 3 ? 700 : 500) << i;
    }
}

TEST_F(LoginSequenceTest, ReadOnTheSameNodeAfterAFurtherConfigurationUsesItsPresentParameters) {
    ConfigureAndStart(ConfigText().Set("model", "Motorola"));
    ITag* const five = Tag("5?A?M?0?short");
    Motorola().LinkCheck().Login().Exchange(ListOfABigEndian(), Hex("00 00 | 00 00 00 00 | 01 12 34"));
    ExpectReadOf(five);
    ASSERT_TRUE(driver->Config(ConfigText().Set("model", "Intel").Build().c_str()));
    ScriptRead(false);
    ExpectReadOf(five);
}

// --- another project ---

TEST_F(LoggedInTest, WritesThatAnotherProjectRefusesDoNotCount) {
    for (int i = 0; i < 3; ++i) {
        for (char const* status : {"48 00", "33 00"}) {
            Intel().LinkCheck().Exchange(WriteOfA(), Hex(status));
            EXPECT_FALSE(Write({tag}, Hex("34 12")));
            ExpectError(-6, "Wrong reply length or ack in WriteData operation");
        }
    }
    EXPECT_TRUE(LoginState().isLoggedIn());
    ScriptRead(false);
    ExpectReadOf(tag);
}

TEST_F(LoggedInTest, WriteThatAnotherProjectRefusesDoesNotBeginTheCountAnew) {
    for (int i = 0; i < 4; ++i) {
        Intel().DeadLinkCheck();
        EXPECT_FALSE(Read({tag}).ok);
    }
    Intel().LinkCheck().Exchange(WriteOfA(), Hex("48 00"));
    EXPECT_FALSE(Write({tag}, Hex("34 12")));
    EXPECT_TRUE(LoginState().isLoggedIn());
    Intel().DeadLinkCheck();
    EXPECT_FALSE(Read({tag}).ok);
    EXPECT_FALSE(LoginState().isLoggedIn());
}

} // namespace
