#include "plc/frames/PlcFrame.h"

#include "plc/frames/PlcRouting.h"
#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using plc::ByteOrder;
using plctest::Hex;
using plctest::Show;

TEST(PlcFrame, BlockIsBuiltLeastSignificantByteFirst) {
    plc::Bytes const payload = Hex("42 E0 20 26 29 00 00 5D 05");
    plc::BlockFields const fields{.length = 9, .number = 1, .lastFlag = 1, .payload = payload};
    EXPECT_EQ(Show(encodeBlock(fields, ByteOrder::kLittle)), "AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05");
}

TEST(PlcFrame, BlockIsBuiltMostSignificantByteFirst) {
    plc::Bytes const payload = Hex("01 02");
    plc::BlockFields const fields{.length = 2, .number = 0x0102, .lastFlag = 0, .payload = payload};
    // AA + AA + 02 + 01 + 02 + 01 + 02 = 15C
    EXPECT_EQ(Show(encodeBlock(fields, ByteOrder::kBig)), "AA AA 00 02 01 02 5C 00 01 02");
}

TEST(PlcFrame, WronglyChosenFieldsStillGetAFittingChecksum) {
    plc::BlockFields const fields{.mark = {0xAB, 0xAA}, .length = 7, .number = 2, .lastFlag = 1, .payload = {}};
    // AB + AA + 07 + 02 + 01 = 15F
    EXPECT_EQ(Show(encodeBlock(fields, ByteOrder::kLittle)), "AB AA 07 00 02 00 5F 01");
}

TEST(PlcFrame, ChecksumLeavesItselfOutAndWrapsAround) {
    EXPECT_EQ(plc::blockChecksum(Hex("AA AA 01 00 01 00 FF 01 02")), 0x59);
    EXPECT_EQ(plc::blockChecksum(Hex("FF FF FF FF FF FF 00 FF FF")), 0xF8);
}

TEST(PlcFrame, BlockHeaderIsReadInBothOrders) {
    plc::BlockHeader const little = decodeBlockHeader(Hex("AA AA 34 12 78 56 9A 01"), ByteOrder::kLittle);
    EXPECT_EQ(little.length, 0x1234);
    EXPECT_EQ(little.number, 0x5678);
    EXPECT_EQ(little.checksum, 0x9A);
    EXPECT_EQ(little.lastFlag, 1);
    plc::BlockHeader const big = decodeBlockHeader(Hex("AA AA 34 12 78 56 9A 00"), ByteOrder::kBig);
    EXPECT_EQ(big.length, 0x3412);
    EXPECT_EQ(big.number, 0x7856);
    EXPECT_EQ(big.lastFlag, 0);
}

TEST(PlcFrame, AcknowledgeIsBuiltAndReadInBothOrders) {
    EXPECT_EQ(Show(encodeAck({.number = 3}, ByteOrder::kLittle)), "55 55 0A 00 03 00");
    EXPECT_EQ(Show(encodeAck({.number = 3}, ByteOrder::kBig)), "55 55 00 0A 00 03");
    EXPECT_EQ(Show(encodeAck({.mark = {0x56, 0x55}, .code = 11, .number = 1}, ByteOrder::kLittle)),
              "56 55 0B 00 01 00");
    EXPECT_EQ(decodeAck(Hex("55 55 0A 00 02 01"), ByteOrder::kLittle).number, 0x0102);
    EXPECT_EQ(decodeAck(Hex("55 55 00 0A 02 01"), ByteOrder::kBig).number, 0x0201);
    EXPECT_EQ(decodeAck(Hex("55 55 00 0A 02 01"), ByteOrder::kLittle).code, 0x0A00);
}

TEST(PlcRouting, HopIsTenForCouplerZeroAndTwentyTimesTheCouplerElse) {
    EXPECT_EQ(plc::hopByte({.coupler = 0, .channel = 3, .address = {}}), 13);
    EXPECT_EQ(plc::hopByte({.coupler = 2, .channel = 3, .address = {}}), 43);
    EXPECT_EQ(plc::hopByte({.coupler = 6, .channel = 19, .address = {}}), 139);
    EXPECT_EQ(plc::hopByte({.coupler = 13, .channel = 19, .address = {}}), 23);
}

