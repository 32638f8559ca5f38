#include "plc/station/Faults.h"

#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>

namespace {

using namespace std::chrono_literals;
using namespace plctest;
using plc::Cause;
using plc::FaultKind;
using plc::FaultRule;
using plc::ServiceKind;
using plc::Trigger;

class Plan : public testing::Test {
protected:
    Plan() : reporter(&recorder, 1), plan(1, {}, {reporter, 0}) {}

    /** One letter per chance: x when the rule acts. */
    std::string chances(FaultKind kind, int count) {
        std::string text;
        for (int i = 0; i < count; ++i) {
            text += plan.strike(kind) != nullptr ? 'x' : '.';
        }
        return text;
    }

    Recorder recorder;
    plc::EventReporter reporter;
    plc::FaultPlan plan;
};

TEST_F(Plan, StrikesAlwaysOrAtTheNthChanceOrForAWhile) {
    plan.add({.kind = FaultKind::kAckMissing, .when = Trigger::nth(3)});
    plan.add({.kind = FaultKind::kBlockMissing});
    plan.add({.kind = FaultKind::kLate, .when = {.first = 2, .count = 2}});
    EXPECT_EQ(chances(FaultKind::kAckMissing, 5), "..x..");
    EXPECT_EQ(chances(FaultKind::kBlockMissing, 3), "xxx");
    EXPECT_EQ(chances(FaultKind::kLate, 5), ".xx..");
    EXPECT_EQ(chances(FaultKind::kPause, 3), "...");
    EXPECT_EQ(reporter.all().of(Cause::kFaultInjected), 6U);
    EXPECT_EQ(recorder.events[0].text, "ack_missing at chance 3, service unknown");
    plan.clear();
    EXPECT_EQ(chances(FaultKind::kBlockMissing, 2), "..");
}

TEST_F(Plan, AServicesRuleCountsOnlyThatServicesChances) {
    plan.add({.kind = FaultKind::kAckMissing, .when = Trigger::nth(2), .service = ServiceKind::kReadList});
    plan.setService(ServiceKind::kLogin);
    EXPECT_EQ(chances(FaultKind::kAckMissing, 3), "...");
    plan.setService(ServiceKind::kReadList);
    EXPECT_EQ(chances(FaultKind::kAckMissing, 3), ".x.");
}

TEST_F(Plan, ProbabilityIsMetAndTheSameSeedRepeats) {
    plan.add({.kind = FaultKind::kLate, .when = Trigger::with(0.25)});
    std::string const first = chances(FaultKind::kLate, 10'000);
    auto const strikes = std::count(first.begin(), first.end(), 'x');
    EXPECT_GT(strikes, 2'300);
    EXPECT_LT(strikes, 2'700);
    plc::FaultPlan again(1, {{.kind = FaultKind::kLate, .when = Trigger::with(0.25)}}, {reporter, 0});
    plc::FaultPlan other(2, {{.kind = FaultKind::kLate, .when = Trigger::with(0.25)}}, {reporter, 0});
    std::string same;
    std::string different;
    for (int i = 0; i < 10'000; ++i) {
        same += again.strike(FaultKind::kLate) != nullptr ? 'x' : '.';
        different += other.strike(FaultKind::kLate) != nullptr ? 'x' : '.';
    }
    EXPECT_EQ(first, same);
    EXPECT_NE(first, different);
}

TEST_F(Plan, ProbabilityZeroNeverAndOneAlways) {
    plan.add({.kind = FaultKind::kLate, .when = Trigger::with(0)});
    plan.add({.kind = FaultKind::kPause, .when = Trigger::with(1)});
    EXPECT_EQ(chances(FaultKind::kLate, 100), std::string(100, '.'));
    EXPECT_EQ(chances(FaultKind::kPause, 100), std::string(100, 'x'));
}

TEST(FaultNames, AreReadAsTheyAreWritten) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(FaultKind::kCount); ++i) {
        auto const kind = static_cast<FaultKind>(i);
        EXPECT_EQ(plc::faultNamed(nameOf(kind)), kind) << nameOf(kind);
    }
    EXPECT_EQ(plc::faultNamed("ack_missing"), FaultKind::kAckMissing);
    EXPECT_EQ(plc::faultNamed("pause"), FaultKind::kPause);
    EXPECT_FALSE(plc::faultNamed("Pause"));
    EXPECT_EQ(plc::serviceNamed("file_next"), ServiceKind::kFileNext);
    EXPECT_FALSE(plc::serviceNamed(""));
}

TEST(CauseNames, EveryCauseHasOne) {
    EXPECT_EQ(nameOf(Cause::kExchangeDone), "exchange done");
    EXPECT_EQ(nameOf(Cause::kProjectMismatch), "project mismatch");
    EXPECT_EQ(nameOf(Cause::kChecksum), "wrong checksum");
    EXPECT_EQ(nameOf(Cause::kExchangeTimeout), "exchange timed out");
    EXPECT_EQ(nameOf(Cause::kNoOpenFile), "no open file");
    EXPECT_FALSE(isComplaint(Cause::kFaultInjected));
    EXPECT_FALSE(isComplaint(Cause::kExchangeAbandoned));
    EXPECT_TRUE(isComplaint(Cause::kGarbage));
    EXPECT_TRUE(isComplaint(Cause::kNoOpenFile));
}

/** A bare line whose station shows one fault at the first chance. */
class Misbehaving {
public:
    explicit Misbehaving(FaultRule fault, plc::StationDescription station = OneStation())
        : line(BareLine(std::move(station), Once(std::move(fault)))), panel(line) {}

    /** The station's three frames of a link check, each after what the panel sends. */
    std::string linkCheck() {
        std::string said = panel.say(kLinkCheck) + " | ";
        said += panel.say(kAck0) + " | ";
        return said + panel.say(kAck1);
    }

    static FaultRule Once(FaultRule fault) {
        fault.when = Trigger::nth(1);
        return fault;
    }

    plc::Line line;
    Panel panel;
};

constexpr std::string_view kGoodLinkCheck = "55 55 0A 00 01 00 | AA AA 02 00 01 00 58 01 00 00 | 55 55 0A 00 00 00";

std::string LinkCheckWith(FaultRule fault) {
    Misbehaving plc(std::move(fault));
    std::string const bad = plc.linkCheck();
    plc.panel.now += 2s;
    // The station works correctly again in the next exchange.
    EXPECT_EQ(plc.linkCheck(), kGoodLinkCheck);
    return bad;
}

TEST(Fault, SilentTakesNoNoticeOfAFrame) {
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kSilent}), " |  | ");
}

