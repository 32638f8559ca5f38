#include "tests/support/Bytes.h"
#include "tools/velk/commands/check/Diagnosis.h"
#include "tools/velk/commands/check/LineProgress.h"
#include "tools/velk/commands/check/LineScan.h"
#include "tools/velk/project/ProjectFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using namespace velk;
using base::FailureKind;
using velktest::Hex;

// Bare framing, least significant byte first.
constexpr char const* kLinkCheck = "AA AA 09 00 01 00 52 01 | 42 E0 20 26 29 00 00 5D 05";
constexpr char const* kLogin = "AA AA 0E 00 01 00 6D 01 | 01 02 00 00 00 06 00 00 00 00 00 00 00 00";
constexpr char const* kAck1 = "55 55 0A 00 01 00";
constexpr char const* kAck0 = "55 55 0A 00 00 00";
constexpr char const* kDone = "AA AA 02 00 01 00 58 01 | 00 00";
constexpr char const* kLoggedIn = "AA AA 02 00 01 00 43 01 | E8 03";
constexpr char const* kRefused = "AA AA 02 00 01 00 59 01 | 01 00";
constexpr char const* kBigAck1 = "55 55 00 0A 00 01";

constexpr CheckedSettings kLittle{19'200, "none", false, false, 128, 500, false};

/** What is said on a line, and what is made of it. */
class Check : public testing::Test {
protected:
    void to(char const* hex) { frame(host::FrameDirection::Sent, hex); }
    void from(char const* hex) { frame(host::FrameDirection::Received, hex); }
    void silence() { progress_.onTimeout(0); }

    /** A whole exchange with a response in one block. */
    void exchange(char const* request, char const* response) {
        to(request);
        from(kAck1);
        to(kAck0);
        from(response);
        to(kAck1);
        from(kAck0);
    }

    [[nodiscard]] CheckStep failed() const { return failedStep(progress_, true); }
    [[nodiscard]] Symptom symptom(FailureKind kind, CheckedSettings const& settings = kLittle) const {
        return symptomOf(failed(), progress_.lastWords(), kind, settings);
    }

    LineProgress progress_;

private:
    void frame(host::FrameDirection direction, char const* hex) {
        auto const bytes = Hex(hex);
        progress_.onFrame({direction, bytes, 0, 0});
    }
};

TEST_F(Check, NothingButSilence) {
    to(kLinkCheck);
    silence();
    EXPECT_EQ(failed(), CheckStep::Bytes);
    EXPECT_EQ(symptom(FailureKind::Timeout), Symptom::Silence);
    EXPECT_EQ(lastWordsText(progress_.lastWords(), kLittle),
              (std::vector<std::string>{"sent  AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05",
                                        "got   nothing within 500 ms"}));
}

TEST_F(Check, BytesThatAreNoFrame) {
    to(kLinkCheck);
    from("F8 00 3C 81");
    EXPECT_EQ(failed(), CheckStep::LinkCheck);
    EXPECT_EQ(symptom(FailureKind::Garbled), Symptom::Garbage);
}

TEST_F(Check, AnEchoIsNoPlc) {
    to(kLinkCheck);
    from(kLinkCheck);
    EXPECT_EQ(symptom(FailureKind::Garbled), Symptom::Echo);
}

TEST_F(Check, AnswerInTheOtherByteOrder) {
    to(kLinkCheck);
    from(kBigAck1);
    EXPECT_EQ(symptom(FailureKind::Garbled), Symptom::OtherByteOrder);
    CheckedSettings big = kLittle;
    big.bigEndian = true;
    EXPECT_NE(symptom(FailureKind::Garbled, big), Symptom::OtherByteOrder);
}

TEST_F(Check, BareAnswerToARoutedFrame) {
    to("4F 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | "
       "AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05");
    from(kAck1);
    CheckedSettings routed = kLittle;
    routed.routed = true;
    EXPECT_EQ(symptom(FailureKind::Garbled, routed), Symptom::OtherFraming);
}

TEST_F(Check, RoutedAnswerToABareFrame) {
    to(kLinkCheck);
    from("4F 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | 55 55 0A 00 01 00");
    EXPECT_EQ(symptom(FailureKind::Garbled), Symptom::OtherFraming);
}

TEST_F(Check, CouplerThatCannotPassTheFrameOn) {
    to(kLinkCheck);
    from("4F 80 00 10 0A 00 00 00 00 00 00 00 00 00 00 00 00 07 00 | 55 55 0A 00 01 00");
    CheckedSettings routed = kLittle;
    routed.routed = true;
    EXPECT_EQ(symptom(FailureKind::LoginRefused, routed), Symptom::Damaged) << "no coupler is on the way";
    routed.couplers = true;
    EXPECT_EQ(symptom(FailureKind::LoginRefused, routed), Symptom::Routing);
}

TEST_F(Check, NoiseIsNoCouplersStatus) {
    to(kLinkCheck);
    // An O by chance, 234 where the status would be, and no frame behind.
    from("4F 91 3C 81 07 22 B0 5E 13 F4 66 0D A9 70 C8 3B 5A EA 91 | 12 34 56");
    CheckedSettings routed = kLittle;
    routed.routed = true;
    EXPECT_EQ(symptom(FailureKind::Garbled, routed), Symptom::Garbage);
}

TEST_F(Check, DamagedBlock) {
    to(kLinkCheck);
    from(kAck1);
    to(kAck0);
    from("AA AA 02 00 01 00 59 01 00 00"); // the right checksum is 58
    EXPECT_EQ(failed(), CheckStep::LinkCheck);
    EXPECT_EQ(symptom(FailureKind::Garbled), Symptom::Damaged);
}

TEST_F(Check, ALastBlockFlagOfTwoIsNotDamage) {
    exchange(kLinkCheck, kDone);
    exchange(kLogin, "AA AA 02 00 01 00 5A 02 | 01 00"); // refused, with another flag
    EXPECT_EQ(failed(), CheckStep::Login);
    EXPECT_EQ(symptom(FailureKind::LoginRefused), Symptom::Refused);
}

TEST_F(Check, SilenceAfterAnAcknowledge) {
    to(kLinkCheck);
    from(kAck1);
    to(kAck0);
    silence();
    EXPECT_EQ(failed(), CheckStep::LinkCheck);
    EXPECT_EQ(symptom(FailureKind::Timeout), Symptom::FellSilent);
    EXPECT_EQ(
        lastWordsText(progress_.lastWords(), kLittle),
        (std::vector<std::string>{"sent  AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05", "got   55 55 0A 00 01 00",
                                  "      acknowledge of block 1, little-endian", "got   nothing more within 500 ms"}));
}

TEST_F(Check, OnlyTheLastFramesAreKept) {
    to(kLinkCheck);
    for (int i = 0; i < 100; ++i) {
        from(kAck1);
    }
    from(kAck0);
    EXPECT_EQ(progress_.lastWords().came.size(), 8U);
    EXPECT_EQ(progress_.lastWords().meant.back().kind, trace::FrameKind::Closing);
}

TEST_F(Check, RefusedLogin) {
    exchange(kLinkCheck, kDone);
    to(kLogin);
    from(kAck1);
    to(kAck0);
    from(kRefused);
    to(kAck1);
    from(kAck0);
    EXPECT_EQ(failed(), CheckStep::Login);
    EXPECT_EQ(symptom(FailureKind::LoginRefused), Symptom::Refused);
    EXPECT_EQ(progress_.lastWords().status, 1);
}

TEST_F(Check, WhateverIsAnsweredToTheLinkCheckTheLinkWorks) {
    for (char const* const answer : {"AA AA 00 00 01 00 56 01", "AA AA 01 00 01 00 8A 01 | 33", kRefused}) {
        LineProgress progress;
        for (char const* const hex : {kLinkCheck, kAck0}) {
            progress.onFrame({host::FrameDirection::Sent, Hex(hex), 0, 0});
        }
        progress.onFrame({host::FrameDirection::Received, Hex(answer), 0, 0});
        EXPECT_TRUE(progress.reached(CheckStep::LinkCheck)) << answer;
    }
}

TEST_F(Check, NoSymbolFileAfterALogin) {
    exchange(kLinkCheck, kDone);
    exchange(kLogin, kLoggedIn);
    EXPECT_EQ(failed(), CheckStep::SymbolFile);
    EXPECT_EQ(symptom(FailureKind::NoSymbolFile), Symptom::NoSymbolFile);
    EXPECT_EQ(symptom(FailureKind::SymbolFileBroken), Symptom::BadSymbolFile);
    EXPECT_EQ(symptom(FailureKind::StoredSymbolsBroken), Symptom::BadSymbolFile);
    EXPECT_EQ(symptom(FailureKind::Storage), Symptom::BadSymbolFile);
}

TEST_F(Check, AListThatIsAnsweredEndsWithTheRead) {
    exchange(kLinkCheck, kDone);
    exchange(kLogin, kLoggedIn);
    // An empty list of the project 9.
    exchange("AA AA 0A 00 01 00 97 01 | 2E 00 00 00 00 00 09 00 00 00", "AA AA 06 00 01 00 5C 01 | 00 00 00 00 00 00");
    EXPECT_TRUE(progress_.reached(CheckStep::SymbolFile));
    EXPECT_EQ(failed(), CheckStep::Read);
    EXPECT_EQ(symptom(FailureKind::BadQuality), Symptom::BadQuality);
}

TEST_F(Check, TheLoginIsTriedOnlyAfterTheLinkCheck) {
    exchange(kLinkCheck, kDone);
    EXPECT_FALSE(progress_.triedLogin());
    to(kLogin);
    EXPECT_TRUE(progress_.triedLogin());
}

TEST_F(Check, EachStepIsToldOnceWithWhatWasSaidForIt) {
    std::vector<CheckStep> told;
    LineProgress progress([&](CheckStep step) { told.push_back(step); });
    auto const pass = [&](host::FrameDirection direction, char const* hex, std::int64_t at) {
        auto const bytes = Hex(hex);
        progress.onFrame({direction, bytes, at, at});
    };
    pass(host::FrameDirection::Sent, kLinkCheck, 1);
    EXPECT_EQ(progress.find(CheckStep::Bytes), nullptr);
    pass(host::FrameDirection::Received, kAck1, 2);
    pass(host::FrameDirection::Sent, kAck0, 3);
    pass(host::FrameDirection::Received, kDone, 4);
    pass(host::FrameDirection::Received, kDone, 5);
    EXPECT_EQ(told, (std::vector{CheckStep::Bytes, CheckStep::LinkCheck}));
    ReachedStep const* const answered = progress.find(CheckStep::LinkCheck);
    ASSERT_NE(answered, nullptr);
    EXPECT_EQ(answered->at, 4);
    EXPECT_EQ(answered->words.sent, Hex(kLinkCheck));
    EXPECT_EQ(answered->words.came, (std::vector{Hex(kAck1), Hex(kDone)}));
}

TEST_F(Check, DroppedBytesAreBytes) {
    progress_.onDropped(Hex("00 FF"), 0);
    EXPECT_EQ(failed(), CheckStep::LinkCheck);
}

TEST_F(Check, PortThatDoesNotOpen) {
    EXPECT_EQ(failedStep(progress_, false), CheckStep::Port);
    auto const of = [&](FailureKind kind) { return symptomOf(CheckStep::Port, progress_.lastWords(), kind, kLittle); };
    EXPECT_EQ(of(FailureKind::PortMissing), Symptom::PortMissing);
    EXPECT_EQ(of(FailureKind::PortNoHardware), Symptom::PortNoHardware);
    EXPECT_EQ(of(FailureKind::PortDenied), Symptom::PortRefused);
    EXPECT_EQ(of(FailureKind::PortBusy), Symptom::PortBusy);
    EXPECT_EQ(of(FailureKind::NotAPort), Symptom::NotAPort);
    EXPECT_EQ(of(FailureKind::PortSettings), Symptom::PortFault);
    EXPECT_EQ(of(FailureKind::PortFault), Symptom::PortFault);
}

TEST_F(Check, APortThatDiesIsNoMatterOfTheLine) {
    to(kLinkCheck);
    EXPECT_EQ(failed(), CheckStep::Bytes);
    EXPECT_EQ(symptom(FailureKind::PortDied), Symptom::PortFault);
    from(kAck1);
    EXPECT_EQ(failed(), CheckStep::LinkCheck);
    EXPECT_EQ(symptom(FailureKind::PortDied), Symptom::PortFault);
}

TEST_F(Check, LongFramesAreShownShortened) {
    to("AA AA");
    std::vector<unsigned char> const many(100, 0x11);
    progress_.onFrame({host::FrameDirection::Received, many, 0, 0});
    std::vector<std::string> const lines = lastWordsText(progress_.lastWords(), kLittle);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[1].ends_with("11 11 ... (100 bytes)")) << lines[1];
}

