#include "protlib/protocol/HostServiceVariables.h"
#include "tests/protlib/TestDriver.h"
#include "tests/support/Bytes.h"
#include "tests/support/FakeHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using velktest::Bytes;
using velktest::Hex;

using Names = std::vector<std::string>;

constexpr char kGuard = '\x7E';

/** A driver whose description and conversion can be chosen. */
class ConsoleDriver : public TestDriver {
public:
    char const* GetXml() const override { return xml; }
    bool IsConverted() const override { return converted; }
    char const* xml = nullptr;
    bool converted = false;
};

/** The reply buffer after a command. */
struct Reply {
    bool known = false;
    std::string bytes; ///< the whole buffer; guard bytes where nothing was written
    std::string text;  ///< up to the first zero or guard
};

Reply run(ProtocolBase& driver, char const* command, int size = 1000) {
    std::string buffer(static_cast<std::size_t>(std::max(size, 0)) + 16, kGuard);
    Reply reply;
    reply.known = driver.DoCommand(command, buffer.data(), size);
    EXPECT_EQ(buffer.substr(buffer.size() - 16), std::string(16, kGuard)) << command << " wrote behind " << size;
    reply.bytes = buffer.substr(0, buffer.size() - 16);
    reply.text = reply.bytes.substr(0, reply.bytes.find_first_of(std::string({'\0', kGuard})));
    return reply;
}

void expectReply(ProtocolBase& driver, char const* command, std::string const& text) {
    Reply const reply = run(driver, command);
    EXPECT_TRUE(reply.known) << command;
    EXPECT_EQ(reply.text, text) << command;
    ASSERT_LT(text.size(), reply.bytes.size());
    EXPECT_EQ(reply.bytes[text.size()], '\0') << command;
}

/** A reply is cut at every size, and followed by a zero only where there is room. */
void expectBoundedReply(ProtocolBase& driver, char const* command, std::string const& text) {
    for (std::size_t size = 0; size <= text.size() + 3; ++size) {
        Reply const reply = run(driver, command, static_cast<int>(size));
        EXPECT_TRUE(reply.known);
        std::size_t const length = std::min(size, text.size());
        EXPECT_EQ(reply.bytes.substr(0, length), text.substr(0, length)) << command << ' ' << size;
        if (size > text.size()) {
            EXPECT_EQ(reply.bytes[text.size()], '\0') << command << ' ' << size;
        }
    }
}

constexpr char const* kHelp = "help - displays this message\n"
                              "info - displays information about the protocol version\n"
                              "xml  - displays the protocol xml description\n"
                              "read uri - reads data pointed by uri string\n"
                              "write uri hexData - writes data pointed by uri string\n"
                              "lasterror - displays the last protocol error\n"
                              "getmaxtm - displays the max time for executing a single read/write access\n";

struct Console : testing::Test {
    ConsoleDriver driver;
};

// --- commands ---

TEST_F(Console, HelpListsTheCommands) {
    expectReply(driver, "help", kHelp);
}

TEST_F(Console, HelpIsCutAtEverySize) {
    expectBoundedReply(driver, "help", kHelp);
}

TEST_F(Console, WordsAreSplitAtSingleBlanksAndComparedExactly) {
    for (char const* const command : {"", " ", " help", "HELP", "Help", "helpx", "hel", "help\n", "foo", "setid 3",
                                      "getid", "help,info", "INFO", "Read x", "delete", "deletetag", "getmaxTm"}) {
        Reply const reply = run(driver, command, 40);
        EXPECT_FALSE(reply.known) << command;
        EXPECT_EQ(reply.bytes, std::string(40, kGuard)) << command;
    }
}

TEST_F(Console, WordsAreTrimmedOfTabs) {
    expectReply(driver, "\thelp\t", kHelp);
}

TEST_F(Console, CommandsWithoutArgumentsTakeNoNoticeOfFurtherWords) {
    expectReply(driver, "help me", kHelp);
}

TEST_F(Console, XmlShowsTheDescription) {
    driver.xml = "compressedXML=2055";
    expectReply(driver, "xml", "compressedXML=2055");
    expectBoundedReply(driver, "xml", "compressedXML=2055");
}

TEST_F(Console, XmlEndsAtTheFirstZeroOfTheDescription) {
    driver.xml = "compressedXML=2055\0binary stream";
    Reply const reply = run(driver, "xml");
    EXPECT_EQ(reply.text, "compressedXML=2055");
    EXPECT_EQ(reply.bytes.find("binary"), std::string::npos);
}

