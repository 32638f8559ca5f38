#include "driver/link/SerialLink.h"

#include "driver/config/CommonParams.h"
#include "driver/config/NodeParams.h"
#include "tests/support/Conversation.h"
#include "tests/support/FakeHost.h"
#include "tests/support/RecordedErrors.h"
#include "tests/support/ScriptedPort.h"

#include <climits>

#include <algorithm>
#include <ostream>
#include <string>

/** One exchange with a PLC: blocks, acknowledges, turnaround, and everything that can go wrong. */
namespace {

using namespace velktest;
using _VELK::CommonParams;
using _VELK::NodeParams;
using _VELK::SerialLink;

constexpr char const* kTwoLevels = "4F 80 00 20 2B 0A 01 02 03 00 0D C0 A8 00 07 00 00 00 00";
constexpr char const* kOneLevel = "4F 80 00 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00";
constexpr char const* kNoLevel = "4F 80 00 00 00 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00";

class SerialLinkTest : public ::testing::Test {
protected:
    SerialLinkTest() {
        factory.port = &port;
        common.uart = "com1";
        common.parity = "none";
        common.protType = "Serial_RS232";
        node.BlockSize = 128;
        node.Timeout = 1234;
        node.CouplerLV1 = "2";
        node.ChannelLV1 = 3;
        node.AddressLV1 = "10.1.2.3";
        node.CouplerLV2 = "0";
        node.ChannelLV2 = 3;
        node.AddressLV2 = "192.168.0.7";
    }

    void TearDown() override { port.ExpectDone(); }

    void StartBare() { Start("Serial_RS232"); }
    void StartRouted(int levels) {
        node.RoutingLevels = levels;
        Start("ABB_RS232_AC");
    }
    void Start(std::string const& framing) {
        common.protType = framing;
        ASSERT_TRUE(link.takeSettings()) << errors.text;
        ASSERT_TRUE(link.open()) << errors.text;
    }

    struct Outcome {
        unsigned int result = 0;
        int length = -77;
        Bytes response = {};
    };

    Outcome Exchange(Bytes const& request, bool bigEndian = false) {
        std::copy(request.begin(), request.end(), link.txData().begin());
        return ExchangeLength(static_cast<int>(request.size()), bigEndian);
    }

    Outcome ExchangeLength(int length, bool bigEndian = false) {
        Outcome outcome;
        outcome.result = link.exchange(length, &outcome.length, &node, bigEndian);
        if (outcome.result != 0 && outcome.length >= 0) {
            outcome.response.assign(link.rxData().begin(), link.rxData().begin() + outcome.length);
        }
        return outcome;
    }