TEST(LikelyCauses, EveryStepAndSymptomHasThreeDifferentOnes) {
    for (CheckStep const step : kCheckSteps) {
        for (int symptom = 0; symptom <= static_cast<int>(Symptom::Unclear); ++symptom) {
            auto const causes = likelyCauses(step, static_cast<Symptom>(symptom), kLittle);
            std::set<std::string> const different(causes.begin(), causes.end());
            EXPECT_EQ(different.size(), causes.size()) << stepText(step) << ", symptom " << symptom;
            EXPECT_FALSE(different.contains("")) << stepText(step) << ", symptom " << symptom;
        }
    }
}

TEST(LikelyCauses, ANameWithoutHardwareIsNoUnpluggedAdapter) {
    auto const causes = likelyCauses(CheckStep::Port, Symptom::PortNoHardware, kLittle);
    EXPECT_EQ(causes[0].find("not plugged in"), std::string::npos) << causes[0];
    EXPECT_NE(causes[0].find("no such port"), std::string::npos) << causes[0];
}

TEST(LikelyCauses, NameTheOtherByteOrderAndFraming) {
    EXPECT_NE(likelyCauses(CheckStep::LinkCheck, Symptom::OtherByteOrder, kLittle)[0].find("big"), std::string::npos);
    EXPECT_NE(likelyCauses(CheckStep::LinkCheck, Symptom::OtherFraming, kLittle)[0].find("routed"), std::string::npos);
}

