#include "tests/support/ConversationTest.h"

#include <optional>
#include <ostream>
#include <random>
#include <string>

/** A station with one fault at a time, and then with all faults at once. */
namespace {

using namespace velktest;
using plc::FaultKind;
using plc::ServiceKind;

plc::LineDescription OneStation(plc::Framing framing) {
    plc::StationDescription station;
    station.program.projectId = 7;
    station.program.variables = {{.name = "Counter", .type = "DINT"},
                                 {.name = "Other", .type = "DINT"},
                                 {.name = "Texts", .type = "ARRAY [0..499] OF BYTE"}};
    station.route = {.levels = 1, .level = {plc::RouteLevel{2, 3, {}}, plc::RouteLevel{}}};
    return {.framing = framing, .stations = {station}};
}

ConfigText ConfigFor(plc::Framing framing) {
    return ConfigText()
        .Set("protType", framing == plc::Framing::kBare ? "Serial_RS232" : "ABB_RS232_AC")
        .Set("RoutingLevels", "1")
        .Set("CouplerLV1", "2")
        .Set("ChannelLV1", "3");
}

class DisturbedLineTest : public ConversationTest {
protected:
    plc::Station& Plc() { return line->station(); }

    void BeginWarm(plc::Framing framing, ConfigText const& config) {
        Begin(OneStation(framing), config);
        counter = Tag("1?Counter?M?0?int");
        Plc().setValue("Counter", 1);
        ExpectNumber<std::int32_t>(counter, 1);
    }

    /** A faultless station must be readable again, with its own value, within a few calls. */
    void ExpectRecovery() {
        bool ok = false;
        for (int call = 0; call < 7 && !ok; ++call) {
            port->Wait(std::chrono::seconds(2));
            ReadOutcome const outcome = Read({counter});
            ok = outcome.ok;
            if (ok) {
                EXPECT_EQ(NumberOf<std::int32_t>(outcome.values), Plc().get<int>("Counter"));
            }
        }
        EXPECT_TRUE(ok) << driver->GetLastErrorString();
    }