    ScriptedPort port;
    FakeSerialFactory factory;
    CommonParams common;
    NodeParams node;
    RecordedErrors errors;
    SerialLink link{&factory, common, errors.sink};
};

TEST_F(SerialLinkTest, BareLittleEndian) {
    StartBare();
    port.Expect("AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05")
        .Answer("55 55 0A 00 01 00")
        .Expect("55 55 0A 00 00 00")
        .Answer("AA AA 02 00 01 00 9E 01 34 12")
        .Expect("55 55 0A 00 01 00")
        .Answer("55 55 0A 00 00 00");
    Outcome const outcome = Exchange(Hex("42 E0 20 26 29 00 00 5D 05"));
    EXPECT_NE(outcome.result, 0U);
    EXPECT_EQ(outcome.response, Hex("34 12"));
    EXPECT_EQ(port.purges, 0) << "the link empties nothing";
    ASSERT_EQ(port.reads.size(), 3U);
    for (auto const& read : port.reads) {
        EXPECT_EQ(read.maximum, 1460);
        EXPECT_EQ(read.firstByteTimeoutMs, 1234);
        EXPECT_EQ(read.interCharTimeoutMs, 20);
        EXPECT_EQ(read.reserved, 0);
    }
}

TEST_F(SerialLinkTest, BareBigEndian) {
    StartBare();
    port.Expect("AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05")
        .Answer("55 55 00 0A 00 01")
        .Expect("55 55 00 0A 00 00")
        .Answer("AA AA 00 02 00 01 9E 01 34 12")
        .Expect("55 55 00 0A 00 01")
        .Answer("55 55 00 0A 00 00");
    EXPECT_EQ(Exchange(Hex("42 E0 20 26 29 00 00 5D 05"), true).response, Hex("34 12"));
}

TEST_F(SerialLinkTest, RoutedOverTwoLevelsLittleEndian) {
    StartRouted(2);
    // In received headers only the status at offset 17 is checked.
    port.Expect("4F 80 00 20 2B 0A 01 02 03 00 0D C0 A8 00 07 00 00 00 00 AA AA 01 00 01 00 59 01 02")
        .Answer("4F 80 00 20 2B 0A 01 02 03 00 0D C0 A8 00 07 00 00 00 00 55 55 0A 00 01 00")
        .Expect("4F 80 00 20 2B 0A 01 02 03 00 0D C0 A8 00 07 00 00 00 00 55 55 0A 00 00 00")
        .Answer("FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF 00 FF AA AA 02 00 01 00 58 01 00 00")
        .Expect("4F 80 00 20 2B 0A 01 02 03 00 0D C0 A8 00 07 00 00 00 00 55 55 0A 00 01 00")
        .Answer("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 55 55 0A 00 00 00");
    Outcome const outcome = Exchange(Hex("02"));
    EXPECT_NE(outcome.result, 0U) << errors.text;
    EXPECT_EQ(outcome.response, Hex("00 00"));
}

TEST_F(SerialLinkTest, RoutedOverOneLevelBigEndian) {
    StartRouted(1);
    port.Expect("4F 80 00 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 AA AA 00 01 00 01 59 01 02")
        .Answer("4F 80 00 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 55 55 00 0A 00 01")
        .Expect("4F 80 00 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 55 55 00 0A 00 00")
        .Answer("4F 80 00 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 AA AA 00 02 00 01 58 01 00 00")
        .Expect("4F 80 00 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 55 55 00 0A 00 01")
        .Answer("4F 80 00 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 55 55 00 0A 00 00");
    EXPECT_EQ(Exchange(Hex("02"), true).response, Hex("00 00"));
}

TEST_F(SerialLinkTest, RoutedOverNoLevelHasAHeaderAllTheSame) {
    StartRouted(0);
    port.Expect("4F 80 00 00 00 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 AA AA 01 00 01 00 59 01 02")
        .Answer("4F 80 00 00 00 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 55 55 0A 00 01 00")
        .Expect("4F 80 00 00 00 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 55 55 0A 00 00 00")
        .Answer("4F 80 00 00 00 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 AA AA 02 00 01 00 58 01 00 00")
        .Expect("4F 80 00 00 00 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 55 55 0A 00 01 00")
        .Answer("4F 80 00 00 00 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00 55 55 0A 00 00 00");
    EXPECT_EQ(Exchange(Hex("02")).response, Hex("00 00"));
}

TEST_F(SerialLinkTest, SeveralBlocksEachWay) {
    StartBare();
    Bytes const request = Counting(121);
    port.Expect(Hex("AA AA 78 00 01 00 B1 00") + Counting(120)) // AA + AA + 78 + 01 + (0 + .. + 77 = 1BE4) = 1DB1
        .Answer("55 55 0A 00 01 00")
        .Expect("AA AA 01 00 02 00 D0 01 78") // AA + AA + 01 + 02 + 01 + 78 = 1D0
        .Answer("55 55 0A 00 02 00")
        .Expect("55 55 0A 00 00 00")
        .Answer("AA AA 01 00 01 00 96 00 40") // AA + AA + 01 + 01 + 40 = 196
        .Expect("55 55 0A 00 01 00")
        .Answer("AA AA 02 00 02 00 DB 00 41 42") // AA + AA + 02 + 02 + 41 + 42 = 1DB
        .Expect("55 55 0A 00 02 00")
        .Answer("AA AA 00 00 03 00 58 01") // an empty last block; AA + AA + 03 + 01 = 158
        .Expect("55 55 0A 00 03 00")
        .Answer("55 55 0A 00 00 00");
    Outcome const outcome = Exchange(request);
    EXPECT_EQ(outcome.response, Hex("40 41 42"));
    EXPECT_EQ(outcome.length, 3);
}

TEST_F(SerialLinkTest, RequestOfNothingBeginsWithTheTurnaround) {
    StartBare();
    for (int const length : {0, -1, INT_MIN}) {
        port.Expect("55 55 0A 00 00 00")
            .Answer("AA AA 02 00 01 00 9E 01 34 12")
            .Expect("55 55 0A 00 01 00")
            .Answer("55 55 0A 00 00 00");
        EXPECT_EQ(ExchangeLength(length).response, Hex("34 12")) << length;
    }
}

TEST_F(SerialLinkTest, ResponseOfNothing) {
    StartBare();
    port.Expect("AA AA 01 00 01 00 59 01 02")
        .Answer("55 55 0A 00 01 00")
        .Expect("55 55 0A 00 00 00")
        .Answer("AA AA 00 00 01 00 56 01")
        .Expect("55 55 0A 00 01 00")
        .Answer("55 55 0A 00 00 00");
    Outcome const outcome = Exchange(Hex("02"));
    EXPECT_NE(outcome.result, 0U);
    EXPECT_EQ(outcome.length, 0);
}

TEST_F(SerialLinkTest, RequestThatFillsABlockIsOneBlock) {
    StartBare();
    Framing const framing;
    port.Expect(framing.Block(1, true, Counting(120)));
    port.Answer(framing.Ack(1)).Expect(framing.Ack(0)).Silence();
    EXPECT_EQ(Exchange(Counting(120)).result, 0U);
    EXPECT_EQ(port.writes[0].size(), 128U);
}

TEST_F(SerialLinkTest, OneByteMoreIsASecondBlockOfOneByte) {
    StartBare();
    Framing const framing;
    port.Expect(framing.Block(1, false, Counting(120)))
        .Answer(framing.Ack(1))
        .Expect(framing.Block(2, true, Counting(1, 120)))
        .Answer(framing.Ack(2))
        .Expect(framing.Ack(0))
        .Silence();
    EXPECT_EQ(Exchange(Counting(121)).result, 0U);
    EXPECT_EQ(port.writes[1].size(), 9U);
}

TEST_F(SerialLinkTest, RoutedBlockIsNineteenBytesLonger) {
    StartRouted(2);
    Framing const framing{.routing = Hex(kTwoLevels)};
    Conversation(port, framing).Exchange(Counting(240), Counting(240));
    EXPECT_EQ(Exchange(Counting(240)).response, Counting(240));
    EXPECT_EQ(port.writes[0].size(), 147U);
    EXPECT_EQ(port.writes[1].size(), 147U);
}

TEST_F(SerialLinkTest, LargestBlocks) {
    StartBare();
    node.BlockSize = 1460;
    Framing const framing{.blockSize = 1460};
    Conversation(port, framing).Exchange(Counting(1452 + 1), Counting(1452 + 1));
    EXPECT_EQ(Exchange(Counting(1453)).response, Counting(1453));
    EXPECT_EQ(port.writes[0].size(), 1460U);
    EXPECT_EQ(port.writes[1].size(), 9U);
}

TEST_F(SerialLinkTest, LargestBlocksRouted) {
    StartRouted(1);
    node.BlockSize = 1460;
    Framing const framing{.blockSize = 1460,
                          .routing = Hex("4F B4 05 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00")};
    // Sent frames may be 1,479 bytes long, received frames not, so the response comes in smaller blocks.
    Conversation(port, framing).Request(Counting(1452));
    Conversation(port, {.blockSize = 1441, .routing = framing.routing}).Reply(Counting(1433 + 5));
    EXPECT_EQ(Exchange(Counting(1452)).response, Counting(1438));
    EXPECT_EQ(port.writes[0].size(), 1479U);
}

TEST_F(SerialLinkTest, WholeRequestBufferTravels) {
    StartBare();
    Bytes const request = Counting(75000, 7);
    Conversation(port, {}).Exchange(request, Hex("01"));
    EXPECT_EQ(Exchange(request).response, Hex("01"));
    EXPECT_EQ(port.writes.size(), 625U + 2U);
}

TEST_F(SerialLinkTest, RequestBeyondTheBufferIsNotSent) {
    StartBare();
    for (int const length : {75001, INT_MAX}) {
        EXPECT_EQ(ExchangeLength(length).result, 0U) << length;
        EXPECT_TRUE(port.writes.empty());
    }
}

TEST_F(SerialLinkTest, ResponseThatFillsTheBuffer) {
    StartBare();
    node.BlockSize = 1460;
    Conversation(port, {.blockSize = 1460}).Exchange(Hex("02"), Counting(75000, 3));
    Outcome const outcome = Exchange(Hex("02"));
    EXPECT_NE(outcome.result, 0U) << errors.text;
    EXPECT_EQ(outcome.length, 75000);
    EXPECT_EQ(outcome.response, Counting(75000, 3));
}

TEST_F(SerialLinkTest, ResponseOneByteBeyondTheBuffer) {
    StartBare();
    Framing const framing{.blockSize = 1460};
    Conversation(port, framing).Request(Hex("02"));
    for (unsigned number = 1; number <= 51; ++number) { // 51 * 1452 = 74,052
        port.Answer(framing.Block(number, false, Bytes(1452, 0x11))).Expect(framing.Ack(number));
    }
    port.Answer(framing.Block(52, true, Bytes(949, 0x22))); // which is not acknowledged
    Outcome const outcome = Exchange(Hex("02"));
    EXPECT_EQ(outcome.result, 0U);
    EXPECT_EQ(outcome.length, -77);
    errors.Expect(-1, "Rx Buffer dimension exceeded");
}

TEST_F(SerialLinkTest, FullBufferTakesAnEmptyLastBlock) {
    StartBare();
    Framing const framing{.blockSize = 1460};
    Conversation(port, framing).Request(Hex("02"));
    for (unsigned number = 1; number <= 51; ++number) {
        port.Answer(framing.Block(number, false, Bytes(1452, 0x11))).Expect(framing.Ack(number));
    }
    port.Answer(framing.Block(52, false, Bytes(948, 0x22))).Expect(framing.Ack(52));
    port.Answer(framing.Block(53, true, {})).Expect(framing.Ack(53)).Answer(framing.Ack(0));
    EXPECT_EQ(Exchange(Hex("02")).length, 75000);
}

TEST_F(SerialLinkTest, LengthFieldIsNotConsulted) {
    StartBare();
    Conversation(port, {}).Request(Hex("02"));
    port.Answer("AA AA FF FF 01 00 9A 01 34 12") // AA + AA + FF + FF + 01 + 01 + 34 + 12 = 39A
        .Expect("55 55 0A 00 01 00")
        .Answer("55 55 0A 00 00 00");
    EXPECT_EQ(Exchange(Hex("02")).response, Hex("34 12"));
}

TEST_F(SerialLinkTest, AnyNonZeroFlagEndsTheResponse) {
    StartBare();
    Conversation(port, {}).Request(Hex("02"));
    port.Answer("AA AA 01 00 01 00 98 40 02") // AA + AA + 01 + 01 + 40 + 02 = 198
        .Expect("55 55 0A 00 01 00")
        .Answer("55 55 0A 00 00 00");
    EXPECT_EQ(Exchange(Hex("02")).response, Hex("02"));
}

TEST_F(SerialLinkTest, AnswersThePortsResultOfTheLastDataRead) {
    StartBare();
    Framing const framing;
    Conversation(port, framing).Request(Hex("02"));
    port.AnswerReturning(framing.Block(1, false, Hex("01")), 5).Expect(framing.Ack(1));
    port.AnswerReturning(framing.Block(2, true, Hex("02")), 9).Expect(framing.Ack(2));
    port.AnswerReturning(framing.Ack(0), 3);
    EXPECT_EQ(Exchange(Hex("02")).result, 9U);
}

TEST_F(SerialLinkTest, ResultOfAWriteIsNotLookedAt) {
    StartBare();
    port.writesFail = true;
    Conversation(port, {}).Exchange(Hex("02"), Hex("34 12"));
    EXPECT_EQ(Exchange(Hex("02")).response, Hex("34 12"));
}

TEST_F(SerialLinkTest, ExchangeAfterAFailureBeginsAtBlockOne) {
    StartBare();
    Framing const framing;
    port.Expect(framing.Block(1, false, Counting(120)))
        .Answer(framing.Ack(1))
        .Expect(framing.Block(2, true, Counting(1, 120)))
        .Silence();
    EXPECT_EQ(Exchange(Counting(121)).result, 0U);
    Conversation(port, framing).Exchange(Counting(121), Hex("00"));
    EXPECT_EQ(Exchange(Counting(121)).response, Hex("00"));
    EXPECT_EQ(port.purges, 0);
}

TEST_F(SerialLinkTest, UnknownProtocolType) {
    for (char const* type : {"Serial_RS422", "serial_rs232", "Serial_RS232x", "ABB_RS232", "0"}) {
        Start(type);
        EXPECT_EQ(Exchange(Hex("02")).result, 0U) << type;
        errors.Expect(-1, "Protocol type not supported");
        EXPECT_TRUE(port.writes.empty());
        EXPECT_TRUE(port.reads.empty());
    }
}

TEST_F(SerialLinkTest, BlockSizeThatAFailedConfigurationLeftBehind) {
    StartBare();
    for (int const size : {127, 1461, 0, -1, INT_MIN, INT_MAX, 8, 9}) {
        node.BlockSize = size;
        EXPECT_EQ(Exchange(Hex("02")).result, 0U) << size;
        errors.Expect(-1, "parameter 'BlockSize' out of range");
        EXPECT_TRUE(port.writes.empty());
    }
}

TEST_F(SerialLinkTest, NothingIsExchangedWithoutAPort) {
    EXPECT_EQ(Exchange(Hex("02")).result, 0U);
    errors.Expect(-3, "Protocol not started");
}

/** Does not change the count. */
class CountlessPort : public ScriptedPort {
public:
    int Read(unsigned char* /*buffer*/, int /*maximum*/, int /*first*/, int /*inter*/, int* /*count*/,
             int /*reserved*/) override {
        return 1;
    }
};

TEST_F(SerialLinkTest, CountThatThePortLeavesAloneIsNoBytes) {
    CountlessPort countless;
    factory.port = &countless;
    StartBare();
    countless.Expect(Framing().Block(1, true, Hex("02")));
    EXPECT_EQ(Exchange(Hex("02")).result, 0U);
    errors.Expect(-4, "Timeout on Acknowledge");
    link.close();
}

TEST_F(SerialLinkTest, NegativeCountsFromThePortAreNoBytes) {
    StartBare();
    Framing const framing;
    for (int const count : {-1, -1460, INT_MIN}) {
        port.Expect(framing.Block(1, true, Hex("02"))).AnswerClaiming(framing.Ack(1), count);
        EXPECT_EQ(Exchange(Hex("02")).result, 0U);
        Conversation(port, framing).Request(Hex("02"));
        port.AnswerClaiming(framing.Block(1, true, Hex("02")), count);
        EXPECT_EQ(Exchange(Hex("02")).result, 0U);
        Conversation(port, framing).Request(Hex("02"));
        port.Answer(framing.Block(1, true, Hex("02"))).Expect(framing.Ack(1)).AnswerClaiming(framing.Ack(0), count);
        EXPECT_EQ(Exchange(Hex("02")).result, 0U);
    }
}

TEST_F(SerialLinkTest, CountsBeyondTheReadBufferOverrunNothing) {
    for (bool const routed : {false, true}) {
        routed ? StartRouted(2) : StartBare();
        Framing const framing{.routing = routed ? Hex(kTwoLevels) : Bytes()};
        for (int const count : {1461, 1480, 75001, INT_MAX}) {
            Conversation(port, framing).Request(Hex("02"));
            port.AnswerClaiming(framing.Block(1, true, Hex("02")), count);
            EXPECT_EQ(Exchange(Hex("02")).result, 0U) << count; // the checksum over old bytes cannot be right
            port.Expect(framing.Block(1, true, Hex("02"))).AnswerClaiming(Bytes(30, 0x55), count);
            EXPECT_EQ(Exchange(Hex("02")).result, 0U) << count;
        }
    }
}

// --- every failure, in every framing ---

struct Framed {
    char const* name;
    int levels; ///< -1 for bare framing
    bool bigEndian;
    char const* header;
};

std::ostream& operator<<(std::ostream& out, Framed const& framed) {
    return out << framed.name;
}

class LinkFailureTest : public SerialLinkTest, public ::testing::WithParamInterface<Framed> {
protected:
    void SetUp() override {
        SerialLinkTest::SetUp();
        Routed() ? StartRouted(GetParam().levels) : StartBare();
        framing.bigEndian = GetParam().bigEndian;
        framing.routing = Hex(GetParam().header);
        // A distinct text, to see whether a failure leaves the error unchanged.
        errors.sink.fail(-99, "an earlier failure");
    }

