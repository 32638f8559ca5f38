#include "plc/frames/FrameReader.h"

#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using plc::Cause;
using plctest::Hex;
using plctest::operator+;

/** Records the reader's results, one line per frame. */
class Kept : public plc::FrameHandler {
public:
    void onBlock(plc::BlockReceived const& block, plc::Micros /*now*/) override {
        add("block " + std::to_string(block.number) + (block.last ? " last " : " ") + plctest::Show(block.payload),
            block.station);
    }
    void onAck(plc::AckReceived const& ack, plc::Micros /*now*/) override {
        add("ack " + std::to_string(ack.number), ack.station);
    }
    void onBadBytes(plc::BadBytes const& bad, plc::Micros /*now*/) override {
        add(std::string(nameOf(bad.cause)), bad.station);
        text = bad.text;
    }

    std::vector<std::string> lines;
    std::vector<int> stations;
    std::string text;

private:
    void add(std::string line, int station) {
        lines.push_back(std::move(line));
        stations.push_back(station);
    }
};

using Lines = std::vector<std::string>;

class BareReader : public testing::Test {
protected:
    explicit BareReader(plc::ByteOrder order = plc::ByteOrder::kLittle)
        : reader(plc::Framing::kBare, {{.order = order, .blockSize = 128}}, 20ms, kept) {}

    void burst(plc::Bytes const& bytes) {
        now += 1s;
        reader.receive(bytes, now);
        reader.advance(now + 20ms);
    }

    Kept kept;
    plc::FrameReader reader;
    plc::Micros now{0};
};

class BigBareReader : public BareReader {
protected:
    BigBareReader() : BareReader(plc::ByteOrder::kBig) {}
};

TEST_F(BareReader, HandsOnABlockWithItsLastByte) {
    plc::Bytes const frame = Hex(plctest::kLinkCheck);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        EXPECT_TRUE(kept.lines.empty());
        reader.receive(plc::ByteView(frame).subspan(i, 1), now += 19ms);
    }
    EXPECT_EQ(kept.lines, Lines{"block 1 last 42 E0 20 26 29 00 00 5D 05"});
    EXPECT_FALSE(reader.deadline());
}

TEST_F(BigBareReader, ReadsNumbersMostSignificantByteFirst) {
    burst(Hex("AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05"));
    burst(Hex("55 55 00 0A 01 02"));
    EXPECT_EQ(kept.lines, (Lines{"block 1 last 42 E0 20 26 29 00 00 5D 05", "ack 258"}));
}

TEST_F(BigBareReader, OtherByteOrderIsAWrongLengthField) {
    burst(Hex(plctest::kLinkCheck));
    burst(Hex(plctest::kAck0));
    EXPECT_EQ(kept.lines, (Lines{"wrong length field", "wrong acknowledge code"}));
}

TEST_F(BareReader, TakesMergedFramesApart) {
    reader.receive(Hex(plctest::kLinkCheck) + Hex(plctest::kAck0) + Hex(plctest::kLogout) + Hex("AA"), now);
    EXPECT_EQ(kept.lines, (Lines{"block 1 last 42 E0 20 26 29 00 00 5D 05", "ack 0", "block 1 last 02"}));
    reader.receive(Hex("AA 01 00 01 00 59 01 02"), now);
    EXPECT_EQ(kept.lines.back(), "block 1 last 02");
    EXPECT_EQ(kept.lines.size(), 4U);
}

TEST_F(BareReader, ReportsGarbageAfterASilenceOnly) {
    reader.receive(Hex("01 02 03"), 0ms);
    EXPECT_EQ(reader.deadline(), 20ms);
    reader.receive(Hex("04"), 10ms);
    EXPECT_EQ(reader.deadline(), 30ms);
    reader.advance(29ms);
    EXPECT_TRUE(kept.lines.empty());
    reader.advance(30ms);
    EXPECT_EQ(kept.lines, Lines{"garbage"});
    EXPECT_EQ(kept.text, "4 bytes that are not a frame");
    EXPECT_EQ(kept.stations, std::vector{plc::kNoStation});
}

TEST_F(BareReader, FindsTheFrameBehindGarbageWhenTheLineFallsSilent) {
    burst(Hex("00 FF AA") + Hex(plctest::kLogout));
    EXPECT_EQ(kept.lines, (Lines{"garbage", "block 1 last 02"}));
    EXPECT_EQ(kept.text.substr(0, 28), "3 bytes in front of a frame:");
}

TEST_F(BareReader, FindsAFrameThatFollowsADamagedOne) {
    burst(Hex("AA AA 01 00 01 00 58 01 02") + Hex(plctest::kLogout));
    EXPECT_EQ(kept.lines, (Lines{"garbage", "block 1 last 02"}));
}

