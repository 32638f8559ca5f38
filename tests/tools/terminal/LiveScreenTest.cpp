#include "tools/velk/terminal/LiveScreen.h"

#include <gtest/gtest.h>

namespace {

using velk::LiveScreen;
using velk::ScreenSize;

constexpr ScreenSize kUsual{80, 24};

TEST(LiveScreen, LinesAreDrawnAgainInTheirPlace) {
    LiveScreen screen;
    EXPECT_EQ(screen.redraw({"one", "two"}, kUsual), "one\x1B[K\ntwo\x1B[K\n\x1B[J");
    EXPECT_EQ(screen.redraw({"three"}, kUsual), "\x1B[2Athree\x1B[K\n\x1B[J");
    EXPECT_EQ(screen.redraw({"four"}, kUsual), "\x1B[1Afour\x1B[K\n\x1B[J");
}

TEST(LiveScreen, AScreenOfAnotherSizeIsClearedOnce) {
    LiveScreen screen;
    screen.redraw({"one"}, kUsual);
    EXPECT_EQ(screen.redraw({"two"}, {40, 24}), "\x1B[H\x1B[2Jtwo\x1B[K\n\x1B[J");
    EXPECT_EQ(screen.redraw({"three"}, {40, 24}), "\x1B[1Athree\x1B[K\n\x1B[J");
    EXPECT_EQ(screen.redraw({"four"}, {40, 10}), "\x1B[H\x1B[2Jfour\x1B[K\n\x1B[J");
}

TEST(LiveScreen, AScreenOnWhichSomebodyElseHasPrintedIsClearedOnce) {
    LiveScreen screen;
    screen.redraw({"one"}, kUsual);
    screen.spoil();
    EXPECT_EQ(screen.redraw({"two"}, kUsual), "\x1B[H\x1B[2Jtwo\x1B[K\n\x1B[J");
    EXPECT_EQ(screen.redraw({"three"}, kUsual), "\x1B[1Athree\x1B[K\n\x1B[J");
}

TEST(LiveScreen, WhatStoodThereBeforeTheFirstLinesStays) {
    LiveScreen screen;
    screen.spoil();
    EXPECT_EQ(screen.erase(kUsual), "");
    EXPECT_EQ(screen.redraw({"one"}, kUsual), "one\x1B[K\n\x1B[J");
}

TEST(LiveScreen, ErasedLinesMakeRoomForOthers) {
    LiveScreen screen;
    screen.redraw({"one", "two"}, kUsual);
    EXPECT_EQ(screen.erase(kUsual), "\x1B[2A\x1B[J");
    EXPECT_EQ(screen.redraw({"below"}, kUsual), "below\x1B[K\n\x1B[J");
}

} // namespace