TEST(Fault, Acknowledges) {
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kAckMissing}), " | AA AA 02 00 01 00 58 01 00 00 | 55 55 0A 00 00 00");
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kAckTooShort}).substr(0, 17), "55 55 0A 00 01 | ");
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kAckTooShort, .value = 1}).substr(0, 5), "55 | ");
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kAckWrongHeader}).substr(0, 17), "56 55 0A 00 01 00");
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kAckWrongHeader, .value = 0xAA}).substr(0, 17), "AA 55 0A 00 01 00");
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kAckWrongCode}).substr(0, 17), "55 55 0B 00 01 00");
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kAckWrongNumber}).substr(0, 17), "55 55 0A 00 02 00");
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kAckWrongNumber, .value = 0}).substr(0, 17), "55 55 0A 00 00 00");
}

TEST(Fault, ResponseBlocks) {
    auto const block = [](FaultRule fault) {
        std::string const all = LinkCheckWith(std::move(fault));
        std::size_t const start = all.find("| ") + 2;
        return all.substr(start, all.find(" | ", start) - start);
    };
    EXPECT_EQ(block({.kind = FaultKind::kBlockMissing}), "");
    EXPECT_EQ(block({.kind = FaultKind::kBlockTooShort}), "AA AA 02 00 01 00 58");
    EXPECT_EQ(block({.kind = FaultKind::kBlockTooShort, .value = 2}), "AA AA");
    EXPECT_EQ(block({.kind = FaultKind::kBlockWrongProtocolId}), "AB AA 02 00 01 00 59 01 00 00");
    EXPECT_EQ(block({.kind = FaultKind::kBlockWrongChecksum}), "AA AA 02 00 01 00 59 01 00 00");
    EXPECT_EQ(block({.kind = FaultKind::kBlockWrongNumber}), "AA AA 02 00 02 00 59 01 00 00");
    EXPECT_EQ(block({.kind = FaultKind::kBlockWrongNumber, .value = 0x100}), "AA AA 02 00 00 01 58 01 00 00");
    EXPECT_EQ(block({.kind = FaultKind::kBlockWrongLength}), "AA AA 03 00 01 00 59 01 00 00");
    EXPECT_EQ(block({.kind = FaultKind::kBlockWrongLength, .value = 0}), "AA AA 00 00 01 00 56 01 00 00");
}

