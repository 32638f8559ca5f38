#include "driver/config/ParamManager.h"
#include "tests/support/ConfigText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using _VELK::NodeParams;
using _VELK::ParamManager;
using velktest::ConfigText;

std::string Refusal(std::string const& text) {
    ParamManager manager;
    EXPECT_FALSE(manager.parse(text.c_str())) << text;
    return manager.getLastError();
}

std::string Refusal(ConfigText const& text) {
    return Refusal(text.Build());
}

/** The defaults that a valid text gives. */
NodeParams Accepted(ConfigText const& text, int node = 0) {
    ParamManager manager;
    EXPECT_TRUE(manager.parse(text.Build().c_str())) << manager.getLastError();
    return *manager.getNodeParams(node);
}

TEST(Params, UnknownFormat) {
    EXPECT_EQ(Refusal(""), "Parser: unknown format");
    EXPECT_EQ(Refusal("CfgVer=2 BlockSize=128"), "Parser: unknown format");
    EXPECT_EQ(Refusal("cfgver=1 BlockSize=128"), "Parser: unknown format");
}

TEST(Params, NoErrorBeforeAFailure) {
    ParamManager manager;
    EXPECT_STREQ(manager.getLastError(), "");
    EXPECT_TRUE(manager.parse(ConfigText().Build().c_str()));
    EXPECT_STREQ(manager.getLastError(), "");
}

TEST(Params, EveryRequiredKeyIsMissedByName) {
    for (std::string const key : {"BlockSize", "Timeout", "model", "RoutingLevels", "CouplerLV1", "ChannelLV1",
                                  "CouplerLV2", "ChannelLV2", "uart", "parity", "baudrate", "stopbits", "protType"}) {
        EXPECT_EQ(Refusal(ConfigText().Without(key)), "Parser: parameter '" + key + "' is not found");
    }
}

TEST(Params, KeysAreMissedInTheOrderInWhichTheyAreRead) {
    std::vector<std::string> const keys{"BlockSize",  "Timeout",    "model",      "RoutingLevels", "CouplerLV1",
                                        "ChannelLV1", "CouplerLV2", "ChannelLV2", "uart",          "parity",
                                        "baudrate",   "stopbits",   "protType"};
    ConfigText text;
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        text.Without(*key);
        EXPECT_EQ(Refusal(text), "Parser: parameter '" + *key + "' is not found");
    }
}

TEST(Params, OptionalKeysHaveDefaults) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText().Without("repeat").Build().c_str()));
    NodeParams const& node = *manager.getNodeParams(7);
    EXPECT_EQ(node.repeat, 2);
    EXPECT_EQ(node.AddressLV1, "0.0.0.0");
    EXPECT_EQ(node.AddressLV2, "0.0.0.0");
    EXPECT_EQ(node.prefix, "");
    EXPECT_EQ(manager.getCommonParams()->mode, "");
}

TEST(Params, EveryKeyArrives) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse("CfgVer=1 prefix=boiler BlockSize=1000 Timeout=2345 repeat=4 model=Motorola "
                              "RoutingLevels=2 CouplerLV1=3 ChannelLV1=4 AddressLV1=1.2.3.4 CouplerLV2=5 "
                              "ChannelLV2=6 AddressLV2=5.6.7.8 uart=com7 parity=even baudrate=57600 stopbits=2 "
                              "mode=RS-485 protType=ABB_RS232_AC"));
    NodeParams const& node = *manager.getNodeParams(0);
    EXPECT_EQ(node.prefix, "boiler");
    EXPECT_EQ(node.BlockSize, 1000);
    EXPECT_EQ(node.Timeout, 2345);
    EXPECT_EQ(node.repeat, 4);
    EXPECT_EQ(node.model, "Motorola");
    EXPECT_EQ(node.RoutingLevels, 2);
    EXPECT_EQ(node.CouplerLV1, "3");
    EXPECT_EQ(node.ChannelLV1, 4);
    EXPECT_EQ(node.AddressLV1, "1.2.3.4");
    EXPECT_EQ(node.CouplerLV2, "5");
    EXPECT_EQ(node.ChannelLV2, 6);
    EXPECT_EQ(node.AddressLV2, "5.6.7.8");
    auto const& common = *manager.getCommonParams();
    EXPECT_EQ(common.uart, "com7");
    EXPECT_EQ(common.parity, "even");
    EXPECT_EQ(common.baudrate, 57600);
    EXPECT_EQ(common.stopbits, 2);
    EXPECT_EQ(common.mode, "RS-485");
    EXPECT_EQ(common.protType, "ABB_RS232_AC");
}