TEST(LineScan, TriesThePresentSettingsFirstAndEachOnce) {
    LineCandidate const present{19'200, "even", "routed", "little"};
    std::vector<LineCandidate> const all = scanCandidates(present);
    EXPECT_EQ(all.front(), present);
    EXPECT_EQ(all.size(), 60U); // 5 speeds, 3 parities, 2 framings, 2 byte orders
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(all[i].baud, 19'200);
        EXPECT_EQ(all[i].parity, "even");
    }
    for (LineCandidate const& each : all) {
        EXPECT_EQ(std::count(all.begin(), all.end(), each), 1) << candidateText(each);
    }
}

TEST(LineScan, UnusualPresentSettingsComeOnTop) {
    EXPECT_EQ(scanCandidates({300, "none", "bare", "big"}).size(), 64U);
}

TEST(LineScan, ACandidateCountsForEveryStation) {
    Settings settings;
    host::NodeOverrides own;
    own.node = 3;
    own.timeoutMs = 9000;
    own.repeat = 5;
    own.model = "Motorola";
    settings.config.nodeOverrides.push_back(own);
    Settings const tried = settingsFor(settings, {9600, "odd", "bare", "little"}, 300);
    EXPECT_EQ(tried.config.baudrate, 9600);
    EXPECT_EQ(tried.config.parity, "odd");
    EXPECT_EQ(tried.config.protType, "Serial_RS232");
    EXPECT_EQ(tried.nodeSettings(3).model, "Intel");
    EXPECT_EQ(tried.nodeSettings(3).timeoutMs, 300);
    EXPECT_EQ(tried.nodeSettings(3).repeat, 1);
}

TEST(LineScan, ProjectLinesAreAProjectFile) {
    Settings settings;
    settings.config.uart = "/dev/odd \"name\"\\";
    settings.node = 3;
    Project const project = readProjectText(projectLines(settings, {9600, "odd", "bare", "little"}), "test.toml");
    EXPECT_EQ(project.config.uart, settings.config.uart);
    EXPECT_EQ(project.config.baudrate, 9600);
    EXPECT_EQ(project.config.parity, "odd");
    EXPECT_EQ(project.config.protType, "Serial_RS232");
    ASSERT_EQ(project.stations.size(), 1U);
    EXPECT_EQ(project.stations[0].node, 3);
}

} // namespace