TEST(Fault, ClosingAcknowledge) {
    auto const closing = [](FaultRule fault) {
        std::string const all = LinkCheckWith(std::move(fault));
        return all.substr(all.rfind("| ") + 2);
    };
    EXPECT_EQ(closing({.kind = FaultKind::kClosingMissing}), "");
    EXPECT_EQ(closing({.kind = FaultKind::kClosingTooShort}), "55 55 0A 00 00");
    EXPECT_EQ(closing({.kind = FaultKind::kClosingWrongHeader}), "56 55 0A 00 00 00");
    EXPECT_EQ(closing({.kind = FaultKind::kClosingWrongCode}), "55 55 0B 00 00 00");
    EXPECT_EQ(closing({.kind = FaultKind::kClosingWrongNumber}), "55 55 0A 00 01 00");
}

TEST(Fault, ResponseLongerThanAnyonesBuffer) {
    plc::StationDescription station = OneStation();
    station.blockSize = 1460;
    Misbehaving plc({.kind = FaultKind::kResponseTooLong}, station);
    ASSERT_EQ(plc.panel.say(kLinkCheck), kAck1);
    std::size_t payload = 0;
    std::string frame = plc.panel.say(kAck0);
    for (unsigned number = 1; frame != kAck0; ++number) {
        ASSERT_GT(frame.size(), 24U);
        payload += (frame.size() + 1) / 3 - 8;
        plc::Bytes ack = Hex(kAck0);
        ack[4] = static_cast<std::uint8_t>(number);
        frame = plc.panel.say(ack);
    }
    EXPECT_EQ(payload, 75'001U);
}

TEST(Fault, RoutingStatus) {
    plc::StationDescription station = OneStation();
    station.faults = {{.kind = FaultKind::kRoutingStatus, .when = Trigger::nth(1)},
                      {.kind = FaultKind::kRoutingStatus, .when = Trigger::nth(2), .value = 9}};
    plc::Line line({.framing = plc::Framing::kRouted, .stations = {station}});
    Panel panel(line);
    plc::Bytes const header = Hex("4F 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
    EXPECT_EQ(panel.say(header + Hex(kLinkCheck)),
              "4F 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 55 55 0A 00 01 00");
    EXPECT_EQ(panel.say(header + Hex(kAck0)),
              "4F 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 09 00 AA AA 02 00 01 00 58 01 00 00");
    EXPECT_EQ(panel.say(header + Hex(kAck1)),
              "4F 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 55 55 0A 00 00 00");
}

TEST(Fault, RoutedFramesAreCutToTheirHeaderOrLess) {
    plc::StationDescription station = OneStation();
    station.faults = {{.kind = FaultKind::kAckTooShort},
                      {.kind = FaultKind::kBlockTooShort, .when = Trigger::nth(1)},
                      {.kind = FaultKind::kBlockTooShort, .when = Trigger::nth(2), .value = 3}};
    plc::Line line({.framing = plc::Framing::kRouted, .stations = {station}});
    Panel panel(line);
    plc::Bytes const header = Hex("4F 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
    EXPECT_EQ(panel.say(header + Hex(kLinkCheck)), Show(header + Hex("55 55 0A 00 01")));
    EXPECT_EQ(panel.say(header + Hex(kAck0)), Show(header + Hex("AA AA 02 00 01 00 58")));
    panel.say(header + Hex(kLinkCheck));
    EXPECT_EQ(panel.say(header + Hex(kAck0)), "4F 80 00");
}

TEST(Fault, StatusWordInsteadOfTheService) {
    Misbehaving login({.kind = FaultKind::kStatusWord, .service = ServiceKind::kLogin});
    EXPECT_EQ(Exchange(login.panel, kLinkCheck), kStatusDone);
    EXPECT_EQ(Exchange(login.panel, kLogin), "AA AA 02 00 01 00 59 01 01 00");
    EXPECT_FALSE(login.line.station().loggedIn());
    EXPECT_EQ(Exchange(login.panel, kLogin), kLoginAccepted);

    Misbehaving logout({.kind = FaultKind::kStatusWord, .service = ServiceKind::kLogout, .value = 0x1234});
    ASSERT_EQ(Exchange(logout.panel, kLogin), kLoginAccepted);
    EXPECT_EQ(Exchange(logout.panel, kLogout), "AA AA 02 00 01 00 9E 01 34 12");
    EXPECT_TRUE(logout.line.station().loggedIn());
    EXPECT_EQ(Exchange(logout.panel, kLogout), kStatusDone);

    Misbehaving list({.kind = FaultKind::kStatusWord, .service = ServiceKind::kReadList, .value = 0x33});
    ASSERT_EQ(Exchange(list.panel, kLogin), kLoginAccepted);
    EXPECT_EQ(Exchange(list.panel, kEmptyRead), "AA AA 02 00 01 00 8B 01 33 00");
    EXPECT_EQ(Exchange(list.panel, kEmptyRead), kEmptyReadReply);
}

TEST(Fault, ReplyOfAnotherLength) {
    Misbehaving shorter({.kind = FaultKind::kReplyTooShort, .service = ServiceKind::kReadList});
    ASSERT_EQ(Exchange(shorter.panel, kLogin), kLoginAccepted);
    EXPECT_EQ(Exchange(shorter.panel, kEmptyRead), "AA AA 05 00 01 00 5B 01 00 00 00 00 00");
    Misbehaving longer({.kind = FaultKind::kReplyTooLong, .service = ServiceKind::kReadList, .value = 2});
    ASSERT_EQ(Exchange(longer.panel, kLogin), kLoginAccepted);
    EXPECT_EQ(Exchange(longer.panel, kEmptyRead), "AA AA 08 00 01 00 5E 01 00 00 00 00 00 00 00 00");
    Misbehaving empty({.kind = FaultKind::kReplyTooShort, .value = 100});
    EXPECT_EQ(Exchange(empty.panel, kLinkCheck), "AA AA 00 00 01 00 56 01");
}

class BadQuality : public testing::Test {
protected:
    /** The reply to a read of area 0: byte 0, byte 2 and bit 8, after the status. */
    static std::string Read(FaultRule fault) {
        plc::StationDescription station = OneStation();
        station.program.variables = {{.name = "a", .type = "BYTE", .value = 0x11},
                                     {.name = "b", .type = "ARRAY [0..1] OF BYTE", .offset = 1},
                                     {.name = "c", .type = "BIT", .offset = 8}};
        Misbehaving plc(std::move(fault), station);
        EXPECT_EQ(Exchange(plc.panel, kLogin), kLoginAccepted);
        // AA + AA + 28 + 01 + 01 + 2E + 03 + 01 + 02 + 01 + 08 + 01 = 1BC
        std::string const reply = Exchange(plc.panel, "AA AA 28 00 01 00 BC 01 2E 00 03 00 00 00"
                                                      "| 00 00 00 00 00 00 01 00 00 00 | 00 00 02 00 00 00 01 00 00 00"
                                                      "| 00 00 08 00 00 00 00 00 00 00 | 01 00 00 00");
        return reply.substr(reply.size() - 17);
    }
};

TEST_F(BadQuality, OfEveryItem) {
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality}), "00 11 00 00 00 00");
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality, .value = 2}), "02 11 02 00 02 00");
}

