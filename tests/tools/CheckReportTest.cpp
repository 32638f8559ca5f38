#include "tools/velk/check/CheckReport.h"

#include "tests/support/Bytes.h"
#include "tools/velk/Terminal.h"
#include "tools/velk/check/CheckText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace velk;
using velktest::Hex;

constexpr std::chrono::system_clock::time_point kAt{std::chrono::milliseconds(1'500)};

LastWords silenceAfterAnAcknowledge() {
    LastWords words;
    words.sent = Hex("AA AA 00");
    words.came = {Hex("55 55")};
    words.words = {"acknowledge of block 1\nrefused"};
    words.timedOut = true;
    return words;
}

/** A walk that ended at the link check. */
CheckReport failedWalk() {
    CheckReport report;
    report.line = {"/dev/ttyUSB0", "press", 3, {19'200, "even", true, true, 512, 1'000}};
    report.steps = {
        {.step = CheckStep::Port, .outcome = StepOutcome::Ok, .found = "/dev/ttyUSB0", .at = kAt},
        {.step = CheckStep::Bytes, .outcome = StepOutcome::Ok, .words = silenceAfterAnAcknowledge(), .at = kAt},
        {.step = CheckStep::LinkCheck,
         .outcome = StepOutcome::Failed,
         .found = "Timeout on data receiving",
         .words = silenceAfterAnAcknowledge(),
         .at = kAt},
        {.step = CheckStep::Login},
        {.step = CheckStep::SymbolFile},
        {.step = CheckStep::Read}};
    report.causes = {"one", "two", "three"};
    return report;
}

TEST(CheckText, AStepIsALine) {
    Terminal const plain(StreamKinds{});
    std::vector<StepReport> const steps = failedWalk().steps;
    EXPECT_EQ(stepLine(steps[0], plain), "the port opens             good    /dev/ttyUSB0\n");
    EXPECT_EQ(stepLine(steps[1], plain), "bytes come back            good\n");
    EXPECT_EQ(stepLine(steps[2], plain), "the link check is answered FAILED  Timeout on data receiving\n");
    EXPECT_EQ(stepLine(steps[3], plain), "the login is accepted      not reached\n");
}

TEST(CheckText, AFailureHasTheLastWordsAndTheCauses) {
    EXPECT_EQ(failureText(failedWalk(), 80), "\n"
                                             "sent  AA AA 00\n"
                                             "came  55 55\n"
                                             "      acknowledge of block 1\n"
                                             "      refused\n"
                                             "came  nothing more within 1000 ms\n"
                                             "\n"
                                             "Likeliest causes:\n"
                                             "  1. one\n"
                                             "  2. two\n"
                                             "  3. three\n");
    EXPECT_EQ(failureText(CheckReport{}, 80), "");
}

TEST(CheckText, ALongCauseIsBrokenBetweenWords) {
    CheckReport report = failedWalk();
    report.causes = {"the wiring, or a PLC that is off"};
    EXPECT_THAT(failureText(report, 24), testing::EndsWith("  1. the wiring, or a\n     PLC that is off\n"));
}

} // namespace