TEST(Params, BlockSizeBorders) {
    EXPECT_EQ(Accepted(ConfigText().Set("BlockSize", "128")).BlockSize, 128);
    EXPECT_EQ(Accepted(ConfigText().Set("BlockSize", "1460")).BlockSize, 1460);
    for (char const* value : {"127", "1461", "0", "-1", "-128", "2147483647", "-2147483648", "none"}) {
        EXPECT_EQ(Refusal(ConfigText().Set("BlockSize", value)), "parameter 'BlockSize' out of range") << value;
    }
}

TEST(Params, TimeoutBorders) {
    EXPECT_EQ(Accepted(ConfigText().Set("Timeout", "100")).Timeout, 100);
    EXPECT_EQ(Accepted(ConfigText().Set("Timeout", "20000")).Timeout, 20000);
    for (char const* value : {"99", "20001", "0", "-1", "2147483647", "-2147483648"}) {
        EXPECT_EQ(Refusal(ConfigText().Set("Timeout", value)), "parameter 'Timeout' out of range") << value;
    }
}

TEST(Params, TimeoutOutOfRangeIsNotKept) {
    ParamManager manager;
    for (char const* value : {"-1", "2147483647", "99"}) {
        EXPECT_FALSE(manager.parse(ConfigText().Set("Timeout", value).Build().c_str()));
        EXPECT_EQ(manager.getNodeParams(1)->Timeout, 0) << "none was ever accepted";
    }
    ASSERT_TRUE(manager.parse(ConfigText().Set("Timeout", "700").Build().c_str()));
    for (char const* value : {"-1", "2147483647", "99"}) {
        EXPECT_FALSE(manager.parse(ConfigText().Set("Timeout", value).Build().c_str()));
        EXPECT_EQ(manager.getNodeParams(1)->Timeout, 700) << value;
    }
}

TEST(Params, RoutingLevelsBorders) {
    EXPECT_EQ(Accepted(ConfigText().Set("RoutingLevels", "0")).RoutingLevels, 0);
    EXPECT_EQ(Accepted(ConfigText().Set("RoutingLevels", "2")).RoutingLevels, 2);
    for (char const* value : {"3", "-1", "2147483647"}) {
        EXPECT_EQ(Refusal(ConfigText().Set("RoutingLevels", value)), "parameter 'RoutingLevels' out of range");
    }
}

TEST(Params, ChannelBorders) {
    for (std::string const key : {"ChannelLV1", "ChannelLV2"}) {
        EXPECT_TRUE(ParamManager().parse(ConfigText().Set(key, "0").Build().c_str()));
        EXPECT_TRUE(ParamManager().parse(ConfigText().Set(key, "19").Build().c_str()));
        for (char const* value : {"20", "-1", "2147483647"}) {
            EXPECT_EQ(Refusal(ConfigText().Set(key, value)), "parameter '" + key + "' out of range") << value;
        }
    }
}

TEST(Params, TheLastRangeIsTestedAfterEveryEarlierKey) {
    ConfigText text;
    text.Set("ChannelLV2", "20");
    EXPECT_EQ(Refusal(text), "parameter 'ChannelLV2' out of range");
    EXPECT_EQ(Refusal(text.Set("ChannelLV1", "20")), "parameter 'ChannelLV1' out of range");
    EXPECT_EQ(Refusal(text.Set("RoutingLevels", "9")), "parameter 'RoutingLevels' out of range");
    EXPECT_EQ(Refusal(text.Set("Timeout", "9")), "parameter 'Timeout' out of range");
    EXPECT_EQ(Refusal(text.Set("BlockSize", "9")), "parameter 'BlockSize' out of range");
}