TEST_F(BadQuality, OfTheChosenItem) {
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality, .item = 1}), "01 11 00 00 01 00");
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality, .item = 3}), "01 11 01 00 01 00");
}

TEST_F(BadQuality, OfTheChosenVariable) {
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality, .variable = "A"}), "00 11 01 00 01 00");
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality, .variable = "b"}), "01 11 00 00 01 00");
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality, .variable = "b[0]"}), "01 11 01 00 01 00");
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality, .variable = "c"}), "01 11 01 00 00 00");
    EXPECT_EQ(Read({.kind = FaultKind::kBadQuality, .variable = "nothing"}), "01 11 01 00 01 00");
}

/** The file service alone. */
class BadFile : public testing::Test {
protected:
    explicit BadFile(FaultRule fault = {.kind = FaultKind::kFileEndless})
        : reporter(nullptr, 1), faults(1, {std::move(fault)}, {reporter, 0}),
          program(loadProgram({}, plc::ByteOrder::kLittle)),
          services({.filePieceSize = 3}, program, faults, {reporter, 0}) {
        program.symbolFile = Hex("01 02 03 04 05");
        ask(Hex("01 02 00 00 00 06 00 00 00 00 00 00 00 00"));
    }

    std::string open() { return ask(Hex("31 00 0D 00") + velktest::Text("DOWNLOAD.SDB") + Hex("00")); }
    std::string next() { return ask(Hex("32")); }

    std::string ask(plc::Bytes const& request) {
        faults.setService(plc::serviceOf(request));
        return Show(services.handle(request).value());
    }

