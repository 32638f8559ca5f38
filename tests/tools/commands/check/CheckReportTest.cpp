#include "tools/velk/commands/check/CheckReport.h"

#include "tests/support/Bytes.h"
#include "tools/velk/commands/check/CheckJson.h"
#include "tools/velk/commands/check/CheckText.h"
#include "tools/velk/terminal/Terminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace velk;
using testing::ElementsAre;
using velktest::Hex;
using Json = nlohmann::json;

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
         .failure = base::Failure{base::FailureKind::Timeout, "Timeout on data receiving", -4},
         .words = silenceAfterAnAcknowledge(),
         .at = kAt},
        {.step = CheckStep::Login},
        {.step = CheckStep::SymbolFile},
        {.step = CheckStep::Read}};
    report.causes = {"one", "two", "three"};
    return report;
}

TEST(CheckJson, HasTheLineAndItsSettings) {
    Json const json = Json::parse(checkJson(failedWalk()));
    EXPECT_EQ(json["port"], "/dev/ttyUSB0");
    EXPECT_EQ(json["station"], "press");
    EXPECT_EQ(json["node"], 3);
    EXPECT_EQ(json["settings"], Json::parse(R"({"baud": 19200, "parity": "even", "framing": "routed",
                                                "byte_order": "big", "block_size": 512, "timeout_ms": 1000})"));
}

TEST(CheckJson, HasEveryStepWithWhatWasSaidForIt) {
    Json const steps = Json::parse(checkJson(failedWalk()))["steps"];
    ASSERT_EQ(steps.size(), 6U);
    EXPECT_EQ(steps[0], Json::parse(R"({"name": "port", "text": "the port opens", "outcome": "ok",
                                        "found": "/dev/ttyUSB0", "time": "1970-01-01T00:00:01.500Z"})"));
    EXPECT_EQ(steps[2], Json::parse(R"({"name": "link_check", "text": "the link check is answered",
                                        "outcome": "failed", "reason": "Timeout on data receiving",
                                        "kind": "no_answer", "driver_code": -4,
                                        "sent": "AA AA 00", "received": ["55 55"],
                                        "meaning": ["acknowledge of block 1; refused"], "timed_out": true,
                                        "time": "1970-01-01T00:00:01.500Z"})"));
    EXPECT_EQ(steps[3], Json::parse(R"({"name": "login", "text": "the login is accepted", "outcome": "not reached"})"));
    EXPECT_EQ(steps[4]["name"], "symbol_file");
    EXPECT_EQ(steps[5]["name"], "read");
}

TEST(CheckJson, NamesTheStepThatFailedAndTheCauses) {
    Json const json = Json::parse(checkJson(failedWalk()));
    EXPECT_EQ(json["failed"], "link_check");
    EXPECT_THAT(json["causes"], ElementsAre("one", "two", "three"));
    EXPECT_TRUE(json["program"].is_null());
}

TEST(CheckJson, HasTheProgramOfAGoodWalkAndNoCause) {
    CheckReport report = failedWalk();
    report.steps.resize(2);
    report.causes.clear();
    report.program = FoundProgram{305'419'896, 12, 3};
    Json const json = Json::parse(checkJson(report));
    EXPECT_TRUE(json["failed"].is_null());
    EXPECT_EQ(json["causes"], Json::array());
    EXPECT_EQ(json["program"], Json::parse(R"({"project": 305419896, "variables": 12, "stored": false, "pieces": 3})"));
}

TEST(CheckJson, ASkippedStepTellsWhy) {
    CheckReport report;
    report.steps = {{.step = CheckStep::Read, .outcome = StepOutcome::Skipped, .found = "nothing to read"}};
    Json const step = Json::parse(checkJson(report))["steps"][0];
    EXPECT_EQ(step["outcome"], "skipped");
    EXPECT_EQ(step["reason"], "nothing to read");
}

TEST(CheckJson, BytesThatAreNoUtf8DoNotSpoilTheDocument) {
    CheckReport report;
    report.line.port = "/tmp/\xE4";
    EXPECT_EQ(Json::parse(checkJson(report))["port"], "/tmp/\xC3\xA4");
}

ScanReport scanned(std::vector<Answer> const& answers) {
    ScanReport report;
    int baud = 9'600;
    for (Answer const answer : answers) {
        report.attempts.push_back({{baud, "none", "bare", "little"}, answer, kAt});
        baud *= 2;
    }
    return report;
}

TEST(ScanJson, HasEveryAttemptAndTheSettingsThatAnswered) {
    Json const json =
        Json::parse(scanJson(scanned({Answer::None, Answer::NotPossible, Answer::Bytes, Answer::LinkCheck})));
    std::vector<std::string> outcomes;
    for (Json const& attempt : json["attempts"]) {
        outcomes.push_back(attempt["outcome"]);
    }
    EXPECT_THAT(outcomes, ElementsAre("silent", "not possible", "bytes", "answered"));
    EXPECT_EQ(json["attempts"][0], Json::parse(R"({"baud": 9600, "parity": "none", "framing": "bare",
                                                   "byte_order": "little", "outcome": "silent",
                                                   "time": "1970-01-01T00:00:01.500Z"})"));
    EXPECT_EQ(json["found"],
              Json::parse(R"({"baud": 76800, "parity": "none", "framing": "bare", "byte_order": "little"})"));
}

TEST(ScanJson, FindsNothingOnALineThatOnlyHasNoise) {
    ScanReport const report = scanned({Answer::None, Answer::Bytes});
    EXPECT_TRUE(Json::parse(scanJson(report))["found"].is_null());
    EXPECT_THAT(report.stirred(), ElementsAre(LineCandidate{19'200, "none", "bare", "little"}));
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
                                             "got   55 55\n"
                                             "      acknowledge of block 1\n"
                                             "      refused\n"
                                             "got   nothing more within 1000 ms\n"
                                             "\n"
                                             "Most likely causes:\n"
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
