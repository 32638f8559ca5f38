#include "driver/services/ListService.h"

#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace velktest;
using _VELK::ByteOrder;
using _VELK::ListReply;
using _VELK::ListRequest;
using _VELK::replyStatus;

constexpr auto kIntel = ByteOrder::LittleEndian;
constexpr auto kMotorola = ByteOrder::BigEndian;

Bytes Taken(Bytes const& buffer, int length) {
    return {buffer.begin(), buffer.begin() + length};
}

TEST(SmallServices, LinkCheck) {
    Bytes buffer(14, 0xEE);
    EXPECT_EQ(Taken(buffer, _VELK::writeLinkCheck(buffer)).size(), 9U);
    EXPECT_EQ(Taken(buffer, 9), Hex("42 E0 20 26 29 00 00 5D 05"));
}

TEST(SmallServices, Logout) {
    Bytes buffer(14, 0xEE);
    EXPECT_EQ(_VELK::writeLogout(buffer), 1);
    EXPECT_EQ(buffer[0], 0x02);
}

TEST(SmallServices, LoginInBothByteOrders) {
    Bytes buffer(14, 0xEE);
    EXPECT_EQ(_VELK::writeLogin(buffer, kIntel), 14);
    EXPECT_EQ(buffer, Hex("01 02 00 00 00 06 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(_VELK::writeLogin(buffer, kMotorola), 14);
    EXPECT_EQ(buffer, Hex("01 00 00 00 02 00 00 00 06 00 00 00 00 00"));
}

TEST(ReplyStatus, TakesTwoBytesInTheNodesOrder) {
    EXPECT_EQ(replyStatus(Hex("E8 03"), kIntel), 1000);
    EXPECT_EQ(replyStatus(Hex("03 E8"), kMotorola), 1000);
    EXPECT_EQ(replyStatus(Hex("48 00 FF"), kIntel), 0x48);
    EXPECT_EQ(replyStatus(Hex("00 33 FF"), kMotorola), 0x33);
}

TEST(ReplyStatus, TooShortReplyHasNone) {
    EXPECT_FALSE(replyStatus({}, kIntel).has_value());
    EXPECT_FALSE(replyStatus(Hex("00"), kIntel).has_value());
}

TEST(ListRequest, EmptyListIsTenBytes) {
    Bytes buffer(64, 0xEE);
    ListRequest list(buffer, kIntel, false, 0);
    EXPECT_TRUE(list.addProjectIdentifier(0x11223344));
    EXPECT_EQ(Taken(buffer, list.length()), Hex("2E 00 | 00 00 00 00 | 44 33 22 11"));
}

TEST(ListRequest, ReadLittleEndian) {
    Bytes buffer(64, 0xEE);
    ListRequest list(buffer, kIntel, false, 2);
    EXPECT_TRUE(list.addItem({.area = 4, .offset = 0x01020304, .size = 0x0A0B0C}));
    EXPECT_TRUE(list.addItem({.area = 0x0102, .offset = 5, .size = 0}));
    EXPECT_TRUE(list.addProjectIdentifier(0xFFEEDDCC));
    EXPECT_EQ(Taken(buffer, list.length()),
              Hex("2E 00 | 02 00 00 00 | 04 00 04 03 02 01 0C 0B 0A 00 | 02 01 05 00 00 00 00 00 00 00 | CC DD EE FF"));
}

TEST(ListRequest, ReadBigEndian) {
    Bytes buffer(64, 0xEE);
    ListRequest list(buffer, kMotorola, false, 1);
    EXPECT_TRUE(list.addItem({.area = 4, .offset = 0x01020304, .size = 0x0A0B0C}));
    EXPECT_TRUE(list.addProjectIdentifier(0xFFEEDDCC));
    EXPECT_EQ(Taken(buffer, list.length()), Hex("2E 00 | 00 00 00 01 | 00 04 01 02 03 04 00 0A 0B 0C | FF EE DD CC"));
}

TEST(ListRequest, WriteCarriesEachValueBehindItsDescriptor) {
    Bytes buffer(64, 0xEE);
    ListRequest list(buffer, kIntel, true, 2);
    EXPECT_TRUE(list.addItem({.area = 0, .offset = 16, .size = 2}));
    EXPECT_TRUE(list.addValue(Hex("34 12")));
    EXPECT_TRUE(list.addItem({.area = 1, .offset = 32, .size = 1}));
    EXPECT_TRUE(list.addValue(Hex("77")));
    EXPECT_TRUE(list.addProjectIdentifier(1));
    EXPECT_EQ(Taken(buffer, list.length()),
              Hex("3C 00 | 02 00 00 00 | 00 00 10 00 00 00 02 00 00 00 34 12 | 01 00 20 00 00 00 01 00 00 00 77 | "
                  "01 00 00 00"));
}

TEST(ListRequest, NothingIsWrittenWhereThereIsNoRoom) {
    Bytes buffer(6 + 10 + 3, 0xEE);
    ListRequest list(buffer, kIntel, true, 1);
    EXPECT_TRUE(list.addItem({.area = 0, .offset = 16, .size = 4}));
    EXPECT_FALSE(list.addValue(Hex("01 02 03 04")));
    EXPECT_FALSE(list.addItem({.area = 0, .offset = 16, .size = 4}));
    EXPECT_FALSE(list.addProjectIdentifier(1));
    EXPECT_EQ(list.length(), 16);
    EXPECT_EQ(Bytes(buffer.begin() + 16, buffer.end()), Hex("EE EE EE"));
    EXPECT_TRUE(list.addValue(Hex("01 02 03")));
    EXPECT_EQ(list.length(), 19);
}

TEST(ListReply, WalksQualitiesAndValues) {
    Bytes const reply = Hex("00 00 | AB CD EF 01 | 01 34 12 | 00 77");
    ListReply walk(reply);
    auto const first = walk.next(2);
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(first->quality, 1);
    EXPECT_EQ(Bytes(first->bytes.begin(), first->bytes.end()), Hex("34 12"));
    EXPECT_FALSE(walk.atEnd());
    auto const second = walk.next(1);
    ASSERT_TRUE(second.has_value());
    EXPECT_EQ(second->quality, 0);
    EXPECT_EQ(Bytes(second->bytes.begin(), second->bytes.end()), Hex("77"));
    EXPECT_TRUE(walk.atEnd());
    EXPECT_FALSE(walk.next(0).has_value()) << "there is no quality byte left";
}

TEST(ListReply, ValueMustNotPassTheEnd) {
    Bytes const reply = Hex("00 00 | 00 00 00 00 | 01 34 12");
    EXPECT_FALSE(ListReply(reply).next(3).has_value());
    EXPECT_FALSE(ListReply(reply).next(static_cast<std::size_t>(-1)).has_value());
    EXPECT_TRUE(ListReply(reply).next(2).has_value());
}

TEST(ListReply, ShortRepliesHoldNothing) {
    Bytes const whole = Hex("00 00 00 00 00 00 01");
    for (std::ptrdiff_t length = 0; length <= 6; ++length) {
        Bytes const cut(whole.begin(), whole.begin() + length);
        EXPECT_FALSE(ListReply(cut).next(0).has_value()) << length;
    }
}

} // namespace