TEST_F(Console, XmlOfADriverWithoutADescriptionIsHarmless) {
    for (int const size : {0, 1, 2, 40}) {
        EXPECT_TRUE(run(driver, "xml", size).known);
    }
}

TEST_F(Console, LastErrorShowsTheLastError) {
    expectReply(driver, "lasterror", "");
    driver.SetError(-6, "Timeout on Acknowledge");
    expectReply(driver, "lasterror", "Timeout on Acknowledge");
    expectBoundedReply(driver, "lasterror", "Timeout on Acknowledge");
    EXPECT_EQ(driver.GetLastError(), -6);
}

TEST_F(Console, GetMaxTmShowsTheMilliseconds) {
    expectReply(driver, "getmaxtm", "maxtm = 0 ms\n");
    driver.maxTm = 12345;
    expectReply(driver, "getmaxtm", "maxtm = 12345 ms\n");
    expectBoundedReply(driver, "getmaxtm", "maxtm = 12345 ms\n");
    driver.maxTm = -1;
    expectReply(driver, "getmaxtm", "maxtm = -1 ms\n");
    driver.maxTm = std::numeric_limits<int>::min();
    expectReply(driver, "getmaxtm", "maxtm = -2147483648 ms\n");
}

TEST_F(Console, DeleteTagsDestroysEveryTagAndLeavesTheReply) {
    driver.offer(TestTag(), "a");
    driver.offer(TestTag(), "b");
    driver.CreateTag("x");
    driver.CreateTag("x");
    Reply const reply = run(driver, "deletetags", 40);
    EXPECT_TRUE(reply.known);
    EXPECT_EQ(reply.bytes, std::string(40, kGuard));
    EXPECT_EQ(driver.deletions, (Names{"a", "b"}));
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions.size(), 2U);
}

// --- read ---

TEST_F(Console, ReadWithoutAnAddressOrWithTwoIsMissingItsParameter) {
    constexpr char const* kMissing = "error: missing parameter (URI string)\n";
    expectReply(driver, "read", kMissing);
    expectReply(driver, "read a b", kMissing);
    expectReply(driver, "read  a", kMissing);
    expectReply(driver, "read a ", kMissing);
    EXPECT_TRUE(driver.addresses.empty());
    expectBoundedReply(driver, "read", kMissing);
}

TEST_F(Console, ReadOfAnEmptyWordAsksForTheEmptyAddress) {
    expectReply(driver, "read ", "Tag URI error: refused");
    EXPECT_EQ(driver.addresses, Names{""});
}

TEST_F(Console, ReadOfARefusedAddressShowsTheError) {
    expectReply(driver, "read 1?x?M?0?foo", "Tag URI error: refused");
    EXPECT_EQ(driver.addresses, Names{"1?x?M?0?foo"});
    expectBoundedReply(driver, "read x", "Tag URI error: refused");
}

TEST_F(Console, ReadShowsTheBytesInLowerCaseDigits) {
    driver.image = Hex("00 0A FF 7C");
    driver.offer(TestTag(ICU_INT, ICU_NONE, 4));
    expectReply(driver, "read 1?x?M?0?int", "000aff7c\n");
    EXPECT_EQ(driver.deletions, Names{"tag"});
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions.size(), 1U);
}

TEST_F(Console, ReadShowsTheHostsRepresentation) {
    driver.image = Hex("34 12");
    driver.offer(TestTag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, {"bcd"}));
    expectReply(driver, "read x", "d204\n");
    TestTag bits(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 4);
    bits.bitIndex = 6;
    driver.image = Hex("C0 01");
    driver.offer(bits);
    expectReply(driver, "read x", "01010100\n");
}

TEST_F(Console, ReadOfAnEmptyTagShowsAnEmptyLine) {
    driver.offer(TestTag(ICU_STRING, ICU_BYTE, 0));
    expectReply(driver, "read x", "\n");
}

TEST_F(Console, FailedReadShowsTheErrorAndFreesTheTag) {
    driver.readSucceeds = false;
    driver.offer(TestTag());
    expectReply(driver, "read x", "Timeout on data receiving");
    EXPECT_EQ(driver.deletions, Names{"tag"});
}

TEST_F(Console, FailedConversionShowsTheErrorAndFreesTheTag) {
    driver.image = Hex("1A");
    driver.offer(TestTag(ICU_UNSIGNED_BYTE, ICU_NONE, 1, {"bcd"}));
    expectReply(driver, "read x", "read conversion error");
    EXPECT_EQ(driver.deletions, Names{"tag"});
}

