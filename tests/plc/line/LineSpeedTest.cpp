#include "plc/line/LineSpeed.h"

#include "plc/files/LineFile.h"
#include "plc/ports/InputDelay.h"
#include "plc/ports/WrongSpeed.h"
#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using namespace plctest;
using plc::LineSpeed;
using plc::Parity;

TEST(LineSpeed, ACharacterHasTenBitsOrMore) {
    EXPECT_EQ(plc::bytesPerSecond({.baud = 19'200}), 1920U);
    EXPECT_EQ(plc::bytesPerSecond({.baud = 19'200, .parity = Parity::kEven}), 1745U); // 19200 / 11
    EXPECT_EQ(plc::bytesPerSecond({.baud = 19'200, .stopBits = 2}), 1745U);
    EXPECT_EQ(plc::bytesPerSecond({.baud = 19'200, .parity = Parity::kMark, .stopBits = 2}), 1600U);
    EXPECT_EQ(plc::bytesPerSecond({}), 0U);
    EXPECT_EQ(plc::timeOf(192, {.baud = 19'200}), 100ms);
    EXPECT_EQ(plc::timeOf(192, {}), 0ms);
}

std::string ComplaintAboutSpeed(std::string const& text) {
    try {
        static_cast<void>(plc::readLineText("framing = 'Serial_RS232'\nstation = [{}]\n" + text, "l.toml"));
        return "";
    } catch (base::FileError const& fault) {
        return fault.what();
    }
}

TEST(LineSpeed, IsReadFromALineFileAndSetsThePace) {
    plc::LineDescription const line = plc::readLineText(
        "framing = 'Serial_RS232'\nstation = [{}]\nbaud = 9600\nparity = 'odd'\nstop_bits = 2", "l.toml");
    EXPECT_EQ(line.speed.baud, 9600U);
    EXPECT_EQ(line.speed.parity, Parity::kOdd);
    EXPECT_EQ(line.speed.stopBits, 2);
    EXPECT_EQ(line.bytesPerSecond, 800U);
    EXPECT_EQ(ComplaintAboutSpeed("baud = 1"), "l.toml:3:8: 'baud' is 1; it must be 50 to 4000000");
    EXPECT_EQ(ComplaintAboutSpeed("baud = 9600\nparity = 'x'"),
              "l.toml:4:10: 'parity' is 'x'; it must be none, even, odd or mark");
    EXPECT_EQ(ComplaintAboutSpeed("stop_bits = 2"), "l.toml:3:13: 'stop_bits' also needs 'baud'");
}

TEST(LineSpeed, APaceOfItsOwnCountsMore) {
    plc::LineDescription const line =
        plc::readLineText("framing = 'Serial_RS232'\nstation = [{}]\nbaud = 9600\nbytes_per_second = 10", "l.toml");
    EXPECT_EQ(line.bytesPerSecond, 10U);
}

TEST(InputDelay, BytesArriveWhenTheLastOfThemHasPassed) {
    plc::InputDelay input(1000);
    EXPECT_FALSE(input.nextDue());
    input.put(Hex("01 02 03"), 10ms);
    EXPECT_EQ(input.nextDue(), 13ms);
    EXPECT_EQ(input.size(), 3U);
    EXPECT_EQ(Show(input.take(12'999us)), "");
    EXPECT_EQ(Show(input.take(13ms)), "01 02 03");
    EXPECT_EQ(input.size(), 0U);
    EXPECT_FALSE(input.nextDue());
}

TEST(InputDelay, WhatComesWhileTheLineIsBusyWaits) {
    plc::InputDelay input(1000);
    input.put(Hex("01 02"), 0ms);
    input.put(Hex("03"), 1ms);
    EXPECT_EQ(input.nextDue(), 2ms);
    EXPECT_EQ(Show(input.take(2ms)), "01 02");
    EXPECT_EQ(input.nextDue(), 3ms);
    input.put(Hex("04"), 10ms);
    EXPECT_EQ(Show(input.take(20ms)), "03 04");
}

TEST(InputDelay, WithoutAPaceNothingWaits) {
    plc::InputDelay input(0);
    input.put(Hex("01"), 5ms);
    input.put({}, 5ms);
    EXPECT_EQ(input.nextDue(), 5ms);
    EXPECT_EQ(Show(input.take(5ms)), "01");
    input.put(Hex("02"), 6ms);
    input.clear();
    EXPECT_EQ(input.size(), 0U);
    EXPECT_EQ(Show(input.take(6ms)), "");
}

TEST(WrongSpeed, TheSameSpeedGivesTheSameBytes) {
    plc::Bytes all(256);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<std::uint8_t>(i);
    }
    EXPECT_EQ(plc::heardAt(19'200, all, 19'200), all);
    EXPECT_EQ(plc::heardAt(19'200, {}, 19'200), plc::Bytes{});
}

TEST(WrongSpeed, AReceiverTwiceAsFastSeesEveryBitTwice) {
    // FF is one low bit and then high: twice as fast it is a start bit and one low data bit, FE.
    EXPECT_EQ(Show(plc::heardAt(19'200, Hex("FF"), 9'600)), "FE");
    // 00 is low for nine bits: all eight data bits and the stop bit are low; the rest of it has no new edge.
    EXPECT_EQ(Show(plc::heardAt(19'200, Hex("00"), 9'600)), "00");
    // 55 is 0 1010 1010 1 on the line. Its first four and a half bits are a start bit and 0 11 00 11 0, which is 66;
    // its seventh bit is the next start bit, and what follows it is 0 11 00 111, which is E6.
    EXPECT_EQ(Show(plc::heardAt(19'200, Hex("55"), 9'600)), "66 E6");
}

TEST(WrongSpeed, AReceiverHalfAsFastMissesBits) {
    // A low time of one bit is too short for a start bit.
    EXPECT_EQ(Show(plc::heardAt(9'600, Hex("FF"), 19'200)), "");
    // 00 is low for nine bits, four and a half of the receiver's: a start bit, then looks at bits 3, 5, 7 of it, the
    // stop bit and silence.
    EXPECT_EQ(Show(plc::heardAt(9'600, Hex("00"), 19'200)), "F8");
}

TEST(WrongSpeed, AnyPairOfSpeedsComesToAnEnd) {
    plc::Bytes const bytes = Hex("AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05");
    for (std::uint32_t const one : {50U, 110U, 9'600U, 38'400U, 4'000'000U}) {
        for (std::uint32_t const other : {75U, 1'200U, 19'200U, 115'200U}) {
            plc::Bytes const heard = plc::heardAt(one, bytes, other);
            EXPECT_LE(heard.size(), bytes.size() * 5);
            EXPECT_NE(heard, bytes);
        }
    }
}

TEST(OutputQueueForAPort, GetsWholeFramesAtTheLinesPace) {
    plc::OutputQueue queue(1000, true);
    EXPECT_EQ(queue.send(Hex("01 02 03"), 10ms), 13ms);
    EXPECT_EQ(queue.send(Hex("04"), 10ms), 14ms);
    EXPECT_EQ(queue.nextDue(), 10ms);
    EXPECT_EQ(Show(queue.take(10ms)), "01 02 03");
    EXPECT_EQ(queue.nextDue(), 13ms);
    EXPECT_EQ(Show(queue.take(12'999us)), "");
    EXPECT_EQ(Show(queue.take(13ms)), "04");
    EXPECT_FALSE(queue.nextDue());
}

} // namespace