TEST(Params, NumbersOutsideAnIntAreOutOfRange) {
    // 4294967424 is 128 modulo 2^32; a 64-bit build must not read it as 128.
    EXPECT_EQ(Refusal(ConfigText().Set("BlockSize", "4294967424")), "parameter 'BlockSize' out of range");
    EXPECT_EQ(Refusal(ConfigText().Set("Timeout", "99999999999999999999")), "parameter 'Timeout' out of range");
    EXPECT_EQ(Refusal(ConfigText().Set("RoutingLevels", "4294967296")), "parameter 'RoutingLevels' out of range");
}

TEST(Params, RepeatHasNoRange) {
    EXPECT_EQ(Accepted(ConfigText().Set("repeat", "0")).repeat, 0);
    EXPECT_EQ(Accepted(ConfigText().Set("repeat", "-5")).repeat, -5);
    EXPECT_EQ(Accepted(ConfigText().Set("repeat", "1000")).repeat, 1000);
}

TEST(Params, HexadecimalAndOctalNumbers) {
    EXPECT_EQ(Accepted(ConfigText().Set("Timeout", "0x1F4")).Timeout, 500);
    EXPECT_EQ(Accepted(ConfigText().Set("BlockSize", "0400")).BlockSize, 256);
    EXPECT_EQ(Accepted(ConfigText().Set("ChannelLV1", "010")).ChannelLV1, 8);
    EXPECT_EQ(Accepted(ConfigText().Set("BlockSize", "128bytes")).BlockSize, 128);
}

TEST(Params, ValueWithoutDigitsIsZero) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText().Set("baudrate", "fast").Set("RoutingLevels", "few").Build().c_str()));
    EXPECT_EQ(manager.getCommonParams()->baudrate, 0);
    EXPECT_EQ(manager.getNodeParams(0)->RoutingLevels, 0);
}

TEST(Params, BlanksAreRestoredInTexts) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText()
                                  .Set("prefix", "my&nbsp;boiler&nbsp;")
                                  .Set("uart", "com&nbsp;1")
                                  .Set("model", "In&nbsp;tel")
                                  .Set("CouplerLV1", "&nbsp;2")
                                  .Build()
                                  .c_str()));
    EXPECT_EQ(manager.getNodeParams(0)->prefix, "my boiler ");
    EXPECT_EQ(manager.getCommonParams()->uart, "com 1");
    EXPECT_EQ(manager.getNodeParams(0)->model, "In tel");
    EXPECT_EQ(manager.getNodeParams(0)->CouplerLV1, " 2");
}

TEST(Params, NodeEntryOverridesOneField) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText().Set("repeat", "5").Node(3, "Timeout", "700").Build().c_str()));
    NodeParams const& three = *manager.getNodeParams(3);
    EXPECT_EQ(three.nodeId, 3);
    EXPECT_EQ(three.Timeout, 700);
    EXPECT_EQ(three.BlockSize, 128);
    EXPECT_EQ(three.repeat, 5) << "the general entry serves the node too";
    EXPECT_EQ(three.model, "Intel");
    EXPECT_EQ(manager.getNodeParams(4)->Timeout, 1000);
}

// If the text were searched for every key of every node, this would take minutes in an emulator.
TEST(Params, ThousandsOfNodesAreRead) {
    constexpr int kNodes = 6'000;
    std::string text = ConfigText().Build();
    for (int node = 0; node < kNodes; ++node) {
        text += " Node" + std::to_string(node) + "::Timeout=" + std::to_string(100 + node);
    }
    ParamManager manager;
    ASSERT_TRUE(manager.parse(text.c_str())) << manager.getLastError();
    for (int node = 0; node < kNodes; node += 100) {
        EXPECT_EQ(manager.getNodeParams(node)->Timeout, 100 + node);
    }
}

TEST(Params, NodesWithoutARecordShareTheDefaults) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText().Node(3, "Timeout", "700").Build().c_str()));
    EXPECT_EQ(manager.getNodeParams(4), manager.getNodeParams(-1));
    EXPECT_EQ(manager.getNodeParams(4), manager.getNodeParams(2147483647));
    EXPECT_NE(manager.getNodeParams(4), manager.getNodeParams(3));
}