TEST_F(Console, ReadOfValuesAroundSixtyFourBytesShowsThemWhole) {
    for (std::size_t const length : {63U, 64U, 65U, 200U}) {
        driver.image.assign(length, 0x5A);
        driver.offer(TestTag(ICU_STRING, ICU_BYTE, static_cast<int>(length)));
        std::string text;
        for (std::size_t i = 0; i < length; ++i) {
            text += "5a";
        }
        expectReply(driver, "read x", text + "\n");
    }
}

TEST_F(Console, DigitsAreWrittenWhileMoreThanFourBytesRemain) {
    driver.image = Hex("10 21 32 43 54");
    constexpr char const* kShown[] = {
        "",       "\n",       "\n",       "\n",         "\n",         "10\n",         "10\n",         "1021\n",
        "1021\n", "102132\n", "102132\n", "10213243\n", "10213243\n", "1021324354\n", "1021324354\n", "1021324354\n"};
    int size = 0;
    for (char const* const shown : kShown) {
        driver.offer(TestTag(ICU_STRING, ICU_BYTE, 5));
        Reply const reply = run(driver, "read x", size);
        EXPECT_TRUE(reply.known);
        EXPECT_EQ(reply.text, shown) << "size " << size;
        if (static_cast<int>(std::strlen(shown)) < size) {
            EXPECT_EQ(reply.bytes[std::strlen(shown)], '\0') << "size " << size;
        }
        ++size;
    }
    EXPECT_EQ(driver.deletions.size(), 16U);
}

// --- write ---

TEST_F(Console, WriteNeedsAnAddressAndItsData) {
    constexpr char const* kMissing = "error: missing parameters (URI string + data)\n";
    expectReply(driver, "write", kMissing);
    expectReply(driver, "write x", kMissing);
    expectReply(driver, "write x 01 02", kMissing);
    expectReply(driver, "write  x 01", kMissing);
    EXPECT_TRUE(driver.addresses.empty());
    expectBoundedReply(driver, "write", kMissing);
}

TEST_F(Console, WriteOfARefusedAddressShowsTheError) {
    expectReply(driver, "write x 0A0B", "Tag URI error: refused");
    EXPECT_EQ(driver.addresses, Names{"x"});
    EXPECT_EQ(driver.writes, 0);
}

TEST_F(Console, WriteTakesDigitsOfEitherCaseHighNibbleFirst) {
    driver.offer(TestTag(ICU_SHORT, ICU_NONE, 2));
    expectReply(driver, "write 1?x?M?0?short 0A0b", "written ok\n");
    EXPECT_EQ(driver.written, Hex("0A 0B"));
    EXPECT_EQ(driver.addresses, Names{"1?x?M?0?short"});
    EXPECT_EQ(driver.deletions, Names{"tag"});
    driver.offer(TestTag(ICU_SHORT, ICU_NONE, 2));
    expectReply(driver, "write x 00F0", "written ok\n");
    EXPECT_EQ(driver.written, Hex("00 F0"));
    driver.offer(TestTag(ICU_DOUBLE, ICU_NONE, 8));
    expectReply(driver, "write x 0123456789abcDEf", "written ok\n");
    EXPECT_EQ(driver.written, Hex("01 23 45 67 89 AB CD EF"));
}

TEST_F(Console, WriteReplyIsCutAtEverySize) {
    for (int size = 0; size <= 13; ++size) {
        driver.offer(TestTag());
        Reply const reply = run(driver, "write x 05", size);
        EXPECT_TRUE(reply.known);
        EXPECT_EQ(reply.text, std::string("written ok\n").substr(0, static_cast<std::size_t>(size)));
    }
    EXPECT_EQ(driver.writes, 14);
}

TEST_F(Console, WriteOfAnotherLengthIsRefusedAndFreesTheTag) {
    for (char const* const command :
         {"write x 0A0", "write x 0A", "write x 0A0B0C", "write x 0A0B0", "write x ", "write x 0G0"}) {
        driver.deletions.clear();
        driver.offer(TestTag(ICU_SHORT, ICU_NONE, 2));
        expectReply(driver, command, "error: incorrect length of data to write\n");
        EXPECT_EQ(driver.deletions, Names{"tag"}) << command;
    }
    EXPECT_EQ(driver.writes, 0);
}

