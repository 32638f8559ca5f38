#include "tools/velk/text/Fitting.h"

#include <gtest/gtest.h>

namespace {

using namespace velk;

TEST(Fitting, WhatFitsStaysWhole) {
    EXPECT_EQ(firstCharacters("speed", 5), "speed");
    EXPECT_EQ(cutAtEnd("speed", 5), "speed");
    EXPECT_EQ(cutAtStart("speed", 5), "speed");
    EXPECT_EQ(cutAtStart("", 0), "");
}

TEST(Fitting, DotsTellThatSomethingIsCutAway) {
    EXPECT_EQ(cutAtEnd("1234567", 6), "123...");
    EXPECT_EQ(cutAtStart("PLC_PRG.Speed", 8), "...Speed");
}

TEST(Fitting, WhereDotsHaveNoRoomThereAreNone) {
    EXPECT_EQ(cutAtEnd("1234567", 3), "123");
    EXPECT_EQ(cutAtStart("1234567", 3), "567");
    EXPECT_EQ(cutAtStart("1234567", 0), "");
}

TEST(Fitting, CountsCharactersAndNotBytes) {
    EXPECT_EQ(firstCharacters("\u00e4\u00f6\u00fcx", 2), "\u00e4\u00f6");
    EXPECT_EQ(cutAtEnd("\u00e4\u00f6\u00fcxyz", 5), "\u00e4\u00f6...");
    EXPECT_EQ(cutAtEnd("\u00e4\u00f6\u00fcxyz", 6), "\u00e4\u00f6\u00fcxyz");
    EXPECT_EQ(cutAtStart("xyz\u00e4\u00f6\u00fc", 5), "...\u00f6\u00fc");
}

} // namespace
