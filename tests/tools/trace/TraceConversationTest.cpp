#include "tests/tools/trace/Frames.h"
#include "tools/velk/trace/Conversation.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace tracetest;
using plc::ByteOrder;
using plc::ServiceKind;
using velk::trace::Conversation;
using velk::trace::FrameKind;
using velk::trace::Step;
using velk::trace::Way;

using Faults = std::vector<std::string>;

/** A conversation whose frames live as long as it does. */
class Talk {
public:
    Step const& say(Way way, Bytes bytes) {
        bytes_ = std::move(bytes);
        step_ = conversation_.next(way, bytes_);
        return step_;
    }
    Step const& to(std::string_view hex) { return say(Way::ToPlc, Hex(hex)); }
    Step const& from(std::string_view hex) { return say(Way::FromPlc, Hex(hex)); }

private:
    Conversation conversation_;
    Bytes bytes_;
    Step step_;
};

TEST(TraceConversation, RequestAndResponseAreCompleteWithTheirLastBlock) {
    Talk talk;
    Step const& asked = talk.to(kRead);
    ASSERT_TRUE(asked.request);
    EXPECT_EQ(asked.request->items.size(), 2U);
    EXPECT_FALSE(asked.response);
    EXPECT_FALSE(talk.from(kAck1).request);
    EXPECT_EQ(talk.to(kAck0).frame.kind, FrameKind::Turnaround);
    Step const& answered = talk.from(kReadReply);
    ASSERT_TRUE(answered.response);
    EXPECT_EQ(answered.response->items.size(), 2U);
    EXPECT_EQ(answered.frame.faults, Faults{});
    EXPECT_EQ(talk.to(kAck1).frame.faults, Faults{});
    EXPECT_EQ(talk.from(kAck0).frame.kind, FrameKind::Closing);
}

TEST(TraceConversation, BlocksAreJoined) {
    Talk talk;
    // The same request as kRead in two blocks of 20 and 10 bytes.
    EXPECT_FALSE(
        talk.to("AA AA 14 00 01 00 BE 00 | 2E 00 02 00 00 00 00 00 12 00 00 00 04 00 00 00 02 00 0D 00").request);
    EXPECT_EQ(talk.from(kAck1).frame.faults, Faults{});
    Step const& asked = talk.to("AA AA 0A 00 02 00 75 01 | 00 00 00 00 00 00 78 56 34 12");
    ASSERT_TRUE(asked.request);
    EXPECT_EQ(asked.request->size, 30U);
    EXPECT_EQ(asked.request->project, 0x12345678U);
    EXPECT_EQ(talk.from("55 55 0A 00 02 00").frame.faults, Faults{});
    talk.to(kAck0);
    EXPECT_FALSE(talk.from("AA AA 08 00 01 00 88 00 | 00 00 00 00 00 00 01 2A").response);
    talk.to(kAck1);
    Step const& answered = talk.from("AA AA 05 00 02 00 5E 01 | 00 00 00 01 01");
    ASSERT_TRUE(answered.response);
    EXPECT_EQ(answered.response->size, 13U);
    EXPECT_EQ(answered.response->items.size(), 2U);
}

TEST(TraceConversation, ABlockOutOfTurnIsToldAndSpoilsItsMessage) {
    Talk talk;
    talk.to(kRead);
    talk.from(kAck1);
    talk.to(kAck0);
    Step const& answered = talk.from("AA AA 05 00 02 00 5E 01 | 00 00 00 01 01");
    EXPECT_EQ(answered.frame.faults, Faults{"block 2 instead of block 1"});
    EXPECT_FALSE(answered.response);
}

TEST(TraceConversation, AWrongChecksumSpoilsItsMessage) {
    Talk talk;
    talk.to(kRead);
    talk.from(kAck1);
    talk.to(kAck0);
    Step const& answered = talk.from("AA AA 0D 00 01 00 91 01 | 00 00 00 00 00 00 | 01 2A 00 00 00 | 01 01");
    EXPECT_EQ(answered.frame.faults, Faults{"wrong checksum: 91 instead of 90"});
    EXPECT_FALSE(answered.response);
}

TEST(TraceConversation, AcknowledgesOfOtherBlocksAreTold) {
    Talk talk;
    EXPECT_EQ(talk.from(kAck1).frame.faults, Faults{"no block 1 was sent before"});
    talk.to(kLinkCheck);
    EXPECT_EQ(talk.from("55 55 0A 00 02 00").frame.faults, Faults{"block 2 is acknowledged, block 1 was sent last"});
}

