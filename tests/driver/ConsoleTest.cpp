#include "tests/support/VelkTest.h"

#include <string>

/** The driver's part of the service console. */
namespace {

using namespace velktest;

char const* const kBaseHelp = "help - displays this message\n"
                              "info - displays information about the protocol version\n"
                              "xml  - displays the protocol xml description\n"
                              "read uri - reads data pointed by uri string\n"
                              "write uri hexData - writes data pointed by uri string\n"
                              "lasterror - displays the last protocol error\n"
                              "getmaxtm - displays the max time for executing a single read/write access\n";
char const* const kDriverHelp = "setid n - set the server ID to n\ngetid - get the server ID\n";

class ConsoleTest : public VelkTest {
protected:
    std::string Reply(std::string const& command, int size = 4096) {
        reply_.assign(4096, '#');
        EXPECT_TRUE(driver->DoCommand(command.c_str(), reply_.data(), size)) << command;
        return reply_.substr(0, reply_.find('\0'));
    }

    void ExpectUnknown(std::string const& command) {
        reply_.assign(64, '#');
        EXPECT_FALSE(driver->DoCommand(command.c_str(), reply_.data(), 64)) << command;
        EXPECT_EQ(reply_, std::string(64, '#')) << command;
    }

    void StartDeclared() {
        ConfigureAndStart();
        Tag("1?ID?PROJ_ID?7?unsignedInt");
    }

    std::string reply_;
};

TEST_F(ConsoleTest, HelpHasTheDriversLinesBehindTheFrameworks) {
    EXPECT_EQ(Reply("help"), std::string(kBaseHelp) + kDriverHelp);
}

TEST_F(ConsoleTest, HelpMayBeWrittenOverTheCommand) {
    for (int const size : {4096, 5}) {
        reply_.assign(4096, '#');
        reply_.replace(0, 5, "help", 5);
        EXPECT_TRUE(driver->DoCommand(reply_.data(), reply_.data(), size));
        std::string const whole = std::string(kBaseHelp) + kDriverHelp;
        EXPECT_EQ(reply_.substr(0, 5), whole.substr(0, 5)) << size;
        EXPECT_EQ(reply_.find(kDriverHelp) != std::string::npos, size == 4096) << size;
    }
}

TEST_F(ConsoleTest, HelpIsCutAtTheBuffersEnd) {
    std::string const whole = std::string(kBaseHelp) + kDriverHelp;
    for (int const size : {0, 1, 10, static_cast<int>(std::string(kBaseHelp).size()),
                           static_cast<int>(std::string(kBaseHelp).size()) + 5, static_cast<int>(whole.size())}) {
        reply_.assign(4096, '#');
        EXPECT_TRUE(driver->DoCommand("help", reply_.data(), size));
        EXPECT_EQ(reply_.substr(0, static_cast<std::size_t>(size)), whole.substr(0, static_cast<std::size_t>(size)));
        EXPECT_EQ(reply_[static_cast<std::size_t>(size)], '#') << "nothing behind the buffer is touched";
    }
}

TEST_F(ConsoleTest, AdvertisedCommandsAreNotThere) {
    ExpectUnknown("setid 3");
    ExpectUnknown("getid");
}

TEST_F(ConsoleTest, UnknownCommands) {
    for (char const* command : {"", " ", "HELP", "helpme", " help", "quit", "Read"}) {
        ExpectUnknown(command);
    }
}

TEST_F(ConsoleTest, InfoListsDriverFrameworkAndServices) {
    EXPECT_EQ(Reply("info"), "Protocol: VELK (277) v.144\n"
                             "Implementation: Protocol_VELK v.100\n"
                             "ProtocolBase v.100\n"
                             "ProtLib v.200\n"
                             "FakeScheduler v.21\n"
                             "FakeSerialFactory v.22\n"
                             "FakeSocketFactory v.23\n");
}

TEST_F(ConsoleTest, TruncatedInfoHasNoZero) {
    Reply("info", 20);
    EXPECT_EQ(reply_.substr(0, 21), "Protocol: VELK (277)#");
    char banner[24];
    std::fill(std::begin(banner), std::end(banner), '#');
    EXPECT_EQ(driver->GetInfo(banner, 20), 20);
    EXPECT_EQ(std::string(banner, 24), "Protocol: VELK (277)####");
}

TEST_F(ConsoleTest, XmlIsTheDescriptionsText) {
    EXPECT_EQ(Reply("xml"), "compressedXML=2055");
}

TEST_F(ConsoleTest, MaxTm) {
    EXPECT_EQ(Reply("getmaxtm"), "maxtm = 0 ms\n");
}

TEST_F(ConsoleTest, LastError) {
    driver->Config("nonsense");
    EXPECT_EQ(Reply("lasterror"), "Parser: unknown format");
}

TEST_F(ConsoleTest, ReadGoesOverTheLine) {
    StartDeclared();
    Intel().LinkCheck().Login().Exchange("2E 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 07 00 00 00",
                                         "00 00 | 00 00 00 00 | 01 AB 0C");
    EXPECT_EQ(Reply("read 1?A?M?16?short"), "ab0c\n");
}

TEST_F(ConsoleTest, FailedReadGivesTheError) {
    StartDeclared();
    Intel().DeadLinkCheck();
    EXPECT_EQ(Reply("read 1?A?M?16?short"), "Timeout on Acknowledge");
    EXPECT_EQ(Reply("read 1?A?M?16"), "Tag URI error: 1?A?M?16 - there must be 5 tag specification fields");
}

TEST_F(ConsoleTest, ReadBeforeStart) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    EXPECT_EQ(Reply("read 1?A?M?16?short"), "Protocol not started");
}