TEST_F(Console, WriteOfAnythingButDigitsIsRefusedAndFreesTheTag) {
    for (char const* const command :
         {"write x 0G00", "write x g000", "write x 000g", "write x 0x0A", "write x -1-1", "write x 00/0",
          "write x 00:0", "write x 00@0", "write x 00`0", "write x \xFF\xFF\xFF\xFF"}) {
        driver.deletions.clear();
        driver.offer(TestTag(ICU_SHORT, ICU_NONE, 2));
        expectReply(driver, command, "error: incorrect hex data\n");
        EXPECT_EQ(driver.deletions, Names{"tag"}) << command;
    }
    EXPECT_EQ(driver.writes, 0);
}

TEST_F(Console, FailedWriteShowsTheErrorAndFreesTheTag) {
    driver.writeSucceeds = false;
    driver.offer(TestTag());
    expectReply(driver, "write x 05", "the PLC refused");
    EXPECT_EQ(driver.deletions, Names{"tag"});
}

TEST_F(Console, EmptyTagIsWrittenWithAnEmptyWord) {
    driver.offer(TestTag(ICU_STRING, ICU_BYTE, 0));
    expectReply(driver, "write x ", "written ok\n");
    EXPECT_EQ(driver.writes, 1);
    EXPECT_TRUE(driver.written.empty());
}

TEST_F(Console, LongValuesAreWrittenWhole) {
    for (std::size_t const length : {64U, 65U, 300U}) {
        driver.offer(TestTag(ICU_STRING, ICU_BYTE, static_cast<int>(length)));
        std::string command = "write x ";
        for (std::size_t i = 0; i < length; ++i) {
            command += "c3";
        }
        expectReply(driver, command.c_str(), "written ok\n");
        EXPECT_EQ(driver.written, Bytes(length, 0xC3));
    }
}

// --- the banner ---

constexpr char const* kBanner = "Protocol: MINI (277) v.144\n"
                                "Implementation: MiniImp v.7\n"
                                "ProtocolBase v.100\n"
                                "ProtLib v.200\n";

/** A service without a name. */
class NamelessService : public IInterface {
public:
    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return nullptr; }
    int GetImpVersion() const override { return 9; }
};

/** A service that breaks the rule that services do not throw. */
class ThrowingService : public NamelessService {
public:
    char const* GetImpName() const override { throw std::runtime_error("no name"); }
};

struct Banner : testing::Test {
    ~Banner() override {
        piMultiTask = nullptr;
        piSerialFactory = nullptr;
        piSocketFactory = nullptr;
    }

    /** GetInfo() into a guarded buffer: the text, without a zero after it. */
    std::string info(int size = 1000) {
        std::string buffer(static_cast<std::size_t>(std::max(size, 0)) + 16, kGuard);
        int const length = driver.GetInfo(buffer.data(), size);
        EXPECT_GE(length, 0);
        EXPECT_LE(length, std::max(size, 0));
        EXPECT_EQ(buffer.substr(static_cast<std::size_t>(length)),
                  std::string(buffer.size() - static_cast<std::size_t>(length), kGuard));
        return buffer.substr(0, static_cast<std::size_t>(length));
    }

    ConsoleDriver driver;
    velktest::FakeService multiTask{"Tasks", 21};
    velktest::FakeService serial{"Serials", 0};
    velktest::FakeService sockets{"Sockets", -3};
};

TEST_F(Banner, ListsTheFourFixedLines) {
    EXPECT_EQ(info(), kBanner);
}

TEST_F(Banner, ListsTheServicesThatArePresentInTheirOrder) {
    piMultiTask = &multiTask;
    piSerialFactory = &serial;
    piSocketFactory = &sockets;
    EXPECT_EQ(info(), std::string(kBanner) + "Tasks v.21\nSerials v.0\nSockets v.-3\n");
    piSerialFactory = nullptr;
    EXPECT_EQ(info(), std::string(kBanner) + "Tasks v.21\nSockets v.-3\n");
    piMultiTask = nullptr;
    EXPECT_EQ(info(), std::string(kBanner) + "Sockets v.-3\n");
}

TEST_F(Banner, EndsAtAServiceThatThrows) {
    ThrowingService throwing;
    piMultiTask = &multiTask;
    piSerialFactory = &throwing;
    piSocketFactory = &sockets;
    EXPECT_EQ(info(), std::string(kBanner) + "Tasks v.21\n");
}

TEST_F(Banner, OmitsTheServicesOfAConvertedProtocol) {
    piMultiTask = &multiTask;
    driver.converted = true;
    EXPECT_EQ(info(), kBanner);
}