TEST(Params, DefaultsAreNeverNull) {
    ParamManager const manager;
    EXPECT_NE(manager.getNodeParams(0), nullptr);
    EXPECT_NE(manager.getCommonParams(), nullptr);
}

TEST(Params, EveryRequiredKeyNeedsAGeneralEntry) {
    EXPECT_EQ(Refusal(ConfigText().Without("Timeout").Node(1, "Timeout", "700")),
              "Parser: parameter 'Timeout' is not found");
}

TEST(Params, NodeEntriesAreRangedToo) {
    EXPECT_EQ(Refusal(ConfigText().Node(1, "BlockSize", "127")), "parameter 'BlockSize' out of range");
    EXPECT_EQ(Refusal(ConfigText().Node(1, "ChannelLV2", "20")), "parameter 'ChannelLV2' out of range");
}

TEST(Params, PrefixOfANode) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText().Node(1, "prefix", "one").Node(2, "Timeout", "500").Build().c_str()));
    EXPECT_EQ(manager.getNodeParams(1)->prefix, "one");
    EXPECT_EQ(manager.getNodeParams(2)->prefix, "");
    EXPECT_EQ(manager.getNodeParams(9)->prefix, "");
}

TEST(Params, GeneralPrefixIsRefusedBesideNodeEntries) {
    EXPECT_EQ(Refusal(ConfigText().Set("prefix", "all").Node(1, "Timeout", "500")),
              "Parser: parameter 'prefix' can't be node independent");
    EXPECT_EQ(Accepted(ConfigText().Set("prefix", "all")).prefix, "all");
}

TEST(Params, CommonKeyOfANodeIsNotSeen) {
    for (std::string const key : {"uart", "parity", "baudrate", "stopbits", "protType"}) {
        EXPECT_EQ(Refusal(ConfigText().Without(key).Node(1, key, "1")), "Parser: parameter '" + key + "' is not found");
    }
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText().Node(1, "uart", "com9").Node(1, "mode", "RS-485").Build().c_str()));
    EXPECT_EQ(manager.getCommonParams()->uart, "com1");
    EXPECT_EQ(manager.getCommonParams()->mode, "");
}

TEST(Params, RecordsBeforeTheFaultStay) {
    ParamManager manager;
    EXPECT_FALSE(manager.parse(ConfigText().Node(1, "Timeout", "700").Node(2, "Timeout", "7").Build().c_str()));
    EXPECT_EQ(manager.getNodeParams(1)->nodeId, 1);
    EXPECT_EQ(manager.getNodeParams(1)->Timeout, 700);
    EXPECT_EQ(manager.getNodeParams(2), manager.getNodeParams(99));
}

TEST(Params, SecondParseKeepsTheFirstRecordOfANode) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText().Node(1, "Timeout", "700").Build().c_str()));
    ASSERT_TRUE(manager.parse(
        ConfigText().Set("Timeout", "300").Set("uart", "com2").Node(1, "Timeout", "800").Build().c_str()));
    EXPECT_EQ(manager.getNodeParams(1)->Timeout, 700) << "the first match wins";
    EXPECT_EQ(manager.getNodeParams(2)->Timeout, 300);
    EXPECT_EQ(manager.getCommonParams()->uart, "com2");
}

TEST(Params, RecordsKeepTheirAddresses) {
    ParamManager manager;
    ASSERT_TRUE(manager.parse(ConfigText().Node(1, "Timeout", "700").Build().c_str()));
    NodeParams const* const one = manager.getNodeParams(1);
    NodeParams const* const defaults = manager.getNodeParams(2);
    auto const* const common = manager.getCommonParams();
    ConfigText many;
    for (int node = 2; node < 200; ++node) {
        many.Node(node, "Timeout", "600");
    }
    ASSERT_TRUE(manager.parse(many.Build().c_str()));
    EXPECT_EQ(manager.getNodeParams(1), one);
    EXPECT_EQ(one->Timeout, 700);
    EXPECT_EQ(manager.getNodeParams(1000), defaults);
    EXPECT_EQ(manager.getCommonParams(), common);
    EXPECT_EQ(manager.getNodeParams(199)->nodeId, 199);
}

} // namespace