TEST_F(ConsoleTest, ReadNeedsExactlyOneWord) {
    for (char const* command : {"read", "read 1?A?M?16?short x", "read  1?A?M?16?short", "read 1?A?M?16?short "}) {
        EXPECT_EQ(Reply(command), "error: missing parameter (URI string)\n") << command;
    }
}

TEST_F(ConsoleTest, WriteGoesOverTheLine) {
    StartDeclared();
    Intel().LinkCheck().Login().Exchange("3C 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 0A 0B | 07 00 00 00",
                                         "00 00");
    EXPECT_EQ(Reply("write 1?A?M?16?short 0A0b"), "written ok\n");
}

TEST_F(ConsoleTest, WriteRefusals) {
    StartDeclared();
    EXPECT_EQ(Reply("write 1?A?M?16?short"), "error: missing parameters (URI string + data)\n");
    EXPECT_EQ(Reply("write 1?A?M?16?short 0A 0B"), "error: missing parameters (URI string + data)\n");
    EXPECT_EQ(Reply("write 1?A?M?16?short 0A0"), "error: incorrect length of data to write\n");
    EXPECT_EQ(Reply("write 1?A?M?16?short 0A0B0C"), "error: incorrect length of data to write\n");
    EXPECT_EQ(Reply("write 1?A?M?16?short 0G00"), "error: incorrect hex data\n");
    EXPECT_EQ(Reply("write 1?A?M?16 0000"), "Tag URI error: 1?A?M?16 - there must be 5 tag specification fields");
    Intel().DeadLinkCheck();
    EXPECT_EQ(Reply("write 1?A?M?16?short 0000"), "Timeout on Acknowledge");
}

TEST_F(ConsoleTest, DeletedTagsLeaveTheReplyAlone) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    Tag("1?A?M?16?short");
    reply_.assign(64, '#');
    EXPECT_TRUE(driver->DoCommand("deletetags", reply_.data(), 64));
    EXPECT_EQ(reply_, std::string(64, '#'));
    EXPECT_NE(Tag("1?A?M?16?short"), nullptr);
}

TEST_F(ConsoleTest, ManyReadsLeaveNoTagBehind) {
    StartDeclared();
    for (int i = 0; i < 3; ++i) {
        Intel().DeadLinkCheck();
        Reply("read 1?A?M?16?short");
    }
    Intel().DeadLinkCheck();
    std::string const command = "read 1?A?M?16?short";
    reply_.assign(64, '#');
    AllocationGate const gate;
    EXPECT_TRUE(driver->DoCommand(command.c_str(), reply_.data(), 64));
    EXPECT_EQ(AllocationGate::Seen(), AllocationGate::Freed());
}

} // namespace