    ITag* counter = nullptr;
};

// --- one fault at a time, in the exchange of a read list ---

struct OneFault {
    char const* name;
    plc::FaultRule rule;
    int code;         ///< 2 when the read still succeeds, 3 when it may (routing headers are not checked)
    char const* text; ///< null when the fault's text depends on where it happens
};

std::ostream& operator<<(std::ostream& out, OneFault const& fault) {
    return out << fault.name;
}

plc::FaultRule Rule(FaultKind kind, std::optional<std::uint32_t> value = {}, int delayMs = 100) {
    return {.kind = kind,
            .when = plc::Trigger::nth(1),
            .service = ServiceKind::kReadList,
            .value = value,
            .delay = std::chrono::milliseconds(delayMs)};
}

char const* const kAckTimeout = "Timeout on Acknowledge";
char const* const kDataTimeout = "Timeout on data receiving";
char const* const kShortAck = "Too short Ack message received";
char const* const kWrongAck = "Wrong Ack message received";
char const* const kWrongId = "Wrong Protocol ID received";
char const* const kWrongSum = "Wrong checksum or wrong block number received";

OneFault const kFaults[] = {
    {"AckMissing", Rule(FaultKind::kAckMissing), -4, kAckTimeout},
    {"AckTooShort", Rule(FaultKind::kAckTooShort), -6, kShortAck},
    {"AckWrongHeader", Rule(FaultKind::kAckWrongHeader), -6, kWrongAck},
    {"AckWrongCode", Rule(FaultKind::kAckWrongCode), -6, kWrongAck},
    {"AckWrongNumber", Rule(FaultKind::kAckWrongNumber), -6, kWrongAck},
    {"BlockMissing", Rule(FaultKind::kBlockMissing), -4, kDataTimeout},
    {"BlockTooShort", Rule(FaultKind::kBlockTooShort), -6, "Too short message received"},
    {"BlockWrongProtocolId", Rule(FaultKind::kBlockWrongProtocolId), -6, kWrongId},
    {"BlockWrongChecksum", Rule(FaultKind::kBlockWrongChecksum), -6, kWrongSum},
    {"BlockWrongNumber", Rule(FaultKind::kBlockWrongNumber), -6, kWrongSum},
    {"BlockWrongLength", Rule(FaultKind::kBlockWrongLength), 2, nullptr},
    {"ResponseTooLong", Rule(FaultKind::kResponseTooLong), -1, "Rx Buffer dimension exceeded"},
    {"ClosingMissing", Rule(FaultKind::kClosingMissing), -4, kAckTimeout},
    {"ClosingTooShort", Rule(FaultKind::kClosingTooShort), -6, kShortAck},
    {"ClosingWrongHeader", Rule(FaultKind::kClosingWrongHeader), -6, kWrongId},
    {"ClosingWrongCode", Rule(FaultKind::kClosingWrongCode), -6, kWrongId},
    {"ClosingWrongNumber", Rule(FaultKind::kClosingWrongNumber), -6, kWrongId},
    {"StatusWord", Rule(FaultKind::kStatusWord), -6, "Command not acknowledged by PLC"},
    {"ReplyTooShort", Rule(FaultKind::kReplyTooShort), -1, "Rx Buffer dimension exceeded"},
    {"ReplyTooLong", Rule(FaultKind::kReplyTooLong), -6, "Wrong number of bytes received"},
    {"BadQuality", Rule(FaultKind::kBadQuality), -6, "One of the values has bad quality"},
    {"FlippedBit", Rule(FaultKind::kFlippedBits), 3, nullptr},
    {"DroppedByte", Rule(FaultKind::kDroppedBytes), -6, nullptr},
    {"Garbage", Rule(FaultKind::kGarbage), -6, nullptr},
    {"Late", Rule(FaultKind::kLate, {}, 1500), -4, nullptr},
    {"LateButInTime", Rule(FaultKind::kLate, {}, 900), 2, nullptr},
    {"Pause", Rule(FaultKind::kPause, {}, 100), -6, nullptr},
    {"ShortPause", Rule(FaultKind::kPause, {}, 15), 2, nullptr},
};

class OneFaultTest : public DisturbedLineTest,
                     public ::testing::WithParamInterface<std::tuple<plc::Framing, OneFault>> {};

INSTANTIATE_TEST_SUITE_P(EveryFault, OneFaultTest,
                         ::testing::Combine(::testing::Values(plc::Framing::kBare, plc::Framing::kRouted),
                                            ::testing::ValuesIn(kFaults)),
                         [](auto const& named) {
                             return std::string(std::get<0>(named.param) == plc::Framing::kBare ? "Bare" : "Routed") +
                                    std::get<1>(named.param).name;
                         });

TEST_P(OneFaultTest, IsReportedAndOvercome) {
    auto const& [framing, fault] = GetParam();
    BeginWarm(framing, ConfigFor(framing));
    driver->Config("nonsense"); // set an error of another kind first
    Plc().setValue("Counter", 2);
    Plc().faults().add(fault.rule);
    ReadOutcome const outcome = Read({counter});
    EXPECT_EQ(Count(plc::Cause::kFaultInjected), 1U) << "the fault did not happen";
    if (fault.code == 2 || (fault.code == 3 && outcome.ok)) {
        EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
        EXPECT_EQ(NumberOf<std::int32_t>(outcome.values), 2);
    } else {
        EXPECT_FALSE(outcome.ok);
        EXPECT_EQ(outcome.status[0], 0);
        EXPECT_EQ(outcome.values, Hex("CC CC CC CC"));
        EXPECT_EQ(driver->GetLastError(), fault.code == 3 ? -6 : fault.code) << driver->GetLastErrorString();
        if (fault.text != nullptr) {
            EXPECT_STREQ(driver->GetLastErrorString(), fault.text);
        }
    }
    Plc().setValue("Counter", 3);
    ExpectRecovery();
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 1U) << "no fault of the line is a reason to fetch the file again";
}

TEST_P(OneFaultTest, IsOvercomeByTheNextAttempt) {
    auto const& [framing, fault] = GetParam();
    BeginWarm(framing, ConfigFor(framing).Set("repeat", "6"));
    Plc().setValue("Counter", 2);
    Plc().faults().add(fault.rule);
    ReadOutcome const outcome = Read({counter});
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(NumberOf<std::int32_t>(outcome.values), 2);
}