    bool Routed() const { return GetParam().levels >= 0; }

    Bytes Header(unsigned char status) const {
        Bytes header = framing.routing;
        if (Routed()) {
            header[17] = status;
        }
        return header;
    }

    void ScriptUpToBlockAck() { port.Expect(framing.Block(1, true, Hex("02"))); }
    void ScriptUpToResponse() { Conversation(port, framing).Request(Hex("02")); }
    void ScriptUpToClosingAck() {
        ScriptUpToResponse();
        port.Answer(framing.Block(1, true, Hex("00 00"))).Expect(framing.Ack(1));
    }

    void ExpectFailure(int code, std::string const& text) {
        Outcome const outcome = Exchange(Hex("02"), framing.bigEndian);
        EXPECT_EQ(outcome.result, 0U);
        EXPECT_EQ(outcome.length, -77) << "the length is written on success only";
        errors.Expect(code, text);
        port.ExpectDone();
        errors.sink.fail(-99, "an earlier failure");
    }
    void ExpectSilentFailure() { ExpectFailure(-99, "an earlier failure"); }

    /** The first @p length bytes of @p message. */
    static Bytes Cut(Bytes const& message, std::size_t length) {
        return {message.begin(), message.begin() + static_cast<std::ptrdiff_t>(length)};
    }

