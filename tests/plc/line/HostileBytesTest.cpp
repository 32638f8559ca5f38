#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace std::chrono_literals;
using namespace plctest;

/** Frames of a panel, to be corrupted. */
std::vector<plc::Bytes> GoodFrames() {
    std::vector<plc::Bytes> frames;
    for (std::string_view const frame : {kLinkCheck, kLogin, kLogout, kAck0, kAck1, kAck2, kEmptyRead}) {
        frames.push_back(Hex(frame));
    }
    frames.push_back(Hex("AA AA 14 00 01 00 0C 01 2E 00 01 00 00 00 00 00 00 00 00 00 72 00 00 00 01 00 00 00"));
    frames.push_back(Hex("AA AA 15 00 01 00 AB 01 3C 00 01 00 00 00 00 00 00 00 00 00 01 00 00 00 FF 01 00 00 00"));
    frames.push_back(Hex("AA AA 11 00 01 00 04 01 31 00 0D 00 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00"));
    frames.push_back(Hex("AA AA 01 00 01 00 89 01 32"));
    return frames;
}

/** Corrects the checksum of a bare block frame, so that the checks after it are reached. */
void MendChecksum(plc::Bytes& frame) {
    if (frame.size() < 8) {
        return;
    }
    frame[6] = 0;
    unsigned sum = 0;
    for (std::uint8_t const byte : frame) {
        sum += byte;
    }
    frame[6] = static_cast<std::uint8_t>(sum);
}

class HostileBytes : public testing::TestWithParam<unsigned> {
protected:
    std::size_t below(std::size_t limit) { return generator() % limit; }

    plc::Bytes spoiltFrame() {
        static std::vector<plc::Bytes> const kFrames = GoodFrames();
        plc::Bytes frame = kFrames[below(kFrames.size())];
        for (std::size_t changes = below(4); changes > 0; --changes) {
            frame[below(frame.size())] = static_cast<std::uint8_t>(generator());
        }
        if (below(2) == 0) {
            MendChecksum(frame);
        }
        frame.resize(frame.size() - (below(8) == 0 ? below(frame.size()) : 0));
        return frame;
    }

    std::mt19937 generator{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Seeds, HostileBytes, testing::Range(1U, 9U));

TEST_P(HostileBytes, NeverKeepAStationFromTheNextGoodExchange) {
    plc::StationDescription station = OneStation();
    station.filePieceSize = 10;
    plc::Line line(BareLine(station));
    Panel panel(line);
    for (int round = 0; round < 100; ++round) {
        for (int i = 0; i < 50; ++i) {
            panel.say(spoiltFrame());
            panel.now += std::chrono::milliseconds(below(30));
        }
        panel.hearAfter(20ms);
        ASSERT_EQ(Exchange(panel, kLinkCheck), kStatusDone) << round;
        ASSERT_EQ(Exchange(panel, kLogin), kLoginAccepted) << round;
    }
    EXPECT_GT(line.counters().complaints(), 1000U);
    EXPECT_EQ(line.counters().of(plc::Cause::kFaultInjected), 0U);
}

TEST_P(HostileBytes, NoiseAloneIsNeverAnswered) {
    plc::Line line(BareLine());
    Panel panel(line);
    for (int round = 0; round < 1000; ++round) {
        plc::Bytes noise(below(200));
        for (std::uint8_t& byte : noise) {
            byte = static_cast<std::uint8_t>(generator());
        }
        ASSERT_EQ(panel.say(noise), "");
        ASSERT_EQ(panel.hearAfter(25ms), "");
    }
    EXPECT_FALSE(line.nextDeadline());
}

} // namespace