TEST_F(DisturbedLineTest, RoutingStatusFailsSilently) {
    BeginWarm(plc::Framing::kRouted, ConfigFor(plc::Framing::kRouted));
    driver->Config("nonsense");
    Plc().faults().add(Rule(FaultKind::kRoutingStatus));
    EXPECT_FALSE(Read({counter}).ok);
    ExpectError(-1, "Parser: unknown format");
    ExpectRecovery();
}

TEST_F(DisturbedLineTest, ReportedMismatchWithoutOneFetchesTheSameFileAgain) {
    BeginWarm(plc::Framing::kBare, ConfigFor(plc::Framing::kBare));
    Plc().faults().add(Rule(FaultKind::kStatusWord, 0x33));
    EXPECT_FALSE(Read({counter}).ok);
    ExpectError(-6, "Project ID mismatch");
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 2U);
    ExpectNumber<std::int32_t>(counter, 1);
    ExpectNoComplaints();
}

// --- one fault in another service ---

TEST_F(DisturbedLineTest, UploadThatStopsHalfWay) {
    plc::LineDescription stations = OneStation(plc::Framing::kBare);
    stations.stations[0].filePieceSize = 50;
    for (FaultKind const kind : {FaultKind::kStatusWord, FaultKind::kBlockMissing, FaultKind::kFileDataCount}) {
        std::filesystem::remove(dir.Path("PLCSymbols_1.sdb"));
        stations.stations[0].faults = {{.kind = kind, .when = plc::Trigger::nth(2), .service = ServiceKind::kFileNext}};
        Begin(stations, ConfigFor(plc::Framing::kBare));
        counter = Tag("1?Counter?M?0?int");
        EXPECT_FALSE(Read({counter}).ok);
        ExpectError(-6, "Symbol file not present");
        EXPECT_EQ(Count(plc::Cause::kFaultInjected), 1U);
        ExpectRecovery();
        EXPECT_EQ(OpenHandles(dir.Path("PLCSymbols_1.sdb")), 0);
    }
}

TEST_F(DisturbedLineTest, FileWithoutAnEndIsGivenUp) {
    plc::LineDescription stations = OneStation(plc::Framing::kBare);
    stations.stations[0].filePieceSize = 65535;
    stations.stations[0].blockSize = 1460;
    stations.stations[0].program.areaSizes[0] = 100'000;
    for (int i = 0; i < 1'000; ++i) { // so that the file has some size
        stations.stations[0].program.variables.push_back({.name = "V" + std::to_string(i), .type = "DINT"});
    }
    stations.stations[0].faults = {{.kind = FaultKind::kFileEndless}};
    Begin(stations, ConfigFor(plc::Framing::kBare).Set("BlockSize", "1460"));
    counter = Tag("1?Counter?M?0?int");
    EXPECT_FALSE(Read({counter}).ok);
    ExpectError(-6, "Symbol file not present");
    Plc().faults().clear();
    ExpectRecovery();
}

TEST_F(DisturbedLineTest, RefusedLoginAndLogout) {
    plc::LineDescription stations = OneStation(plc::Framing::kBare);
    stations.stations[0].faults = {
        {.kind = FaultKind::kStatusWord, .when = plc::Trigger::nth(1), .service = ServiceKind::kLogin}};
    Begin(stations, ConfigFor(plc::Framing::kBare));
    counter = Tag("1?Counter?M?0?int");
    EXPECT_FALSE(Read({counter}).ok);
    ExpectError(1, "");
    ExpectNumber<std::int32_t>(counter, 0);
    ExpectNoComplaints();
}

TEST_F(DisturbedLineTest, LostAnswerToAWriteMayOrMayNotHaveWritten) {
    BeginWarm(plc::Framing::kBare, ConfigFor(plc::Framing::kBare));
    plc::FaultRule rule = Rule(FaultKind::kBlockMissing);
    rule.service = ServiceKind::kWriteList;
    Plc().faults().add(rule);
    EXPECT_FALSE(Write({counter}, HostValue<std::int32_t>(9)));
    ExpectError(-4, kDataTimeout);
    int const value = Plc().get<int>("Counter");
    EXPECT_TRUE(value == 1 || value == 9) << value;
    ExpectRecovery();
}