    Framing framing;
};

constexpr Framed kBareLittle{"BareLittle", -1, false, ""};
constexpr Framed kBareBig{"BareBig", -1, true, ""};
constexpr Framed kNoLevelLittle{"RoutedNoLevelLittle", 0, false, kNoLevel};
constexpr Framed kNoLevelBig{"RoutedNoLevelBig", 0, true, kNoLevel};
constexpr Framed kOneLevelLittle{"RoutedOneLevelLittle", 1, false, kOneLevel};
constexpr Framed kOneLevelBig{"RoutedOneLevelBig", 1, true, kOneLevel};
constexpr Framed kTwoLevelsLittle{"RoutedTwoLevelsLittle", 2, false, kTwoLevels};
constexpr Framed kTwoLevelsBig{"RoutedTwoLevelsBig", 2, true, kTwoLevels};

INSTANTIATE_TEST_SUITE_P(EveryFraming, LinkFailureTest,
                         ::testing::Values(kBareLittle, kBareBig, kNoLevelLittle, kNoLevelBig, kOneLevelLittle,
                                           kOneLevelBig, kTwoLevelsLittle, kTwoLevelsBig),
                         [](auto const& framed) { return framed.param.name; });

/** Failures that only a routing header can report. */
class RoutedFailureTest : public LinkFailureTest {};

INSTANTIATE_TEST_SUITE_P(RoutedFramings, RoutedFailureTest,
                         ::testing::Values(kNoLevelLittle, kNoLevelBig, kOneLevelLittle, kOneLevelBig, kTwoLevelsLittle,
                                           kTwoLevelsBig),
                         [](auto const& framed) { return framed.param.name; });

TEST_P(LinkFailureTest, NothingIsWrongWithoutAFault) {
    Conversation(port, framing).Exchange(Hex("02"), Hex("34 12"));
    Outcome const outcome = Exchange(Hex("02"), framing.bigEndian);
    EXPECT_NE(outcome.result, 0U) << errors.text;
    EXPECT_EQ(outcome.response, Hex("34 12"));
    errors.Expect(-99, "an earlier failure"); // success leaves the error unchanged
}

TEST_P(LinkFailureTest, BlockAckPortFault) {
    ScriptUpToBlockAck();
    port.Fault();
    ExpectFailure(0, "Generic error on receiving");
}

TEST_P(LinkFailureTest, BlockAckPortFaultWithBytes) {
    ScriptUpToBlockAck();
    port.FaultWith(framing.Ack(1));
    ExpectFailure(0, "Generic error on receiving");
}

TEST_P(LinkFailureTest, BlockAckTimeout) {
    ScriptUpToBlockAck();
    port.Silence();
    ExpectFailure(-4, "Timeout on Acknowledge");
}

TEST_P(LinkFailureTest, BlockAckTooShort) {
    for (std::size_t length = 1; length < framing.Ack(1).size(); ++length) {
        ScriptUpToBlockAck();
        port.Answer(Cut(framing.Ack(1), length));
        ExpectFailure(-6, "Too short Ack message received");
    }
}

TEST_P(LinkFailureTest, BlockAckWrong) {
    for (std::size_t const at : {0U, 1U, 2U, 3U, 4U, 5U}) {
        ScriptUpToBlockAck();
        Bytes wrong = framing.Ack(1);
        wrong[framing.routing.size() + at] = static_cast<unsigned char>(wrong[framing.routing.size() + at] ^ 0x10U);
        port.Answer(wrong);
        ExpectFailure(-6, "Wrong Ack message received");
    }
    ScriptUpToBlockAck();
    port.Answer(framing.Ack(0));
    ExpectFailure(-6, "Wrong Ack message received");
    ScriptUpToBlockAck();
    port.Answer(framing.Ack(2));
    ExpectFailure(-6, "Wrong Ack message received");
}

TEST_P(LinkFailureTest, BlockAckInTheOtherByteOrder) {
    ScriptUpToBlockAck();
    Framing other = framing;
    other.bigEndian = !framing.bigEndian;
    port.Answer(other.Ack(1));
    ExpectFailure(-6, "Wrong Ack message received");
}

TEST_P(LinkFailureTest, SecondBlockAckWithTheFirstNumber) {
    port.Expect(framing.Block(1, false, Counting(120)))
        .Answer(framing.Ack(1))
        .Expect(framing.Block(2, true, Counting(1, 120)))
        .Answer(framing.Ack(1));
    EXPECT_EQ(Exchange(Counting(121), framing.bigEndian).result, 0U);
    errors.Expect(-6, "Wrong Ack message received");
}

TEST_P(RoutedFailureTest, BlockAckWithARoutingStatusFailsSilently) {
    for (int const status : {0x01, 0x80, 0xFF}) {
        ScriptUpToBlockAck();
        port.Answer(Header(static_cast<unsigned char>(status)) +
                    Cut(Framing{.bigEndian = framing.bigEndian}.Ack(1), 6));
        ExpectSilentFailure();
    }
}

TEST_P(LinkFailureTest, ResponsePortFault) {
    ScriptUpToResponse();
    port.Fault();
    ExpectFailure(0, "Generic error on receiving");
}

TEST_P(LinkFailureTest, ResponseTimeout) {
    ScriptUpToResponse();
    port.Silence();
    ExpectFailure(-4, "Timeout on data receiving");
}

TEST_P(LinkFailureTest, SecondResponseBlockTimeout) {
    ScriptUpToResponse();
    port.Answer(framing.Block(1, false, Hex("01"))).Expect(framing.Ack(1)).Silence();
    ExpectFailure(-4, "Timeout on data receiving");
}

TEST_P(LinkFailureTest, ResponseTooShort) {
    for (std::size_t length = 1; length < framing.routing.size() + 8; ++length) {
        ScriptUpToResponse();
        port.Answer(Cut(framing.Block(1, true, Hex("00 00")), length));
        ExpectFailure(-6, "Too short message received");
    }
}

TEST_P(LinkFailureTest, ResponseThatIsABareAcknowledgeIsTooShort) {
    ScriptUpToResponse();
    port.Answer(framing.Ack(0));
    ExpectFailure(-6, "Too short message received");
}

TEST_P(LinkFailureTest, ResponseWithAWrongProtocolId) {
    for (std::size_t const at : {0U, 1U}) {
        ScriptUpToResponse();
        Bytes wrong = framing.Block(1, true, Hex("00 00"));
        wrong[framing.routing.size() + at] = 0x55;
        port.Answer(wrong);
        ExpectFailure(-6, "Wrong Protocol ID received");
    }
}

TEST_P(LinkFailureTest, ResponseWithAFlippedBitAnywhere) {
    Bytes const right = framing.Block(1, true, Hex("12 34 56"));
    for (std::size_t at = framing.routing.size() + 2; at < right.size(); ++at) {
        for (unsigned const bit : {0x01U, 0x80U}) {
            ScriptUpToResponse();
            Bytes wrong = right;
            wrong[at] = static_cast<unsigned char>(wrong[at] ^ bit);
            port.Answer(wrong);
            ExpectFailure(-6, "Wrong checksum or wrong block number received");
        }
    }
}

TEST_P(LinkFailureTest, ResponseBlockOutOfSequence) {
    for (unsigned const number : {0U, 2U, 256U, 257U}) {
        ScriptUpToResponse();
        port.Answer(framing.Block(number, true, Hex("00 00")));
        ExpectFailure(-6, "Wrong checksum or wrong block number received");
    }
    ScriptUpToResponse();
    port.Answer(framing.Block(1, false, Hex("00"))).Expect(framing.Ack(1)).Answer(framing.Block(1, true, Hex("00")));
    ExpectFailure(-6, "Wrong checksum or wrong block number received");
}

TEST_P(LinkFailureTest, ResponseWithBytesCutOffOrAdded) {
    Bytes const right = framing.Block(1, true, Hex("12 34 56"));
    ScriptUpToResponse();
    port.Answer(Cut(right, right.size() - 1));
    ExpectFailure(-6, "Wrong checksum or wrong block number received");
    ScriptUpToResponse();
    port.Answer(right + Hex("01"));
    ExpectFailure(-6, "Wrong checksum or wrong block number received");
}

TEST_P(RoutedFailureTest, ResponseWithARoutingStatusFailsSilently) {
    ScriptUpToResponse();
    port.Answer(Header(0x02) + Framing{.bigEndian = framing.bigEndian}.Block(1, true, Hex("00 00")));
    ExpectSilentFailure();
    ScriptUpToResponse();
    port.Answer(Header(0x02)); // the status is checked before the length
    ExpectSilentFailure();
}

TEST_P(LinkFailureTest, ClosingAckPortFault) {
    ScriptUpToClosingAck();
    port.Fault();
    ExpectFailure(0, "Generic error on receiving");
}

TEST_P(LinkFailureTest, ClosingAckTimeout) {
    ScriptUpToClosingAck();
    port.Silence();
    ExpectFailure(-4, "Timeout on Acknowledge");
}

TEST_P(LinkFailureTest, ClosingAckTooShort) {
    for (std::size_t length = 1; length < framing.Ack(0).size(); ++length) {
        ScriptUpToClosingAck();
        port.Answer(Cut(framing.Ack(0), length));
        ExpectFailure(-6, "Too short Ack message received");
    }
}

TEST_P(LinkFailureTest, ClosingAckWrong) {
    for (std::size_t const at : {0U, 1U, 2U, 3U, 4U, 5U}) {
        ScriptUpToClosingAck();
        Bytes wrong = framing.Ack(0);
        wrong[framing.routing.size() + at] = static_cast<unsigned char>(wrong[framing.routing.size() + at] ^ 0x10U);
        port.Answer(wrong);
        ExpectFailure(-6, "Wrong Protocol ID received");
    }
    ScriptUpToClosingAck();
    port.Answer(framing.Ack(1));
    ExpectFailure(-6, "Wrong Protocol ID received");
}

TEST_P(RoutedFailureTest, ClosingAckWithARoutingStatusFailsSilently) {
    ScriptUpToClosingAck();
    port.Answer(Header(0x01) + Framing{.bigEndian = framing.bigEndian}.Ack(0));
    ExpectSilentFailure();
}

// --- a response without end ---

/** Acknowledges everything and answers with empty blocks that are never the last. */
class EndlessPort : public ScriptedPort {
public:
    int blocks = 0;

