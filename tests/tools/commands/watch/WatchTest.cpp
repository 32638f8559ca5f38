#include "tools/velk/commands/watch/LineFigures.h"
#include "tools/velk/commands/watch/StationPacing.h"
#include "tools/velk/commands/watch/WatchCommand.h"
#include "tools/velk/commands/watch/WatchTable.h"
#include "tools/velk/terminal/Terminal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>

namespace {

using namespace velk;
using namespace std::chrono_literals;

constexpr std::int64_t kSecond = 1'000'000;

// ---- figures of the line

class LineFiguresTest : public testing::Test {
protected:
    void sent(std::size_t bytes, std::int64_t at) { frame(host::FrameDirection::Sent, bytes, at); }
    void received(std::size_t bytes, std::int64_t at) { frame(host::FrameDirection::Received, bytes, at); }

    LineFigures figures_{10'000, 10}; // a byte in a millisecond

private:
    void frame(host::FrameDirection direction, std::size_t bytes, std::int64_t at) {
        std::vector<unsigned char> const content(bytes);
        figures_.onFrame({direction, content, at, at});
    }
};

TEST_F(LineFiguresTest, AnswerTimesAreMedianNinetyFifthAndWorst) {
    for (int i = 1; i <= 21; ++i) {
        sent(1, i * kSecond);
        received(1, i * kSecond + i * 1000); // 1 to 21 ms
    }
    LineSummary const summary = figures_.summary();
    EXPECT_EQ(summary.exchanges, 21U);
    EXPECT_EQ(summary.answered, 21U);
    EXPECT_DOUBLE_EQ(summary.answerMedianMs, 11);
    EXPECT_DOUBLE_EQ(summary.answer95Ms, 20);
    EXPECT_DOUBLE_EQ(summary.answerWorstMs, 21);
}

TEST_F(LineFiguresTest, TheLeastTimeIsBytesAndTheSilenceBehindEachReceivedFrame) {
    sent(17, 0);
    received(6, 30'000);
    EXPECT_DOUBLE_EQ(figures_.busyMs(), 17 + 6 + 20);
}

TEST_F(LineFiguresTest, SilenceIsAskedAndNotAnswered) {
    sent(17, 0);
    figures_.onTimeout(kSecond);
    sent(17, 2 * kSecond);
    received(6, 2 * kSecond + 5000);
    LineSummary const summary = figures_.summary();
    EXPECT_EQ(summary.exchanges, 2U);
    EXPECT_EQ(summary.answered, 1U);
    EXPECT_DOUBLE_EQ(summary.answerWorstMs, 5);
}

TEST_F(LineFiguresTest, TwoFramesInARowAskForOneAnswer) {
    sent(6, 0);     // the last block of a response is acknowledged
    sent(17, 1000); // the next request begins
    received(6, 3000);
    EXPECT_EQ(figures_.summary().exchanges, 1U);
    EXPECT_DOUBLE_EQ(figures_.summary().answerWorstMs, 2);
}

TEST_F(LineFiguresTest, WhatNobodyAskedForIsNoAnswer) {
    received(6, 1000);
    EXPECT_EQ(figures_.summary().answered, 0U);
    EXPECT_DOUBLE_EQ(figures_.summary().answerWorstMs, 0);
}

TEST(LineFiguresOfAStoppedProgram, TheTimeIsNoAnswerTime) {
    std::int64_t stopped = 0;
    LineFigures figures(10'000, 10, [&] { return stopped; });
    std::vector<unsigned char> const frame(1);
    figures.onFrame({host::FrameDirection::Sent, frame, 0, 0});
    stopped = 5 * kSecond;
    figures.onFrame({host::FrameDirection::Received, frame, 5 * kSecond + 7000, 5 * kSecond + 7000});
    EXPECT_DOUBLE_EQ(figures.summary().answerWorstMs, 7);
}

TEST_F(LineFiguresTest, BadValuesAreNoFailuresOfTheLine) {
    figures_.countBadValue("missing");
    figures_.countBadValue("missing");
    figures_.countBadValue("bad");
    EXPECT_EQ(figures_.failureCount(), 0U);
    EXPECT_NE(summaryText(figures_.summary(), 1).find(", 0 failed, 3 values not good (1 x bad, 2 x missing); "),
              std::string::npos)
        << summaryText(figures_.summary(), 1);
}

TEST_F(LineFiguresTest, FailuresAreCountedByCause) {
    figures_.countFailure("one");
    figures_.countFailure("other");
    figures_.countFailure("one");
    EXPECT_EQ(figures_.failureCount(), 3U);
    EXPECT_EQ(figures_.summary().failures.at("one"), 2U);
}

TEST(SummaryText, IsOneLineAndComputesWithoutTime) {
    LineSummary summary;
    summary.exchanges = 5;
    summary.answered = 4;
    summary.failures = {{"Timeout", 1}};
    summary.answerMedianMs = 12.34;
    summary.busyMs = 50;
    EXPECT_EQ(summaryText(summary, 200),
              "5 frames asked, 4 answered, 1 failed (1 x Timeout); answer time median 12.3 ms, 95 % within 0.0 ms, "
              "worst 0.0 ms; line in use 25 % of the time");
    EXPECT_NE(summaryText(summary, 0).find("line in use 0 %"), std::string::npos);
}

TEST(SummaryText, ALineIsNeverInUseForMoreThanTheWholeTime) {
    LineSummary summary;
    summary.busyMs = 104;
    EXPECT_TRUE(summaryText(summary, 100).ends_with("; line in use 100 % of the time"));
    summary.busyMs = 12'583;
    EXPECT_TRUE(summaryText(summary, 100).ends_with("; no answer times"));
}

TEST(SummaryText, TellsNoAnswerTimesOfNobody) {
    LineSummary summary;
    summary.exchanges = 1;
    EXPECT_EQ(summaryText(summary, 100),
              "1 frame asked, 0 answered, 0 failed; no answer times; line in use 0 % of the time");
}

TEST(BitsPerByte, CountsStartDataParityAndStopBits) {
    EXPECT_EQ(bitsPerByte("none", 1), 10);
    EXPECT_EQ(bitsPerByte("even", 1), 11);
    EXPECT_EQ(bitsPerByte("odd", 2), 12);
}

// ---- pauses of stations

TEST(StationPacing, AStationThatAnswersIsAlwaysDue) {
    StationPacing pacing;
    EXPECT_TRUE(pacing.isDue(1, 0));
    pacing.answered(1);
    EXPECT_TRUE(pacing.isDue(1, 0));
}

TEST(StationPacing, PausesGrowByHalfASecondUpToTen) {
    StationPacing pacing;
    pacing.failed(1, 0);
    EXPECT_FALSE(pacing.isDue(1, 499'999));
    EXPECT_TRUE(pacing.isDue(1, 500'000));
    pacing.failed(1, kSecond);
    EXPECT_FALSE(pacing.isDue(1, 2 * kSecond - 1));
    EXPECT_TRUE(pacing.isDue(1, 2 * kSecond));
    for (int i = 0; i < 100; ++i) {
        pacing.failed(1, 0);
    }
    EXPECT_FALSE(pacing.isDue(1, 10 * kSecond - 1));
    EXPECT_TRUE(pacing.isDue(1, 10 * kSecond));
}

TEST(StationPacing, AnAnswerForgetsTheFailuresAndOtherStationsAreNotConcerned) {
    StationPacing pacing;
    pacing.failed(1, 0);
    pacing.failed(1, 0);
    EXPECT_EQ(pacing.failures(1), 2);
    EXPECT_TRUE(pacing.isDue(2, 0));
    pacing.answered(1);
    EXPECT_EQ(pacing.failures(1), 0);
    EXPECT_TRUE(pacing.isDue(1, 0));
}

// ---- the table

constexpr std::chrono::system_clock::time_point kNoon{std::chrono::seconds(1'700'000'000)};

class WatchTableTest : public testing::Test {
protected:
    WatchTableTest() {
        for (char const* const name : {"Speed", "Level"}) {
            Tag tag;
            tag.name = name;
            tag.access.dataType = "short";
            tag.access.shownAs = ICU_SHORT;
            tags_.push_back(tag);
        }
    }

    /** A round in which both variables have these values; none for one that failed. */
    void round(std::array<std::optional<unsigned char>, 2> const& values,
               std::chrono::system_clock::time_point at = kNoon) {
        std::vector<Reading> readings(tags_.size());
        for (std::size_t i = 0; i < tags_.size(); ++i) {
            readings[i].tag = &tags_[i];
            readings[i].at = at;
            readings[i].result.good = values[i].has_value();
            readings[i].result.status = values[i] ? kItemGood : kItemNotProcessed;
            readings[i].result.failure.text = values[i] ? "" : reason_;
            if (values[i]) {
                readings[i].result.value = {*values[i], 0};
            }
        }
        table_.update(readings);
    }

    [[nodiscard]] std::vector<std::string> lines(std::size_t width = 80, std::size_t height = 24) const {
        return table_.lines(header_, kNoon + 5s, width, height, terminal_);
    }

    std::vector<Tag> tags_;
    std::string reason_; ///< of variables that fail
    WatchTable table_;
    WatchHeader header_;
    Terminal terminal_{StreamKinds{false, false, false, false}};
};

TEST_F(WatchTableTest, TheFirstValueIsNoChangeAndTheNextOneIs) {
    round({1, 2});
    EXPECT_FALSE(table_.items()[0].changed);
    round({7, 2});
    EXPECT_TRUE(table_.items()[0].changed);
    EXPECT_FALSE(table_.items()[1].changed);
    round({7, 2});
    EXPECT_FALSE(table_.items()[0].changed);
}

TEST_F(WatchTableTest, AFailureKeepsTheLastGoodValueAndItsAge) {
    round({1, 2});
    round({std::nullopt, 3}, kNoon + 4s);
    EXPECT_EQ(table_.items()[0].value, "1");
    EXPECT_FALSE(table_.items()[0].good);
    EXPECT_EQ(table_.items()[0].goodAt, kNoon);
    std::vector<std::string> const shown = lines();
    EXPECT_NE(shown[4].find("5.0 s"), std::string::npos) << shown[4];
    EXPECT_NE(shown[4].find("(1)"), std::string::npos) << shown[4];
    EXPECT_NE(shown[4].find("FAILED"), std::string::npos) << shown[4];
    EXPECT_NE(shown[5].find("1.0 s"), std::string::npos) << shown[5];
}

TEST_F(WatchTableTest, SeveralStationsAreNamed) {
    round({1, 2});
    EXPECT_EQ(lines()[2].find("station"), std::string::npos) << lines()[2];
    tags_[0].station = "press";
    tags_[1].station = "oven";
    round({1, 2});
    EXPECT_TRUE(lines()[2].starts_with("station")) << lines()[2];
    EXPECT_TRUE(lines()[5].starts_with("oven ")) << lines()[5];
}

TEST_F(WatchTableTest, ValuesKeepTheirRowsWhenOthersAppear) {
    round({1, 2});
    Tag first;
    first.name = "Another";
    tags_.insert(tags_.begin(), first);
    std::vector<Reading> readings(tags_.size());
    for (std::size_t i = 0; i < tags_.size(); ++i) {
        readings[i].tag = &tags_[i];
    }
    table_.update(readings);
    EXPECT_EQ(table_.items()[0].value, "-");
    EXPECT_EQ(table_.items()[1].value, "1");
    EXPECT_EQ(table_.items()[2].value, "2");
}

TEST_F(WatchTableTest, HeaderTellsTheRoundTheFloorAndTheTrouble) {
    header_ = {7, 123.4, 99.6, 3, "station 1: away"};
    round({1, 2});
    std::vector<std::string> const shown = lines();
    EXPECT_EQ(shown[0], "round 7, 123 ms (least on this line: 100 ms), 3 failures");
    EXPECT_EQ(shown[1], "station 1: away");
}

TEST_F(WatchTableTest, HeaderTellsHowManyAreNotGood) {
    round({std::nullopt, 2});
    EXPECT_EQ(lines()[0], "round 0, 1 of 2 not good, 0 ms (least on this line: 0 ms), 0 failures");
}

TEST_F(WatchTableTest, ReasonsStandBelowEachOnce) {
    reason_ = "the values are worn";
    round({std::nullopt, std::nullopt});
    std::vector<std::string> const shown = lines();
    ASSERT_EQ(shown.size(), 8U);
    EXPECT_EQ(shown[6], "");
    EXPECT_EQ(shown[7], "Speed and 1 more: the values are worn");
    round({1, std::nullopt});
    EXPECT_EQ(lines().back(), "Level: the values are worn");
    round({1, 2});
    EXPECT_EQ(lines().size(), 6U);
}

TEST_F(WatchTableTest, AReasonThatTheTroubleTellsIsNotToldTwice) {
    reason_ = "silence";
    header_.trouble = "station 0: silence";
    round({std::nullopt, std::nullopt});
    EXPECT_EQ(lines().size(), 6U);
    EXPECT_EQ(lines(14).back().substr(0, 5), "Speed") << "of the trouble only the beginning is to be seen";
}

TEST_F(WatchTableTest, StaysWithinTheTerminal) {
    header_.trouble = std::string(200, 'x');
    reason_ = std::string(200, 'y');
    round({1, std::nullopt});
    for (std::size_t width = 1; width < 40; ++width) {
        for (std::string const& line : lines(width, 24)) {
            EXPECT_LE(line.size(), width) << line;
        }
    }
    for (std::size_t height = 1; height < 12; ++height) {
        EXPECT_LE(lines(80, height).size(), height);
    }
}

TEST_F(WatchTableTest, InFewLinesTheRowsComeFirst) {
    round({1, 2});
    auto const hasRow = [](std::string const& line) { return line.starts_with("Speed "); };
    for (std::size_t height = 1; height < 12; ++height) {
        std::vector<std::string> const shown = lines(80, height);
        EXPECT_EQ(std::count_if(shown.begin(), shown.end(), hasRow), 1) << height;
    }
    EXPECT_EQ(lines(80, 1).size(), 1U);
    EXPECT_EQ(lines(80, 3).size(), 3U) << "the header and both rows";
}

TEST_F(WatchTableTest, CountsTheRowsThatHaveNoRoom) {
    for (int i = 0; i < 10; ++i) {
        tags_.push_back(tags_[0]);
        tags_.back().name = "More" + std::to_string(i);
    }
    std::vector<Reading> readings(tags_.size());
    for (std::size_t i = 0; i < tags_.size(); ++i) {
        readings[i].tag = &tags_[i];
    }
    table_.update(readings);
    std::vector<std::string> const shown = lines(80, 4);
    ASSERT_EQ(shown.size(), 4U);
    EXPECT_TRUE(shown[1].starts_with("Speed ")) << shown[1];
    EXPECT_TRUE(shown[2].starts_with("Level ")) << shown[2];
    EXPECT_EQ(shown[3], "... and 10 more");
    EXPECT_EQ(lines(10, 4).back(), "... and...");
    EXPECT_EQ(lines(80, 16).size(), 16U) << "two lines above, two of heads, twelve rows";
}

TEST(AgeText, GrowsCoarser) {
    EXPECT_EQ(ageText(400ms), "0.4 s");
    EXPECT_EQ(ageText(12s), "12 s");
    EXPECT_EQ(ageText(3min), "3 min");
    EXPECT_EQ(ageText(2h), "2 h");
    EXPECT_EQ(ageText(-5s), "0.0 s"); // the clock was set back
}

} // namespace
