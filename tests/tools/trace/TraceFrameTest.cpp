#include "tests/tools/trace/Frames.h"
#include "tools/velk/trace/Frame.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace tracetest;
using plc::ByteOrder;
using velk::trace::decodeFrame;
using velk::trace::Frame;
using velk::trace::FrameKind;
using velk::trace::Way;

using Faults = std::vector<std::string>;

TEST(TraceFrame, ABlockIsReadLeastSignificantByteFirst) {
    Bytes const bytes = Hex(kLinkCheck);
    Frame const frame = decodeFrame(bytes, Way::ToPlc);
    EXPECT_EQ(frame.kind, FrameKind::Block);
    EXPECT_EQ(frame.order, ByteOrder::kLittle);
    EXPECT_TRUE(frame.orderIsCertain);
    EXPECT_EQ(frame.number, 1);
    EXPECT_EQ(frame.length, 9);
    EXPECT_TRUE(frame.last);
    EXPECT_EQ(frame.checksum, 0x52);
    EXPECT_EQ(frame.rightChecksum, 0x52);
    EXPECT_EQ(Bytes(frame.payload.begin(), frame.payload.end()), Hex("42 E0 20 26 29 00 00 5D 05"));
    EXPECT_FALSE(frame.routing);
    EXPECT_EQ(frame.faults, Faults{});
}

TEST(TraceFrame, ABlockIsReadMostSignificantByteFirst) {
    Bytes const bytes = Hex(kBigLogin);
    Frame const frame = decodeFrame(bytes, Way::ToPlc);
    EXPECT_EQ(frame.kind, FrameKind::Block);
    EXPECT_EQ(frame.order, ByteOrder::kBig);
    EXPECT_TRUE(frame.orderIsCertain);
    EXPECT_EQ(frame.number, 1);
    EXPECT_EQ(frame.length, 14);
    EXPECT_EQ(frame.faults, Faults{});
}

TEST(TraceFrame, AcknowledgesTellTheirOrderByTheirCode) {
    EXPECT_EQ(decodeFrame(Hex(kAck1), Way::FromPlc).order, ByteOrder::kLittle);
    EXPECT_EQ(decodeFrame(Hex(kBigAck1), Way::FromPlc).order, ByteOrder::kBig);
    // Whatever was usual before.
    Frame const frame = decodeFrame(Hex(kBigAck1), Way::FromPlc, ByteOrder::kLittle);
    EXPECT_EQ(frame.kind, FrameKind::Acknowledge);
    EXPECT_EQ(frame.order, ByteOrder::kBig);
    EXPECT_TRUE(frame.orderIsCertain);
    EXPECT_EQ(frame.number, 1);
    EXPECT_EQ(frame.code, 10);
}

TEST(TraceFrame, AcknowledgeZeroIsTheTurnaroundOrTheClosingOne) {
    EXPECT_EQ(decodeFrame(Hex(kAck0), Way::ToPlc).kind, FrameKind::Turnaround);
    EXPECT_EQ(decodeFrame(Hex(kAck0), Way::FromPlc).kind, FrameKind::Closing);
}

TEST(TraceFrame, ALengthThatReadsTheSameBothWaysLeavesTheOrderOpen) {
    // 257 bytes are 01 01 in either order; the number 1 is likelier than 256.
    Frame const big = decodeFrame(Hex("AA AA 01 01 00 01 58 01") + Bytes(257), Way::ToPlc);
    EXPECT_EQ(big.order, ByteOrder::kBig);
    EXPECT_FALSE(big.orderIsCertain);
    EXPECT_EQ(big.number, 1);
    EXPECT_EQ(big.faults, Faults{});
    // In the middle of a little-endian message it is block 256.
    Frame const later = decodeFrame(Hex("AA AA 01 01 00 01 58 01") + Bytes(257), Way::ToPlc, ByteOrder::kLittle);
    EXPECT_EQ(later.order, ByteOrder::kLittle);
    EXPECT_EQ(later.number, 256);
}

TEST(TraceFrame, WrongChecksumLengthAndCodeAreTold) {
    EXPECT_EQ(decodeFrame(Hex("AA AA 02 00 01 00 59 01 00 00"), Way::FromPlc).faults,
              Faults{"wrong checksum: 59 instead of 58"});
    EXPECT_EQ(decodeFrame(Hex("AA AA 03 00 01 00 59 01 00 00"), Way::FromPlc).faults,
              Faults{"the length field says 3 bytes, 2 received"});
    EXPECT_EQ(decodeFrame(Hex("55 55 0B 00 01 00"), Way::FromPlc, ByteOrder::kLittle).faults,
              Faults{"the acknowledge code is 11 instead of 10"});
}

