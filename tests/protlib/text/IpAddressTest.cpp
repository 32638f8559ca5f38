#include "protlib/text/IpAddress.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr unsigned int kUntouched = 0xDEADBEEF;

unsigned int address(char const* text) {
    unsigned int result = kUntouched;
    parseIpAddress(text, result);
    return result;
}

TEST(IpAddress, FirstOctetIsTheMostSignificantByte) {
    EXPECT_EQ(address("10.1.2.3"), 0x0A010203U);
    EXPECT_EQ(address("255.255.255.255"), 0xFFFFFFFFU);
    EXPECT_EQ(address("0.0.0.0"), 0U);
    EXPECT_EQ(address("192.168.0.1"), 0xC0A80001U);
    EXPECT_EQ(address("128.0.0.255"), 0x800000FFU);
}

TEST(IpAddress, EmptyPartsReadAsZero) {
    EXPECT_EQ(address("..."), 0U);
    EXPECT_EQ(address("1..3."), 0x01000300U);
    EXPECT_EQ(address(".1.2.3"), 0x00010203U);
}

TEST(IpAddress, PartsAreDecimal) {
    EXPECT_EQ(address("010.08.0.001"), 0x0A080001U);
    EXPECT_EQ(address("0000000000255.0.0.0"), 0xFF000000U);
}

TEST(IpAddress, WrongNumberOfPartsChangesNothing) {
    EXPECT_EQ(address(""), kUntouched);
    EXPECT_EQ(address("1"), kUntouched);
    EXPECT_EQ(address("1.2"), kUntouched);
    EXPECT_EQ(address("1.2.3"), kUntouched);
    EXPECT_EQ(address("1.2.3.4.5"), kUntouched);
    EXPECT_EQ(address("...."), kUntouched);
    EXPECT_EQ(address(".."), kUntouched);
    EXPECT_EQ(address("1.2.3.4."), kUntouched);
}

TEST(IpAddress, PartsAboveTwoHundredFiftyFiveChangeNothing) {
    EXPECT_EQ(address("256.1.1.1"), kUntouched);
    EXPECT_EQ(address("1.256.1.1"), kUntouched);
    EXPECT_EQ(address("1.1.256.1"), kUntouched);
    EXPECT_EQ(address("1.1.1.256"), kUntouched);
    EXPECT_EQ(address("1.1.1.4294967297"), kUntouched);
    EXPECT_EQ(address("1.1.1.18446744073709551617"), kUntouched);
    EXPECT_EQ(address("99999999999999999999999999.1.1.1"), kUntouched);
}

TEST(IpAddress, AnythingButDigitsChangesNothing) {
    EXPECT_EQ(address("a.1.1.1"), kUntouched);
    EXPECT_EQ(address("1.-1.1.1"), kUntouched);
    EXPECT_EQ(address("1.+1.1.1"), kUntouched);
    EXPECT_EQ(address(" 1.1.1.1"), kUntouched);
    EXPECT_EQ(address("1.1.1.1 "), kUntouched);
    EXPECT_EQ(address("1.1 .1.1"), kUntouched);
    EXPECT_EQ(address("1.0x1.1.1"), kUntouched);
    EXPECT_EQ(address("1.1.1.\xB2"), kUntouched);
}

TEST(IpParser, AnswersWhetherTheTextIsAnAddress) {
    IPParser parser;
    EXPECT_TRUE(parser.Parse("1.2.3.4"));
    EXPECT_FALSE(parser.Parse("1.2.3"));
    EXPECT_FALSE(parser.Parse("1.2.3.4.5"));
    EXPECT_FALSE(parser.Parse("1234"));
    EXPECT_TRUE(parser.Parse("..."));
}

TEST(IpParser, FirstOctetComesFirst) {
    IPParser parser;
    ASSERT_TRUE(parser.Parse("10.1.2.3"));
    EXPECT_EQ(parser.GetOctet(0), 10);
    EXPECT_EQ(parser.GetOctet(1), 1);
    EXPECT_EQ(parser.GetOctet(2), 2);
    EXPECT_EQ(parser.GetOctet(3), 3);
}

TEST(IpParser, OctetsBeforeAFailureStayStored) {
    IPParser parser;
    ASSERT_TRUE(parser.Parse("1.2.3.4"));
    EXPECT_FALSE(parser.Parse("9.8.777.6"));
    EXPECT_EQ(parser.GetOctet(0), 9);
    EXPECT_EQ(parser.GetOctet(1), 8);
    EXPECT_EQ(parser.GetOctet(2), 3);
    EXPECT_EQ(parser.GetOctet(3), 4);
}

} // namespace