TEST_F(BareReader, SilenceSeparatesARestFromTheNextFrame) {
    reader.receive(Hex("AA AA 09 00 01"), 0ms);
    reader.receive(Hex(plctest::kLogout), 20ms);
    EXPECT_EQ(kept.lines, (Lines{"truncated frame", "block 1 last 02"}));
    EXPECT_EQ(kept.text, "a frame stops after 5 bytes");
}

TEST_F(BareReader, RefusesAWrongChecksum) {
    burst(Hex("AA AA 01 00 01 00 58 01 02"));
    EXPECT_EQ(kept.lines, Lines{"wrong checksum"});
    EXPECT_EQ(kept.text, "block 1 has the checksum 88 instead of 89");
    EXPECT_EQ(kept.stations, std::vector{0});
}

TEST_F(BareReader, RefusesALengthFieldBelowTheBytesReceived) {
    // The checksum, over all bytes, is right: AA + AA + 01 + 01 + 01 + 02 + 03 = 15C.
    burst(Hex("AA AA 01 00 01 00 5C 01 02 03"));
    EXPECT_EQ(kept.lines, Lines{"wrong length field"});
    EXPECT_EQ(kept.text, "the length field says 1 bytes, 2 came");
}

TEST_F(BareReader, RefusesALengthFieldAboveTheBytesReceived) {
    // AA + AA + 03 + 01 + 01 + 02 = 15B
    burst(Hex("AA AA 03 00 01 00 5B 01 02"));
    EXPECT_EQ(kept.lines, Lines{"wrong length field"});
    EXPECT_EQ(kept.text, "the length field says 3 bytes, 1 came");
}

TEST_F(BareReader, RefusesBytesBehindABlockThatIsRightByItself) {
    burst(Hex(plctest::kLogout) + Hex("00 00"));
    EXPECT_EQ(kept.lines, Lines{"wrong length field"});
    EXPECT_EQ(kept.text, "the length field says 1 bytes, 3 came");
    burst(Hex(plctest::kAck0) + Hex("00"));
    EXPECT_EQ(kept.lines.back(), "garbage");
    EXPECT_EQ(kept.lines.size(), 2U);
}

TEST_F(BareReader, RefusesAnotherLastBlockFlag) {
    burst(Hex("AA AA 01 00 01 00 5A 02 02"));
    EXPECT_EQ(kept.lines, Lines{"wrong last-block flag"});
    EXPECT_EQ(kept.text, "block 1 has the last-block flag 2");
}

TEST_F(BareReader, RefusesABlockThatIsNeitherLastNorFull) {
    burst(Hex("AA AA 01 00 01 00 58 00 02"));
    EXPECT_EQ(kept.lines, Lines{"block not full"});
    EXPECT_EQ(kept.text, "block 1 carries 1 bytes although it is not the last");
}

TEST_F(BareReader, RefusesAnEmptyBlock) {
    burst(Hex("AA AA 00 00 01 00 56 01"));
    EXPECT_EQ(kept.lines, Lines{"block not full"});
}

TEST_F(BareReader, RefusesABlockAboveTheBlockSize) {
    // 120 bytes fill a block of 128: AA + AA + 78 + 01 + 01 = 1CE.
    burst(Hex("AA AA 78 00 01 00 CE 01") + plctest::Zeros(120));
    EXPECT_EQ(kept.lines.size(), 1U);
    EXPECT_EQ(kept.lines[0].substr(0, 12), "block 1 last");
    burst(Hex("AA AA 79 00 01 00 CF 01") + plctest::Zeros(121));
    EXPECT_EQ(kept.lines.back(), "block too long");
    EXPECT_EQ(kept.text, "the length field says 121 bytes, a block carries at most 120");
}

TEST_F(BareReader, RefusesAnotherAcknowledgeCode) {
    burst(Hex("55 55 0B 00 01 00"));
    EXPECT_EQ(kept.lines, Lines{"wrong acknowledge code"});
    EXPECT_EQ(kept.text, "an acknowledge has the code 11");
}

TEST_F(BareReader, KeepsItsMemorySmallUnderABurstWithoutEnd) {
    for (int i = 0; i < 1000; ++i) {
        reader.receive(plctest::Zeros(1000), now += 1ms);
    }
    reader.receive(Hex(plctest::kLogout), now += 1ms);
    EXPECT_TRUE(kept.lines.empty());
    reader.advance(now + 20ms);
    EXPECT_EQ(kept.lines, (Lines{"garbage", "block 1 last 02"}));
    EXPECT_EQ(kept.text.substr(0, 13), "1000000 bytes");
    burst(plctest::Zeros(5000));
    EXPECT_EQ(kept.text, "5000 bytes without a pause");
}