// --- everything at once ---

class StormTest : public DisturbedLineTest, public ::testing::WithParamInterface<int> {
protected:
    /** Every kind of fault with a small probability. A late answer can be mistaken for the next one, see below. */
    std::vector<plc::FaultRule> Storm(bool withLate) const {
        std::vector<plc::FaultRule> rules;
        for (std::size_t i = 0; i < static_cast<std::size_t>(FaultKind::kCount); ++i) {
            auto const kind = static_cast<FaultKind>(i);
            if ((kind == FaultKind::kLate && !withLate) || kind == FaultKind::kFileEndless ||
                kind == FaultKind::kResponseTooLong) {
                continue;
            }
            rules.push_back({.kind = kind,
                             .when = plc::Trigger::with(0.004),
                             .delay = std::chrono::milliseconds(withLate ? 1500 : 60)});
        }
        return rules;
    }
};

INSTANTIATE_TEST_SUITE_P(Seeds, StormTest, ::testing::Range(1, 9));

TEST_P(StormTest, WhatIsReportedAsReadIsTrue) {
    auto const framing = GetParam() % 2 == 0 ? plc::Framing::kBare : plc::Framing::kRouted;
    plc::LineDescription stations = OneStation(framing);
    stations.stations[0].faultSeed = static_cast<std::uint32_t>(GetParam());
    stations.stations[0].byteOrder = GetParam() % 3 == 0 ? plc::ByteOrder::kBig : plc::ByteOrder::kLittle;
    stations.stations[0].faults = Storm(false);
    stations.bytesPerSecond = GetParam() % 4 == 0 ? 11'520 : 0;
    Begin(stations, ConfigFor(framing).Set("repeat", "3").Set("model", GetParam() % 3 == 0 ? "Motorola" : "Intel"));
    counter = Tag("1?Counter?M?0?int");
    ITag* const other = Tag("1?Other?M?0?int");
    ITag* const texts = Tag("1?Texts?M?0?unsignedByte-500");
    std::mt19937 random(static_cast<unsigned>(GetParam()));
    int good = 0;
    for (int i = 0; i < 400; ++i) {
        int const value = static_cast<int>(random());
        Plc().setValue("Counter", value);
        Plc().setValue("Other", -value);
        ReadOutcome const outcome = Read({counter, other});
        if (outcome.ok && outcome.status[0] == 1) {
            EXPECT_EQ(outcome.values, HostValue<std::int32_t>(value) + HostValue<std::int32_t>(-value));
            ++good;
        }
        if (Write({other}, HostValue<std::int32_t>(value))) {
            EXPECT_EQ(Plc().get<int>("Other"), value);
            ++good;
        }
        Bytes const bytes = Counting(500, random() % 256);
        if (i % 10 == 0 && Write({texts}, bytes)) {
            ReadOutcome const back = Read({texts});
            EXPECT_TRUE(!back.ok || back.values == bytes);
        }
    }
    EXPECT_GT(good, 400) << "more goes well than not";
    EXPECT_GT(Count(plc::Cause::kFaultInjected), 50U);
    Plc().faults().clear();
    ExpectRecovery();
}

TEST_P(StormTest, LateAnswersPass) {
    plc::LineDescription stations = OneStation(plc::Framing::kBare);
    stations.stations[0].faultSeed = static_cast<std::uint32_t>(GetParam());
    stations.stations[0].faults = Storm(true);
    Begin(stations, ConfigFor(plc::Framing::kBare).Set("repeat", "2"));
    counter = Tag("1?Counter?M?0?int");
    for (int i = 0; i < 400; ++i) {
        Plc().setValue("Counter", i);
        Read({counter});
        Write({counter}, HostValue<std::int32_t>(i));
    }
    Plc().faults().clear();
    ExpectRecovery();
    for (int i = 0; i < 20; ++i) { // the answers do not stay one request behind for ever
        Plc().setValue("Counter", 1000 + i);
        ExpectNumber<std::int32_t>(counter, 1000 + i);
    }
}

} // namespace