TEST(TraceFrame, AnyLastBlockFlagButZeroMeansTheLastBlock) {
    // 0xAA + 0xAA + 2 + 1 = 0x157, and the flag.
    for (char const* const hex : {"AA AA 02 00 01 00 59 02 00 00", "AA AA 02 00 01 00 56 FF 00 00"}) {
        Frame const frame = decodeFrame(Hex(hex), Way::FromPlc);
        EXPECT_TRUE(frame.last) << hex;
        EXPECT_EQ(frame.faults, Faults{}) << hex;
    }
    EXPECT_FALSE(decodeFrame(Hex("AA AA 02 00 01 00 57 00 00 00"), Way::FromPlc).last);
}

TEST(TraceFrame, ARoutingHeaderIsTakenApart) {
    Bytes const bytes = Hex(kHeader) + Hex(kBigLogin);
    Frame const frame = decodeFrame(bytes, Way::ToPlc);
    EXPECT_EQ(frame.kind, FrameKind::Block);
    EXPECT_EQ(frame.order, ByteOrder::kBig);
    ASSERT_TRUE(frame.routing);
    EXPECT_EQ(frame.routing->blockSize, 512); // least significant byte first, whatever the station's order
    EXPECT_EQ(frame.routing->levels, 2U);
    EXPECT_EQ(frame.routing->hop, (std::array<std::uint8_t, 2>{43, 29}));
    EXPECT_EQ(frame.routing->address[0], (std::array<std::uint8_t, 4>{10, 0, 0, 1}));
    EXPECT_EQ(frame.routing->address[1], (std::array<std::uint8_t, 4>{10, 0, 0, 2}));
    EXPECT_EQ(frame.routing->status, 0);
    EXPECT_EQ(frame.payload.size(), 14U);
    EXPECT_EQ(frame.faults, Faults{});
}

TEST(TraceFrame, ARoutingStatusCountsInFramesFromThePlcOnly) {
    Bytes bytes = Hex(kHeader) + Hex(kBigAck1);
    bytes[17] = 3;
    EXPECT_EQ(decodeFrame(bytes, Way::FromPlc).faults,
              Faults{"routing status 3: a coupler could not pass the frame on"});
    EXPECT_EQ(decodeFrame(bytes, Way::ToPlc).faults, Faults{});
}

TEST(TraceFrame, ARoutingStatusWithoutALevelIsNoCouplers) {
    Bytes bytes = Hex("4F 00 02 00 00 00 00 00 00 00 00 00 00 00 00 00 00 03 00") + Hex(kBigAck1);
    EXPECT_EQ(decodeFrame(bytes, Way::FromPlc).faults, Faults{"routing status 3, and no coupler is on the way"});
}

TEST(TraceFrame, WhatIsNoFrameIsSaidSo) {
    Frame const garbage = decodeFrame(Hex("12 34 AA AA"), Way::FromPlc);
    EXPECT_EQ(garbage.kind, FrameKind::Unknown);
    EXPECT_EQ(garbage.faults, Faults{"4 bytes that are not a frame"});
    EXPECT_EQ(decodeFrame({}, Way::FromPlc).faults, Faults{"0 bytes that are not a frame"});
    EXPECT_EQ(decodeFrame(Hex("AA"), Way::FromPlc).faults, Faults{"1 bytes that are not a frame"});
    EXPECT_EQ(decodeFrame(Hex("AA AA 00"), Way::FromPlc).faults, Faults{"the header of a block stops after 3 bytes"});
    EXPECT_EQ(decodeFrame(Hex("55 55 0A 00 01"), Way::FromPlc).faults, Faults{"an acknowledge stops after 5 bytes"});
    EXPECT_EQ(decodeFrame(Hex("4F 00 02"), Way::FromPlc).faults, Faults{"a routing header stops after 3 bytes"});
    EXPECT_EQ(decodeFrame(Hex(kHeader), Way::FromPlc).faults, Faults{"nothing follows the routing header"});
    EXPECT_EQ(decodeFrame(Hex(kHeader) + Hex("12"), Way::FromPlc).faults, Faults{"1 bytes that are not a frame"});
}

TEST(TraceFrame, TwoFramesWithoutAPauseAreTold) {
    EXPECT_EQ(decodeFrame(Hex(kAck1) + Hex(kAck0), Way::FromPlc).faults, Faults{"6 more bytes follow without a pause"});
}

TEST(TraceFrame, EveryBeginningOfAFrameIsTakenWithoutHarm) {
    for (Bytes const& whole : {Hex(kLinkCheck), Hex(kBigWrite), Hex(kHeader) + Hex(kRead), Hex(kAck1)}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            Bytes const part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_FALSE(decodeFrame(part, Way::FromPlc).faults.empty()) << size;
        }
        EXPECT_TRUE(decodeFrame(whole, Way::FromPlc).faults.empty());
    }
}

} // namespace