TEST_F(Banner, OtherServicesAreNotListed) {
    piDiag = &multiTask;
    piPermanentStorage = &multiTask;
    piCDSBuffer = &multiTask;
    std::string const text = info();
    piDiag = nullptr;
    piPermanentStorage = nullptr;
    piCDSBuffer = nullptr;
    EXPECT_EQ(text, kBanner);
}

TEST_F(Banner, NullProtocolNameEndsTheBanner) {
    piMultiTask = &multiTask;
    driver.driverName = nullptr;
    EXPECT_EQ(info(), "Protocol: ");
}

TEST_F(Banner, NullImplementationNameEndsTheBanner) {
    piMultiTask = &multiTask;
    driver.impName = nullptr;
    EXPECT_EQ(info(), "Protocol: MINI (277) v.144\nImplementation: ");
}

TEST_F(Banner, NullServiceNameEndsTheBanner) {
    NamelessService nameless;
    piMultiTask = &multiTask;
    piSerialFactory = &nameless;
    piSocketFactory = &sockets;
    EXPECT_EQ(info(), std::string(kBanner) + "Tasks v.21\n");
}

TEST_F(Banner, IsCutAtEverySizeWithoutAZero) {
    piMultiTask = &multiTask;
    std::string const whole = std::string(kBanner) + "Tasks v.21\n";
    for (std::size_t size = 0; size <= whole.size() + 2; ++size) {
        EXPECT_EQ(info(static_cast<int>(size)), whole.substr(0, size)) << size;
    }
}

TEST_F(Banner, NegativeSizeTakesNothing) {
    EXPECT_EQ(info(-1), "");
}

TEST_F(Banner, InfoPutsAZeroBehindAShorterBannerOnly) {
    std::string const whole = kBanner;
    for (std::size_t size = 0; size <= whole.size() + 2; ++size) {
        Reply const reply = run(driver, "info", static_cast<int>(size));
        EXPECT_TRUE(reply.known);
        EXPECT_EQ(reply.text, whole.substr(0, size)) << size;
        if (size > whole.size()) {
            EXPECT_EQ(reply.bytes[whole.size()], '\0') << size;
        } else {
            EXPECT_EQ(reply.bytes.find('\0'), std::string::npos) << size;
        }
    }
}

// --- hostile buffers and lines ---

TEST_F(Console, SizesThatAreNotPositiveTakeNothing) {
    driver.xml = "compressedXML=2055";
    driver.image = Hex("11");
    for (int const size : {0, -1, -1000, std::numeric_limits<int>::min()}) {
        for (char const* const command : {"help", "info", "xml", "lasterror", "getmaxtm", "read", "write", "read x",
                                          "write x 11", "write x 1", "write x 1G", "deletetags"}) {
            if (std::string(command).find(' ') != std::string::npos) {
                driver.offer(TestTag());
            }
            std::string buffer(32, kGuard);
            EXPECT_TRUE(driver.DoCommand(command, buffer.data() + 16, size)) << command;
            EXPECT_EQ(buffer, std::string(32, kGuard)) << command << ' ' << size;
        }
    }
}

TEST_F(Console, NullLineIsAnUnknownCommand) {
    Reply const reply = run(driver, nullptr, 20);
    EXPECT_FALSE(reply.known);
    EXPECT_EQ(reply.bytes, std::string(20, kGuard));
}

TEST_F(Console, RandomLinesStayInsideTheirBuffer) {
    Names const pieces = {"help", "info", "xml", "read", "write", "lasterror", "getmaxtm", "deletetags", " ",
                          " ",    " ",    "00",  "zz",   "\t",    "1?x",       "\xFF",     "0A0b",       "setid"};
    std::mt19937 random(123456);
    std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> number(0, 60);
    int known = 0;
    driver.image = Hex("01 02 03");
    for (int round = 0; round < 20000; ++round) {
        std::string command;
        for (int i = number(random) % 7; i > 0; --i) {
            command += pieces[piece(random)];
        }
        // A tag is offered only sometimes; the line decides whether it is used.
        std::unique_ptr<TestTag> left;
        TestTag* offered = nullptr;
        if (number(random) % 2 == 0) {
            offered = driver.offer(TestTag(ICU_STRING, ICU_BYTE, number(random) % 5));
        }
        if (run(driver, command.c_str(), number(random)).known) {
            ++known;
        }
        if (!driver.created.empty()) {
            left.reset(offered);
            driver.created.clear();
        }
    }
    EXPECT_GT(known, 2000);
    std::size_t const freed = driver.deletions.size();
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions.size(), freed) << "the console left a tag behind";
}

} // namespace
