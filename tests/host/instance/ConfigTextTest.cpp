#include "host/instance/ConfigText.h"

#include "host/values/TagAddress.h"

#include <gtest/gtest.h>

namespace hosttest {
namespace {

std::string text(host::DriverConfig const& config) {
    auto const built = host::configText(config);
    return built.ok() ? built.value() : "error: " + built.failure().text;
}

TEST(ConfigText, HoldsEveryKeyThatTheDriverRequires) {
    EXPECT_EQ(text({}), "CfgVer=1 uart=com1 parity=none baudrate=19200 stopbits=1 mode=RS-232 protType=ABB_RS232_AC "
                        "BlockSize=128 Timeout=10000 repeat=2 model=Motorola RoutingLevels=0 CouplerLV1=0 ChannelLV1=0 "
                        "AddressLV1=0.0.0.0 CouplerLV2=0 ChannelLV2=0 AddressLV2=0.0.0.0");
}

TEST(ConfigText, NodesCarryOnlyWhatDiffers) {
    host::DriverConfig config;
    config.nodeOverrides.resize(2);
    config.nodeOverrides[0].node = 3;
    config.nodeOverrides[0].timeoutMs = 500;
    config.nodeOverrides[0].model = "Intel";
    config.nodeOverrides[1].node = 256;
    config.nodeOverrides[1].prefix = "big press";
    config.nodeOverrides[1].coupler2 = "6";
    config.nodeOverrides[1].channel2 = 19;
    std::string const whole = text(config);
    EXPECT_EQ(whole.substr(whole.find(" Node3")),
              " Node3::Timeout=500 Node3::model=Intel Node256::prefix=big&nbsp;press Node256::CouplerLV2=6 "
              "Node256::ChannelLV2=19");
}

TEST(ConfigText, BlanksAreWrittenForTheDriverToRestore) {
    host::DriverConfig config;
    config.uart = "/dev/serial/by-id/usb A  B";
    EXPECT_NE(text(config).find(" uart=/dev/serial/by-id/usb&nbsp;A&nbsp;&nbsp;B "), std::string::npos);
}

TEST(ConfigText, WhatTheStringCannotCarryIsRefused) {
    host::DriverConfig config;
    config.uart = "com1\tx";
    EXPECT_EQ(text(config), "error: the value of uart must not contain tabs, line ends or control characters");
    config.uart = "com1\n";
    EXPECT_EQ(text(config), "error: the value of uart must not contain tabs, line ends or control characters");
    config.uart = "a&nbsp;b";
    EXPECT_EQ(text(config), "error: the value of uart must not contain &nbsp;");
    config.uart = "CfgVer=2";
    EXPECT_EQ(text(config), "error: the value of uart must not contain CfgVer=");
    config.uart = "Node7::Timeout";
    EXPECT_EQ(text(config), "error: the value of uart must not contain ::");
    config.uart = "com1";
    config.nodeOverrides.resize(1);
    config.nodeOverrides[0].prefix = "x\ny";
    EXPECT_EQ(text(config), "error: the value of Node0::prefix must not contain tabs, line ends or control characters");
}

TEST(ConfigText, ANodeIsConfiguredOnce) {
    host::DriverConfig config;
    config.nodeOverrides.resize(2);
    EXPECT_EQ(text(config), "error: the node 0 is configured twice");
    config.nodeOverrides[1].node = -1;
    EXPECT_EQ(text(config), "error: the node number -1 is negative");
}

TEST(ConfigText, RangesAreTheDriversToCheck) {
    host::DriverConfig config;
    config.nodes.blockSize = 9999;
    config.parity = "space";
    std::string const whole = text(config);
    EXPECT_NE(whole.find(" BlockSize=9999 "), std::string::npos);
    EXPECT_NE(whole.find(" parity=space "), std::string::npos);
}

TEST(TagAddress, FiveFieldsInOrder) {
    auto const address = host::tagAddress({1, "PLC_PRG/Counter", "M", "0", "int(swap2)"});
    ASSERT_TRUE(address.ok());
    EXPECT_EQ(address.value(), "1?PLC_PRG/Counter?M?0?int(swap2)");
    auto const identifier = host::tagAddress({2, "id", "PROJ_ID", "305419896", "unsignedInt"});
    ASSERT_TRUE(identifier.ok());
    EXPECT_EQ(identifier.value(), "2?id?PROJ_ID?305419896?unsignedInt");
}

TEST(TagAddress, ASeparatorInAFieldIsRefused) {
    auto const name = host::tagAddress({1, "a?b", "M", "0", "int"});
    ASSERT_FALSE(name.ok());
    EXPECT_EQ(name.failure().text, "the name of a tag must not contain ? or control characters");
    EXPECT_FALSE(host::tagAddress({1, "a", "M?", "0", "int"}).ok());
    EXPECT_FALSE(host::tagAddress({1, "a", "M", "0?", "int"}).ok());
    EXPECT_FALSE(host::tagAddress({1, "a", "M", "0", "int\n"}).ok());
    EXPECT_FALSE(host::tagAddress({1, std::string("a\0b", 3), "M", "0", "int"}).ok());
}

} // namespace
} // namespace hosttest
