#include "driver/link/RoutingHeader.h"

#include "driver/config/NodeParams.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace velktest;
using _VELK::couplerCode;
using _VELK::NodeParams;
using _VELK::writeRoutingHeader;

NodeParams TwoLevels() {
    NodeParams node;
    node.BlockSize = 1441;
    node.RoutingLevels = 2;
    node.CouplerLV1 = "2";
    node.ChannelLV1 = 3;
    node.AddressLV1 = "10.1.2.3";
    node.CouplerLV2 = "0";
    node.ChannelLV2 = 3;
    node.AddressLV2 = "192.168.0.7";
    return node;
}

Bytes Written(NodeParams const& node) {
    Bytes header(21, 0xEE);
    writeRoutingHeader(header, node);
    EXPECT_EQ(Bytes(header.begin() + 19, header.end()), Hex("EE EE")) << "bytes behind it were touched";
    header.resize(19);
    return header;
}

TEST(RoutingHeader, TwoLevels) {
    EXPECT_EQ(Written(TwoLevels()), Hex("4F A1 05 20 2B 0A 01 02 03 00 0D C0 A8 00 07 00 00 00 00"));
}

TEST(RoutingHeader, OneLevelHasNoSecondHopButBothAddresses) {
    NodeParams node = TwoLevels();
    node.RoutingLevels = 1;
    EXPECT_EQ(Written(node), Hex("4F A1 05 10 2B 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00"));
}

TEST(RoutingHeader, NoLevelHasNoHopsButBothAddresses) {
    NodeParams node = TwoLevels();
    node.RoutingLevels = 0;
    EXPECT_EQ(Written(node), Hex("4F A1 05 00 00 0A 01 02 03 00 00 C0 A8 00 07 00 00 00 00"));
}

TEST(RoutingHeader, BlockSizeIsAlwaysLeastSignificantByteFirst) {
    NodeParams node = TwoLevels();
    node.model = "Motorola";
    node.BlockSize = 128;
    EXPECT_EQ(Written(node), Hex("4F 80 00 20 2B 0A 01 02 03 00 0D C0 A8 00 07 00 00 00 00"));
}

TEST(RoutingHeader, HopIsCouplerCodePlusChannelModulo256) {
    NodeParams node = TwoLevels();
    node.CouplerLV1 = "13";
    node.ChannelLV1 = 19;
    node.CouplerLV2 = "12";
    node.ChannelLV2 = 19;
    // 13 * 20 = 260, modulo 256 is 4, and 19 make 23; 12 * 20 = 240, and 19 make 259, modulo 256 is 3
    EXPECT_EQ(Written(node), Hex("4F A1 05 20 17 0A 01 02 03 00 03 C0 A8 00 07 00 00 00 00"));
}

TEST(RoutingHeader, DefaultAddressIsFourZeros) {
    NodeParams node;
    node.BlockSize = 128;
    node.RoutingLevels = 1;
    node.CouplerLV1 = "1";
    node.ChannelLV1 = 0;
    EXPECT_EQ(Written(node), Hex("4F 80 00 10 14 00 00 00 00 00 00 00 00 00 00 00 00 00 00"));
}

TEST(RoutingHeader, StatusIsTheByteAtOffset17) {
    EXPECT_EQ(_VELK::routingStatus(Hex("FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF 00 FF")), 0x00);
    EXPECT_EQ(_VELK::routingStatus(Hex("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 07 00")), 0x07);
}

TEST(CouplerCode, OfTheOfferedEntries) {
    EXPECT_EQ(couplerCode("0"), 10);
    EXPECT_EQ(couplerCode("1"), 20);
    EXPECT_EQ(couplerCode("2"), 40);
    EXPECT_EQ(couplerCode("3"), 60);
    EXPECT_EQ(couplerCode("4"), 80);
    EXPECT_EQ(couplerCode("5"), 100);
    EXPECT_EQ(couplerCode("6"), 120);
}

TEST(CouplerCode, NumberBehindTheFirstLetterE) {
    EXPECT_EQ(couplerCode("line2"), 40);
    EXPECT_EQ(couplerCode("e3"), 60);
    EXPECT_EQ(couplerCode("7e3"), 60) << "the number before the letter does not count";
    EXPECT_EQ(couplerCode("device 5"), 10) << "the first e is followed by no number";
    EXPECT_EQ(couplerCode("slave6"), 120);
    EXPECT_EQ(couplerCode("e0"), 10);
    EXPECT_EQ(couplerCode("e"), 10);
    EXPECT_EQ(couplerCode("E2"), 10) << "an upper-case E is not the letter, and no number starts the text";
}

TEST(CouplerCode, UnparsableTextIsCouplerZero) {
    EXPECT_EQ(couplerCode(""), 10);
    EXPECT_EQ(couplerCode("x"), 10);
}

TEST(CouplerCode, LargeNumbersWrap) {
    EXPECT_EQ(couplerCode("12"), 240);
    EXPECT_EQ(couplerCode("13"), 4);
    EXPECT_EQ(couplerCode("64"), 0) << "1280 is 0 modulo 256; only the number 0 gives 10";
    EXPECT_EQ(couplerCode("010"), 200) << "the number is decimal";
}

} // namespace