class RoutedReader : public testing::Test {
protected:
    RoutedReader() : reader(plc::Framing::kRouted, {Key(1), Key(2)}, 20ms, kept) {}

    static plc::FrameKey Key(int coupler) {
        plc::Route route{.levels = 1};
        route.level[0] = {.coupler = coupler, .channel = 3, .address = {1, 2, 3, 4}};
        return {.order = plc::ByteOrder::kLittle, .blockSize = 128, .header = encodeRoutingHeader(route, 128)};
    }

    void burst(std::string_view header, std::string_view frame) {
        now += 1s;
        reader.receive(Hex(header) + Hex(frame), now);
        reader.advance(now + 20ms);
    }

    Kept kept;
    plc::FrameReader reader;
    plc::Micros now{0};
};

// Coupler 1, channel 3: hop 23; coupler 2, channel 3: hop 43.
constexpr std::string_view kWay1 = "4F 80 00 10 17 01 02 03 04 00 00 00 00 00 00 00 00 00 00";
constexpr std::string_view kWay2 = "4F 80 00 10 2B 01 02 03 04 00 00 00 00 00 00 00 00 00 00";

TEST_F(RoutedReader, TellsStationsApartByTheirHeader) {
    burst(kWay1, plctest::kLogout);
    burst(kWay2, plctest::kAck0);
    EXPECT_EQ(kept.lines, (Lines{"block 1 last 02", "ack 0"}));
    EXPECT_EQ(kept.stations, (std::vector{0, 1}));
}

TEST_F(RoutedReader, TakesBytesOneByOneAndMerged) {
    plc::Bytes const twice = Hex(kWay1) + Hex(plctest::kLogout) + Hex(kWay2) + Hex(plctest::kAck1);
    for (std::uint8_t const byte : twice) {
        reader.receive({&byte, 1}, now += 1ms);
    }
    reader.receive(twice, now);
    EXPECT_EQ(kept.lines, (Lines{"block 1 last 02", "ack 1", "block 1 last 02", "ack 1"}));
}

TEST_F(RoutedReader, ReportsAWayToNoStation) {
    burst("4F 80 00 10 2C 01 02 03 04 00 00 00 00 00 00 00 00 00 00", plctest::kLogout);
    EXPECT_EQ(kept.lines, Lines{"unknown station"});
    EXPECT_EQ(kept.stations, std::vector{plc::kNoStation});
}

TEST_F(RoutedReader, ReportsAnotherBlockSize) {
    burst("4F 00 80 10 2B 01 02 03 04 00 00 00 00 00 00 00 00 00 00", plctest::kLogout);
    EXPECT_EQ(kept.lines, Lines{"wrong block size in routing header"});
    EXPECT_EQ(kept.text, "byte 1 of the routing header is 0 instead of 128");
    EXPECT_EQ(kept.stations, std::vector{1});
}

TEST_F(RoutedReader, ReportsEveryByteThatMustBeZero) {
    burst("4F 80 00 11 2B 01 02 03 04 00 00 00 00 00 00 00 00 00 00", plctest::kLogout);
    EXPECT_EQ(kept.text, "byte 3 of the routing header is 17 instead of 16");
    burst("4F 80 00 10 2B 01 02 03 04 01 00 00 00 00 00 00 00 00 00", plctest::kLogout);
    EXPECT_EQ(kept.text, "byte 9 of the routing header is 1 instead of 0");
    for (int i = 15; i < 19; ++i) {
        plc::Bytes header = Hex(kWay2);
        header[static_cast<std::size_t>(i)] = 5;
        burst(plctest::Show(header), plctest::kLogout);
        EXPECT_EQ(kept.text, "byte " + std::to_string(i) + " of the routing header is 5 instead of 0");
    }
    EXPECT_EQ(kept.lines, Lines(6, "wrong routing header"));
}

TEST_F(RoutedReader, BareFramesAreGarbage) {
    burst("", plctest::kLogout);
    EXPECT_EQ(kept.lines, Lines{"garbage"});
}

TEST_F(RoutedReader, HeaderWithoutFrameIsTruncated) {
    burst(kWay1, "");
    EXPECT_EQ(kept.lines, Lines{"truncated frame"});
    burst(kWay1, "AA AA 01");
    EXPECT_EQ(kept.text, "a frame stops after 22 bytes");
    burst(kWay1, "00 00 01");
    EXPECT_EQ(kept.lines.back(), "garbage");
}

} // namespace
