#include "plc/files/LineFile.h"
#include "plc/station/Faults.h"
#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using namespace plctest;
using plc::FaultKind;
using plc::isOpen;
using plc::TimeWindow;

TEST(TimeWindow, OpensOnce) {
    TimeWindow const window{.from = 10s, .lasts = 2s, .every = {}};
    EXPECT_FALSE(isOpen(window, 9'999'999us));
    EXPECT_TRUE(isOpen(window, 10s));
    EXPECT_TRUE(isOpen(window, 11'999'999us));
    EXPECT_FALSE(isOpen(window, 12s));
    EXPECT_FALSE(isOpen(window, 20s));
}

TEST(TimeWindow, OpensAgainAndAgain) {
    TimeWindow const window{.from = 10s, .lasts = 2s, .every = 10s};
    EXPECT_FALSE(isOpen(window, 0s));
    EXPECT_TRUE(isOpen(window, 10s));
    EXPECT_FALSE(isOpen(window, 12s));
    EXPECT_TRUE(isOpen(window, 31s));
    EXPECT_FALSE(isOpen(window, 39s));
}

TEST(TimeWindow, AStationIsSilentWhileItIsOpen) {
    plc::FaultRule const silent{.kind = FaultKind::kSilent, .when = {.window = TimeWindow{.from = 1s, .lasts = 1s}}};
    plc::Line line(BareLine(OneStation(), silent));
    Panel panel(line);
    EXPECT_EQ(Exchange(panel, kLinkCheck), kStatusDone);
    panel.now = 1s;
    EXPECT_EQ(panel.say(kLinkCheck), "");
    panel.now = 2s;
    EXPECT_EQ(Exchange(panel, kLinkCheck), kStatusDone);
    EXPECT_EQ(line.counters().of(plc::Cause::kFaultInjected), 1U);
}

TEST(TimeWindow, WhatComesOutsideIsNoChance) {
    plc::FaultRule silent{.kind = FaultKind::kSilent, .when = plc::Trigger::nth(1)};
    silent.when.window = TimeWindow{.from = 1s, .lasts = 1s};
    plc::Line line(BareLine(OneStation(), silent));
    Panel panel(line);
    EXPECT_EQ(Exchange(panel, kLinkCheck), kStatusDone);
    panel.now = 1s;
    EXPECT_EQ(panel.say(kLinkCheck), "");
    EXPECT_EQ(panel.say(kLinkCheck), kAck1);
}

std::string ComplaintAboutFault(std::string_view fault) {
    try {
        static_cast<void>(plc::readFaultText(fault, "--fault"));
        return "";
    } catch (base::FileError const& problem) {
        return problem.what();
    }
}

TEST(FaultText, IsARuleAsInADescription) {
    plc::FaultRule const rule =
        plc::readFaultText("kind = 'late', delay_ms = 250, from_ms = 1000, lasts_ms = 500, every_ms = 60000", "f");
    EXPECT_EQ(rule.kind, FaultKind::kLate);
    EXPECT_EQ(rule.delay, 250ms);
    ASSERT_TRUE(rule.when.window);
    EXPECT_EQ(rule.when.window->from, 1s);
    EXPECT_EQ(rule.when.window->lasts, 500ms);
    EXPECT_EQ(rule.when.window->every, 60s);
}

TEST(FaultText, WhatIsNoRuleIsRefused) {
    EXPECT_EQ(ComplaintAboutFault("kind = 'silent'"), "");
    EXPECT_TRUE(
        ComplaintAboutFault("kind = 'x'").starts_with("--fault:1:8: 'kind' is 'x'; it must be silent, ack_missing"));
    EXPECT_TRUE(ComplaintAboutFault("kind = 'x'").ends_with(", garbage, late or pause")) << "they are all there";
    EXPECT_EQ(ComplaintAboutFault(""), "--fault:1: 'kind' is missing");
    EXPECT_EQ(ComplaintAboutFault("kind = 'silent', colour = 1"), "--fault:1:18: there is no 'colour' in [fault]");
    EXPECT_EQ(ComplaintAboutFault("kind = 'silent'}\nx = {"), "--fault:2:1: there is no 'x' in a fault");
    EXPECT_EQ(ComplaintAboutFault("kind = 'silent', from_ms = 1"), "--fault:1:28: 'from_ms' also needs 'lasts_ms'");
    EXPECT_EQ(ComplaintAboutFault("kind = 'silent', every_ms = 1"), "--fault:1:29: 'every_ms' also needs 'lasts_ms'");
    EXPECT_EQ(ComplaintAboutFault("kind = ").substr(0, 8), "--fault:");
}

TEST(LineText, IsToldFromAProgram) {
    EXPECT_TRUE(plc::isLineText("framing = 'x'", "f"));
    EXPECT_TRUE(plc::isLineText("[[station]]", "f"));
    EXPECT_FALSE(plc::isLineText("project_id = 3", "f"));
    EXPECT_FALSE(plc::isLineText("", "f"));
    EXPECT_THROW(static_cast<void>(plc::isLineText("= 3", "f")), base::FileError);
}

} // namespace
