#include "tools/velk/commands/simulate/PlcFlags.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using velk::simulation::parseReplacement;
using velk::simulation::parseShare;
using velk::simulation::parseSilence;
using velk::simulation::shareFault;

TEST(PlcFlags, SharesArePercentOrParts) {
    EXPECT_DOUBLE_EQ(parseShare("1%").value(), 0.01);
    EXPECT_DOUBLE_EQ(parseShare("0.1 %").value(), 0.001);
    EXPECT_DOUBLE_EQ(parseShare("0.25").value(), 0.25);
    EXPECT_DOUBLE_EQ(parseShare("100%").value(), 1);
    EXPECT_DOUBLE_EQ(parseShare("0").value(), 0);
}

TEST(PlcFlags, WhatIsNoShareIsRefused) {
    for (char const* const text : {"", "%", "x", "1x", "101%", "1.5", "-1%", "1%%", "nan", "inf%"}) {
        EXPECT_FALSE(parseShare(text)) << text;
    }
}

TEST(PlcFlags, AShareAboveOneWantsItsPercentSign) {
    EXPECT_EQ(shareFault("5"), "'5' is above 1: a percentage is written 5%");
    EXPECT_EQ(shareFault("5%"), "");
    EXPECT_EQ(shareFault("1"), "");
    EXPECT_EQ(shareFault("101"), "'101' is not a share such as 1% or 0.01");
    EXPECT_EQ(shareFault("much"), "'much' is not a share such as 1% or 0.01");
}

TEST(PlcFlags, ASilenceComesAgainAfterItsTime) {
    auto const window = parseSilence("5s@60s");
    ASSERT_TRUE(window);
    EXPECT_EQ(window->from, 60s);
    EXPECT_EQ(window->lasts, 5s);
    EXPECT_EQ(window->every, 60s);
}

TEST(PlcFlags, ASilenceCanComeOnceOrInAnotherTime) {
    EXPECT_EQ(parseSilence("500ms@2s/once")->every, std::nullopt);
    EXPECT_EQ(parseSilence("500ms@2s/once")->from, 2s);
    EXPECT_EQ(parseSilence("500ms@2s/1min")->every, 60s);
}

TEST(PlcFlags, ASilenceFromTheBeginningComesOnceUnlessToldOtherwise) {
    for (char const* const text : {"2s@0s", "2s@0", "2s@0s/once"}) {
        auto const window = parseSilence(text);
        ASSERT_TRUE(window) << text;
        EXPECT_EQ(window->from, 0s) << text;
        EXPECT_EQ(window->lasts, 2s) << text;
        EXPECT_EQ(window->every, std::nullopt) << text;
    }
    EXPECT_EQ(parseSilence("2s@0s/5s")->every, 5s);
}

TEST(PlcFlags, ASilenceCanBeForEver) {
    auto const window = parseSilence("always");
    ASSERT_TRUE(window);
    EXPECT_TRUE(plc::isOpen(*window, 0s));
    EXPECT_TRUE(plc::isOpen(*window, 24h * 365));
}

TEST(PlcFlags, WhatIsNoSilenceIsRefused) {
    for (char const* const text :
         {"", "5s", "5s@", "@60s", "5@60s", "5s@60", "5s@60s/", "5s@60s/x", "5s@60s/once/2s", "0s@5s"}) {
        EXPECT_FALSE(parseSilence(text)) << text;
    }
}

TEST(PlcFlags, AReplacementHasATimeAndMayHaveAFile) {
    EXPECT_EQ(parseReplacement("30s")->after, 30s);
    EXPECT_EQ(parseReplacement("30s")->file, "");
    EXPECT_EQ(parseReplacement("1min:a:b.toml")->after, 60s);
    EXPECT_EQ(parseReplacement("1min:a:b.toml")->file, "a:b.toml");
    EXPECT_FALSE(parseReplacement("30s:"));
    EXPECT_FALSE(parseReplacement("soon"));
    EXPECT_FALSE(parseReplacement(""));
}

} // namespace