    int Write(unsigned char const* bytes, int /*length*/, int /*reserved*/) override {
        responding_ = bytes[0] == 0x55;
        return 1;
    }

    int Read(unsigned char* buffer, int /*maximum*/, int /*first*/, int /*inter*/, int* count, int /*r*/) override {
        Framing const framing;
        Bytes const answer =
            responding_ ? framing.Block(static_cast<unsigned>(++blocks) & 0xFFFFU, false, {}) : framing.Ack(1);
        std::copy(answer.begin(), answer.end(), buffer);
        *count = static_cast<int>(answer.size());
        return blocks > 200'000 ? 0 : 1;
    }

private:
    bool responding_ = false;
};

TEST_F(SerialLinkTest, ResponseEndsAfter65535Blocks) {
    EndlessPort endless;
    factory.port = &endless;
    StartBare();
    EXPECT_EQ(Exchange(Hex("02")).result, 0U);
    EXPECT_GE(endless.blocks, 65535);
    EXPECT_LE(endless.blocks, 65536);
    EXPECT_LT(errors.code, 0) << errors.text;
    link.close();
}

// --- the port ---

TEST_F(SerialLinkTest, OpensThePortWithTheSettingsOfTheLine) {
    common.baudrate = 19200;
    common.stopbits = 2;
    common.parity = "odd";
    common.mode = "RS-485";
    StartBare();
    EXPECT_TRUE(link.isOpen());
    EXPECT_EQ(factory.created, (std::vector<std::string>{"com1"}));
    EXPECT_EQ(port.opens, (std::vector<ScriptedPort::OpenCall>{{19200, 2, 8, 2, 1}}));
}

TEST_F(SerialLinkTest, SettingsAreThoseOfTheLastTake) {
    common.baudrate = 19200;
    ASSERT_TRUE(link.takeSettings());
    common.baudrate = 9600;
    ASSERT_TRUE(link.open());
    EXPECT_EQ(port.opens, (std::vector<ScriptedPort::OpenCall>{{19200, 0, 8, 0, 0}}));
}

TEST_F(SerialLinkTest, UnknownParityIsRefused) {
    common.parity = "space";
    EXPECT_FALSE(link.takeSettings());
    errors.Expect(-1, "Parser: parameter 'parity' has invalid value");
}

TEST_F(SerialLinkTest, OpeningTwiceTouchesThePortOnce) {
    StartBare();
    EXPECT_TRUE(link.open());
    EXPECT_EQ(port.opens.size(), 1U);
}

TEST_F(SerialLinkTest, PortThatDoesNotOpenIsReleased) {
    port.openResult = 0;
    EXPECT_FALSE(link.open());
    errors.Expect(-1, "Can't open serial port");
    EXPECT_EQ(factory.released, (std::vector<ISerialPort*>{&port}));
    EXPECT_FALSE(link.requireOpen());
    errors.Expect(-3, "Protocol not started");
}

TEST_F(SerialLinkTest, NoPortIsReleasedThatIsNotThere) {
    factory.port = nullptr;
    EXPECT_FALSE(link.open());
    errors.Expect(-1, "Can't open serial port");
    link.close();
    EXPECT_TRUE(factory.released.empty());
}

TEST_F(SerialLinkTest, NoFactoryOpensNoPort) {
    SerialLink lone(nullptr, common, errors.sink);
    EXPECT_FALSE(lone.open());
    errors.Expect(-1, "Can't open serial port");
}

TEST_F(SerialLinkTest, ReleasesThePortOnceWhenItIsClosed) {
    StartBare();
    link.close();
    link.close();
    EXPECT_FALSE(link.isOpen());
    EXPECT_EQ(factory.released, (std::vector<ISerialPort*>{&port}));
}

TEST_F(SerialLinkTest, ReleasesTheOpenPortAtItsEnd) {
    {
        SerialLink brief(&factory, common, errors.sink);
        ASSERT_TRUE(brief.open());
    }
    EXPECT_EQ(factory.released, (std::vector<ISerialPort*>{&port}));
}

TEST_F(SerialLinkTest, DrainingEndsWhenNothingIsLeft) {
    StartBare();
    port.purgesThatRemove = 3;
    link.drain();
    EXPECT_EQ(port.purges, 4);
}

TEST_F(SerialLinkTest, DrainingAPortThatNeverRunsEmptyEnds) {
    StartBare();
    port.purgesForEver = true;
    link.drain();
    EXPECT_EQ(port.purges, 1000);
}

TEST_F(SerialLinkTest, ExchangeInTheNodesOwnByteOrder) {
    StartBare();
    for (bool const bigEndian : {false, true}) {
        node.model = bigEndian ? "Motorola" : "Intel";
        Conversation(port, {.bigEndian = bigEndian}).Exchange(Hex("02"), Hex("34 12 56"));
        link.txData()[0] = 0x02;
        auto const response = link.exchange(1, node);
        ASSERT_TRUE(response.has_value()) << errors.text;
        EXPECT_EQ(Bytes(response->begin(), response->end()), Hex("34 12 56"));
    }
    Conversation(port, {.bigEndian = true}).Dead(Hex("02"));
    EXPECT_FALSE(link.exchange(1, node).has_value());
    errors.Expect(-4, "Timeout on Acknowledge");
}

} // namespace