TEST(TraceConversation, AnAnswerInTheOtherByteOrderIsTold) {
    Talk talk;
    talk.to(kLinkCheck);
    EXPECT_EQ(talk.from(kBigAck1).frame.faults, Faults{"it is big-endian, the panel's frames are little-endian"});
}

TEST(TraceConversation, TheNextStationMayHaveAnotherByteOrder) {
    Talk talk;
    talk.to(kLinkCheck);
    talk.from(kAck1);
    talk.to(kAck0);
    talk.from(kStatusDone);
    talk.to(kAck1);
    talk.from(kAck0);
    EXPECT_EQ(talk.to(kBigLogin).frame.order, ByteOrder::kBig);
    EXPECT_EQ(talk.from(kBigAck1).frame.faults, Faults{});
    talk.to(kBigAck0);
    Step const& answered = talk.from(kBigLoginDone);
    ASSERT_TRUE(answered.response);
    EXPECT_EQ(answered.response->status, 1000);
    EXPECT_EQ(answered.frame.faults, Faults{});
}

TEST(TraceConversation, AResponseWithoutItsRequestIsAFrameAndNoMore) {
    Talk talk;
    Step const& answered = talk.from(kReadReply);
    EXPECT_EQ(answered.frame.kind, FrameKind::Block);
    EXPECT_FALSE(answered.response);
}

TEST(TraceConversation, ANewRequestForgetsTheOldOne) {
    Talk talk;
    talk.to(kRead);
    talk.to(kLinkCheck);
    talk.from(kAck1);
    talk.to(kAck0);
    Step const& answered = talk.from(kStatusDone);
    ASSERT_TRUE(answered.response);
    EXPECT_EQ(answered.response->service, ServiceKind::kLinkCheck);
}

TEST(TraceConversation, BehindRoutingHeadersItIsTheSame) {
    Talk talk;
    Bytes const header = Hex(kHeader);
    EXPECT_TRUE(talk.say(Way::ToPlc, header + Hex(kBigWrite)).request);
    EXPECT_EQ(talk.say(Way::FromPlc, header + Hex(kBigAck1)).frame.faults, Faults{});
    talk.say(Way::ToPlc, header + Hex(kBigAck0));
    Step const& answered = talk.say(Way::FromPlc, header + Hex(kBigDone));
    ASSERT_TRUE(answered.response);
    EXPECT_EQ(answered.response->status, 0);
}

TEST(TraceConversation, APayloadWithoutEndIsNotKept) {
    Talk talk;
    // Full blocks of 1452 zero bytes that never end; 52 of them are more than any payload.
    unsigned constexpr kBlocks = 60;
    for (unsigned number = 1; number <= kBlocks; ++number) {
        bool const last = number == kBlocks;
        unsigned const sum = 0xAA + 0xAA + 0xAC + 0x05 + number + (last ? 1 : 0);
        Bytes const frame = Hex("AA AA AC 05") + velktest::Little(number, 2) + velktest::Little(sum & 0xFFU, 1) +
                            velktest::Little(last ? 1 : 0, 1) + Bytes(1452);
        Step const& step = talk.say(Way::ToPlc, frame);
        EXPECT_FALSE(step.request) << number;
    }
}

TEST(TraceConversation, AnyBytesAreTakenWithoutHarm) {
    std::mt19937 generator(1); // NOLINT(cert-msc51-cpp): the same bytes every time
    std::vector<Bytes> const seeds{Hex(kRead),      Hex(kReadReply), Hex(kBigWrite),
                                   Hex(kFilePiece), Hex(kAck0),      Hex(kHeader) + Hex(kRead)};
    Talk talk;
    std::size_t blocks = 0;
    for (int i = 0; i < 20'000; ++i) {
        Bytes bytes = seeds[generator() % seeds.size()];
        for (unsigned changes = generator() % 4; changes > 0; --changes) {
            bytes[generator() % bytes.size()] = static_cast<unsigned char>(generator());
        }
        bytes.resize(generator() % (bytes.size() + 3));
        Step const& step = talk.say(generator() % 2 == 0 ? Way::ToPlc : Way::FromPlc, bytes);
        blocks += step.frame.kind == FrameKind::Block ? 1U : 0U;
        EXPECT_TRUE(step.frame.kind != FrameKind::Unknown || !step.frame.faults.empty());
    }
    EXPECT_GT(blocks, 1000U);
}

} // namespace
