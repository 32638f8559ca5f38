#include "driver/services/FileService.h"

#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace velktest;
using _VELK::ByteOrder;
using _VELK::readFilePiece;

constexpr auto kLittle = ByteOrder::LittleEndian;
constexpr auto kBig = ByteOrder::BigEndian;

TEST(FileService, OpenAndReadOfTheSymbolFileIsSeventeenBytes) {
    Bytes buffer(20, 0xEE);
    ASSERT_EQ(_VELK::writeOpenAndRead(buffer, "DOWNLOAD.SDB", kLittle), 17);
    EXPECT_EQ(buffer, Hex("31 00 0D 00 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00 EE EE EE"));
    ASSERT_EQ(_VELK::writeOpenAndRead(buffer, "DOWNLOAD.SDB", kBig), 17);
    EXPECT_EQ(buffer, Hex("31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00 EE EE EE"));
}

TEST(FileService, OpenAndReadNeedsRoom) {
    Bytes exact(17);
    EXPECT_EQ(_VELK::writeOpenAndRead(exact, "DOWNLOAD.SDB", kLittle), 17);
    Bytes small(16, 0xEE);
    EXPECT_EQ(_VELK::writeOpenAndRead(small, "DOWNLOAD.SDB", kLittle), 0);
    EXPECT_EQ(small, Bytes(16, 0xEE));
}

TEST(FileService, ReadNextIsOneByte) {
    Bytes buffer = Hex("EE EE");
    EXPECT_EQ(_VELK::writeReadNext(buffer), 1);
    EXPECT_EQ(buffer, Hex("32 EE"));
}

TEST(FileService, PieceInBothByteOrders) {
    Bytes const little = Hex("00 00 | 01 00 | 03 00 | 41 42 43");
    auto const more = readFilePiece(little, kLittle);
    ASSERT_TRUE(more.has_value());
    EXPECT_FALSE(more->last);
    EXPECT_EQ(Bytes(more->bytes.begin(), more->bytes.end()), Hex("41 42 43"));

    Bytes const big = Hex("00 00 | 00 00 | 00 03 | 41 42 43");
    auto const last = readFilePiece(big, kBig);
    ASSERT_TRUE(last.has_value());
    EXPECT_TRUE(last->last);
    EXPECT_EQ(Bytes(last->bytes.begin(), last->bytes.end()), Hex("41 42 43"));
}

TEST(FileService, BytesBehindThePieceAreIgnored) {
    Bytes const reply = Hex("00 00 | 00 00 | 01 00 | 41 42 43");
    auto const piece = readFilePiece(reply, kLittle);
    ASSERT_TRUE(piece.has_value());
    EXPECT_EQ(Bytes(piece->bytes.begin(), piece->bytes.end()), Hex("41"));
}

TEST(FileService, AnyMoreFlagButZeroMeansMore) {
    Bytes const reply = Hex("00 00 | 00 80 | 00 00");
    auto const piece = readFilePiece(reply, kLittle);
    ASSERT_TRUE(piece.has_value());
    EXPECT_FALSE(piece->last);
    EXPECT_TRUE(piece->bytes.empty());
}

TEST(FileService, RefusalAndShortRepliesGiveNoPiece) {
    EXPECT_FALSE(readFilePiece(Hex("01 00 | 00 00 | 00 00"), kLittle).has_value());
    EXPECT_FALSE(readFilePiece(Hex("00 01 | 00 00 | 00 00"), kLittle).has_value());
    EXPECT_FALSE(readFilePiece(Hex("00 00 | 00 00 | 04 00 | 41 42 43"), kLittle).has_value());
    EXPECT_FALSE(readFilePiece(Hex("00 00 | 00 00 | FF FF | 41 42 43"), kLittle).has_value());
    Bytes const whole = Hex("00 00 00 00 00 00");
    for (std::ptrdiff_t length = 0; length < 6; ++length) {
        EXPECT_FALSE(readFilePiece(Bytes(whole.begin(), whole.begin() + length), kLittle).has_value()) << length;
    }
    EXPECT_TRUE(readFilePiece(whole, kLittle).has_value());
}

} // namespace