TEST(PlcRouting, HeaderWithoutLevelsHasNoHopsButBothAddresses) {
    plc::Route route;
    route.level[0] = {.coupler = 2, .channel = 3, .address = {1, 2, 3, 4}};
    route.level[1] = {.coupler = 1, .channel = 1, .address = {5, 6, 7, 8}};
    EXPECT_EQ(Show(plc::encodeRoutingHeader(route, 128)), "4F 80 00 00 00 01 02 03 04 00 00 05 06 07 08 00 00 00 00");
}

TEST(PlcRouting, HeaderHasTheHopOfEachLevelThatIsPassed) {
    plc::Route route;
    route.level[0] = {.coupler = 2, .channel = 3, .address = {192, 168, 0, 1}};
    route.level[1] = {.coupler = 0, .channel = 7, .address = {0, 0, 0, 0}};
    route.levels = 1;
    EXPECT_EQ(Show(plc::encodeRoutingHeader(route, 1460)), "4F B4 05 10 2B C0 A8 00 01 00 00 00 00 00 00 00 00 00 00");
    route.levels = 2;
    EXPECT_EQ(Show(plc::encodeRoutingHeader(route, 1460)), "4F B4 05 20 2B C0 A8 00 01 00 11 00 00 00 00 00 00 00 00");
}

TEST(PlcRouting, TheWayIsLevelsHopsAndAddressesOnly) {
    plc::Route route{.levels = 1};
    route.level[0] = {.coupler = 2, .channel = 3, .address = {1, 2, 3, 4}};
    auto const header = plc::encodeRoutingHeader(route, 128);
    EXPECT_TRUE(plc::sameWay(header, Hex("4F 80 00 10 2B 01 02 03 04 00 00 00 00 00 00 00 00 00 00")));
    EXPECT_TRUE(plc::sameWay(header, Hex("4E 81 01 1F 2B 01 02 03 04 09 00 00 00 00 00 01 02 03 04")));
    EXPECT_FALSE(plc::sameWay(header, Hex("4F 80 00 20 2B 01 02 03 04 00 00 00 00 00 00 00 00 00 00")));
    EXPECT_FALSE(plc::sameWay(header, Hex("4F 80 00 10 2C 01 02 03 04 00 00 00 00 00 00 00 00 00 00")));
    EXPECT_FALSE(plc::sameWay(header, Hex("4F 80 00 10 2B 01 02 03 05 00 00 00 00 00 00 00 00 00 00")));
    EXPECT_FALSE(plc::sameWay(header, Hex("4F 80 00 10 2B 01 02 03 04 00 01 00 00 00 00 00 00 00 00")));
    EXPECT_FALSE(plc::sameWay(header, Hex("4F 80 00 10 2B 01 02 03 04 00 00 00 00 00 01 00 00 00 00")));
}

TEST(PlcRouting, NamesTheTwoFramings) {
    EXPECT_EQ(plc::framingNamed("Serial_RS232"), plc::Framing::kBare);
    EXPECT_EQ(plc::framingNamed("ABB_RS232_AC"), plc::Framing::kRouted);
    EXPECT_FALSE(plc::framingNamed("serial_rs232"));
    EXPECT_FALSE(plc::framingNamed(""));
}

TEST(PlcRouting, AddressTextNeedsFourNumbersAndThreeDots) {
    EXPECT_EQ(plc::addressFromText("192.168.0.255"), (plc::Address{192, 168, 0, 255}));
    for (char const* const wrong : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.", "1..3.4", "1.2.3.4 ", "a.b.c.d"}) {
        EXPECT_FALSE(plc::addressFromText(wrong)) << wrong;
    }
}

} // namespace
