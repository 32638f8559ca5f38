#include "description/ProtocolDescription.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

constexpr std::size_t kHeaderLength = 83;
constexpr std::size_t kStreamLength = 2055;

/** A piece of the container as text. */
std::string piece(std::size_t offset, std::size_t length) {
    auto const container = _VELK::xmlContainer();
    EXPECT_LE(offset + length, container.size());
    if (offset + length > container.size()) {
        return {};
    }
    return {reinterpret_cast<char const*>(container.data()) + offset, length};
}

TEST(DescriptionContainer, HasTheLengthOfItsParts) {
    EXPECT_EQ(_VELK::xmlContainer().size(), kHeaderLength + 2092);
}

TEST(DescriptionContainer, BeginsWithTheStartMarker) {
    EXPECT_EQ(piece(0, 18), "<<ICOM_XML_START>>");
}

TEST(DescriptionContainer, HeaderNamesTheDriver) {
    EXPECT_EQ(piece(18, kHeaderLength - 18), "Name=VELK?FullName=Velk Serial Link?Version=144?Platform=KQ47_LIN");
    EXPECT_EQ(piece(kHeaderLength, 1), std::string(1, '\0'));
}

TEST(DescriptionContainer, HeaderHoldsNoOtherZero) {
    EXPECT_EQ(piece(0, kHeaderLength).find('\0'), std::string::npos);
}

TEST(DescriptionContainer, TellsTheLengthOfTheStream) {
    EXPECT_EQ(piece(kHeaderLength + 1, 18), "compressedXML=2055");
    EXPECT_EQ(piece(kHeaderLength + 19, 1), std::string(1, '\0'));
}

TEST(DescriptionContainer, StreamIsZlibAtItsDefaultLevel) {
    EXPECT_EQ(piece(kHeaderLength + 20, 2), "\x78\x9C");
}

TEST(DescriptionContainer, EndsWithTheEndMarkerAndAZero) {
    EXPECT_EQ(piece(kHeaderLength + 20 + kStreamLength, 16), "<<ICOM_XML_END>>");
    EXPECT_EQ(piece(kHeaderLength + 2091, 1), std::string(1, '\0'));
}

TEST(DescriptionPointer, PointsToTheLengthBehindTheHeader) {
    EXPECT_STREQ(GetXml_VELK(), "compressedXML=2055");
    auto const* const container = reinterpret_cast<char const*>(_VELK::xmlContainer().data());
    EXPECT_EQ(GetXml_VELK(), container + kHeaderLength + 1);
}

TEST(DescriptionPointer, IsNotTheStartMarker) {
    ASSERT_NE(GetXml_VELK(), nullptr);
    EXPECT_NE(std::strncmp(GetXml_VELK(), "<<", 2), 0);
}

TEST(DescriptionPointer, IsTheSameOnEveryCall) {
    EXPECT_EQ(GetXml_VELK(), GetXml_VELK());
}

} // namespace