    plc::EventReporter reporter;
    plc::FaultPlan faults;
    plc::LoadedProgram program;
    plc::Services services;
};

TEST_F(BadFile, BeginsAgainAtItsEndAndNeverStops) {
    EXPECT_EQ(open(), "00 00 01 00 03 00 01 02 03");
    EXPECT_EQ(next(), "00 00 01 00 02 00 04 05");
    EXPECT_EQ(next(), "00 00 01 00 03 00 01 02 03");
    EXPECT_EQ(next(), "00 00 01 00 02 00 04 05");
}

TEST_F(BadFile, AnEmptyEndlessFileGivesNothingForEver) {
    program.symbolFile.clear();
    EXPECT_EQ(open(), "00 00 01 00 00 00");
    EXPECT_EQ(next(), "00 00 01 00 00 00");
}

class BadFileCount : public BadFile {
protected:
    BadFileCount() : BadFile({.kind = FaultKind::kFileDataCount, .when = Trigger::nth(2), .value = 7}) {}
};

TEST_F(BadFileCount, IsTooHigh) {
    EXPECT_EQ(open(), "00 00 01 00 03 00 01 02 03");
    EXPECT_EQ(next(), "00 00 00 00 09 00 04 05");
}

class BadFilePiece : public BadFile {
protected:
    BadFilePiece() : BadFile({.kind = FaultKind::kStatusWord, .service = ServiceKind::kFileNext}) {}
};

TEST_F(BadFilePiece, IsRefusedHalfWay) {
    EXPECT_EQ(open(), "00 00 01 00 03 00 01 02 03");
    EXPECT_EQ(next(), "01 00 00 00 00 00");
}

TEST(Fault, FlippedBitsDroppedBytesAndGarbageChangeAFrame) {
    std::string const flipped = LinkCheckWith({.kind = FaultKind::kFlippedBits}).substr(0, 17);
    plc::Bytes const good = Hex(kAck1);
    plc::Bytes const bad = Hex(flipped);
    int bits = 0;
    for (std::size_t i = 0; i < good.size(); ++i) {
        bits += std::popcount(static_cast<unsigned>(good[i] ^ bad[i]));
    }
    EXPECT_EQ(bits, 1) << flipped;
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kDroppedBytes, .value = 2}).find(" | "), 11U);
    EXPECT_EQ(LinkCheckWith({.kind = FaultKind::kDroppedBytes, .value = 100}).find(" | "), 0U);
    std::string const garbage = LinkCheckWith({.kind = FaultKind::kGarbage});
    EXPECT_EQ(garbage.substr(15, 20), "55 55 0A 00 01 00 | ");
}

TEST(Fault, LateFrame) {
    Misbehaving plc({.kind = FaultKind::kLate, .delay = 300ms});
    EXPECT_EQ(plc.panel.say(kLinkCheck), "");
    EXPECT_EQ(plc.panel.hearAfter(299ms), "");
    EXPECT_EQ(plc.panel.hearAfter(1ms), kAck1);
}

TEST(Fault, LateFrameComesInTheMiddleOfTheNextExchange) {
    plc::StationDescription station = OneStation();
    station.faults = {{.kind = FaultKind::kLate, .when = Trigger::nth(2), .delay = 300ms}};
    plc::Line line(BareLine(station));
    Panel panel(line);
    ASSERT_EQ(panel.say(kLinkCheck), kAck1);
    EXPECT_EQ(panel.say(kAck0), "");
    panel.now += 200ms;
    EXPECT_EQ(panel.say(kLogin), kAck1);
    EXPECT_EQ(panel.hearAfter(100ms), kStatusDone);
    EXPECT_EQ(panel.say(kAck0), kLoginAccepted);
}

TEST(Fault, PauseInTheMiddleOfAFrame) {
    Misbehaving plc({.kind = FaultKind::kPause, .delay = 30ms});
    EXPECT_EQ(plc.panel.say(kLinkCheck), "55 55 0A");
    EXPECT_EQ(plc.panel.hearAfter(29ms), "");
    EXPECT_EQ(plc.panel.hearAfter(1ms), "00 01 00");
}

TEST(Fault, AreAddedAndClearedAtRunTime) {
    plc::Line line(BareLine());
    Panel panel(line);
    line.station().faults().add({.kind = FaultKind::kAckMissing});
    EXPECT_EQ(panel.say(kLinkCheck), "");
    line.station().faults().clear();
    EXPECT_EQ(panel.say(kLinkCheck), kAck1);
}

} // namespace
