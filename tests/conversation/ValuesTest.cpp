#include "tests/support/ConversationTest.h"

#include <ostream>
#include <string>
#include <vector>

/** Values of every type, in both directions, over every framing and in both byte orders. */
namespace {

using namespace velktest;

struct Setting {
    char const* name;
    plc::Framing framing;
    int levels;
    plc::ByteOrder order;
    std::size_t blockSize;
};

std::ostream& operator<<(std::ostream& out, Setting const& setting) {
    return out << setting.name;
}

class ValuesTest : public ConversationTest, public ::testing::WithParamInterface<Setting> {
protected:
    void SetUp() override {
        plc::LineDescription stations;
        stations.framing = GetParam().framing;
        plc::StationDescription station;
        station.byteOrder = GetParam().order;
        station.blockSize = GetParam().blockSize;
        station.route = {.levels = GetParam().levels,
                         .level = {plc::RouteLevel{2, 3, {10, 1, 2, 3}}, plc::RouteLevel{0, 7, {192, 168, 0, 7}}}};
        station.program.projectId = 0x12345678;
        station.program.variables = {
            {.name = "PLC_PRG.Sint", .type = "SINT"},
            {.name = "PLC_PRG.Usint", .type = "USINT"},
            {.name = "PLC_PRG.Int", .type = "INT"},
            {.name = "PLC_PRG.Uint", .type = "UINT"},
            {.name = "PLC_PRG.Dint", .type = "DINT"},
            {.name = "PLC_PRG.Udint", .type = "UDINT"},
            {.name = "PLC_PRG.Real", .type = "REAL"},
            {.name = "PLC_PRG.Lreal", .type = "LREAL"},
            {.name = "PLC_PRG.Text", .type = "STRING(19)"},
            {.name = "PLC_PRG.Bool", .type = "BOOL"},
            {.name = "PLC_PRG.Ints", .type = "ARRAY [0..9] OF INT"},
            {.name = "PLC_PRG.Reals", .type = "ARRAY [1..3] OF REAL"},
            {.name = "PLC_PRG.Bytes", .type = "ARRAY [0..999] OF BYTE"},
            {.name = "PLC_PRG.Input", .type = "INT", .area = 1, .offset = 100},
            {.name = "PLC_PRG.Lamp", .type = "BIT", .area = 2, .offset = 13},
            {.name = "PLC_PRG.Far", .type = "DINT", .area = 5, .offset = 1020},
        };
        stations.stations = {station};
        ConfigText config;
        config.Set("protType", GetParam().framing == plc::Framing::kBare ? "Serial_RS232" : "ABB_RS232_AC")
            .Set("model", GetParam().order == plc::ByteOrder::kLittle ? "Intel" : "Motorola")
            .Set("BlockSize", std::to_string(GetParam().blockSize))
            .Set("RoutingLevels", std::to_string(GetParam().levels))
            .Set("CouplerLV1", "2")
            .Set("ChannelLV1", "3")
            .Set("AddressLV1", "10.1.2.3")
            .Set("CouplerLV2", "0")
            .Set("ChannelLV2", "7")
            .Set("AddressLV2", "192.168.0.7");
        Begin(stations, config);
    }

    void TearDown() override {
        ExpectNoComplaints();
        ConversationTest::TearDown();
    }

    plc::Station& Plc() { return line->station(); }
};

INSTANTIATE_TEST_SUITE_P(
    EveryLine, ValuesTest,
    ::testing::Values(Setting{"BareIntel128", plc::Framing::kBare, 0, plc::ByteOrder::kLittle, 128},
                      Setting{"BareMotorola128", plc::Framing::kBare, 0, plc::ByteOrder::kBig, 128},
                      Setting{"BareIntel1460", plc::Framing::kBare, 0, plc::ByteOrder::kLittle, 1460},
                      Setting{"BareMotorola1460", plc::Framing::kBare, 0, plc::ByteOrder::kBig, 1460},
                      Setting{"RoutedNoLevelIntel128", plc::Framing::kRouted, 0, plc::ByteOrder::kLittle, 128},
                      Setting{"RoutedOneLevelMotorola333", plc::Framing::kRouted, 1, plc::ByteOrder::kBig, 333},
                      Setting{"RoutedTwoLevelsIntel1441", plc::Framing::kRouted, 2, plc::ByteOrder::kLittle, 1441},
                      Setting{"RoutedTwoLevelsMotorola1441", plc::Framing::kRouted, 2, plc::ByteOrder::kBig, 1441}),
    [](auto const& setting) { return setting.param.name; });

TEST_P(ValuesTest, EveryTypeIsReadAsThePlcHasIt) {
    Plc().setValue("PLC_PRG.Sint", -100);
    Plc().setValue("PLC_PRG.Usint", 200);
    Plc().setValue("PLC_PRG.Int", -12345);
    Plc().setValue("PLC_PRG.Uint", 54321);
    Plc().setValue("PLC_PRG.Dint", -123456789);
    Plc().setValue("PLC_PRG.Udint", 4123456789U);
    Plc().setValue("PLC_PRG.Real", 1.5);
    Plc().setValue("PLC_PRG.Lreal", -2.000000001);
    Plc().setValue("PLC_PRG.Text", "Hello, line");
    Plc().setValue("PLC_PRG.Bool", true);
    Plc().setValue("PLC_PRG.Input", 4711);
    Plc().setValue("PLC_PRG.Lamp", true);
    Plc().setValue("PLC_PRG.Far", 99);
    ExpectNumber<std::int8_t>(Tag("1?PLC_PRG/Sint?M?0?byte"), -100);
    ExpectNumber<std::uint8_t>(Tag("1?PLC_PRG/Usint?M?0?unsignedByte"), 200);
    ExpectNumber<std::int16_t>(Tag("1?PLC_PRG/Int?M?0?short"), -12345);
    ExpectNumber<std::uint16_t>(Tag("1?PLC_PRG/Uint?M?0?unsignedShort"), 54321);
    ExpectNumber<std::int32_t>(Tag("1?PLC_PRG/Dint?M?0?int"), -123456789);
    ExpectNumber<std::uint32_t>(Tag("1?PLC_PRG/Udint?M?0?unsignedInt"), 4123456789U);
    ExpectNumber<float>(Tag("1?PLC_PRG/Real?M?0?float"), 1.5F);
    ExpectNumber<double>(Tag("1?PLC_PRG/Lreal?M?0?double"), -2.000000001);
    ExpectNumber<std::int16_t>(Tag("1?PLC_PRG/Input?M?0?short"), 4711);
    ExpectNumber<bool>(Tag("1?PLC_PRG/Bool?M?0?boolean"), true);
    ExpectNumber<bool>(Tag("1?PLC_PRG/Lamp?QB?0?boolean"), true);
    ExpectNumber<std::int32_t>(Tag("1?PLC_PRG/Far?M?0?int"), 99);
    EXPECT_EQ(Read({Tag("1?PLC_PRG/Text?M?0?string-20")}).values, Text("Hello, line") + Bytes(9));
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 1U);
    EXPECT_EQ(Count(plc::Cause::kLoggedIn), 1U);
}

TEST_P(ValuesTest, EveryTypeIsWrittenAsThePlcTakesIt) {
    EXPECT_TRUE(Write(
        {Tag("1?PLC_PRG/Sint?M?0?byte"), Tag("1?PLC_PRG/Usint?M?0?unsignedByte"), Tag("1?PLC_PRG/Int?M?0?short"),
         Tag("1?PLC_PRG/Uint?M?0?unsignedShort"), Tag("1?PLC_PRG/Dint?M?0?int"), Tag("1?PLC_PRG/Udint?M?0?unsignedInt"),
         Tag("1?PLC_PRG/Real?M?0?float"), Tag("1?PLC_PRG/Lreal?M?0?double"), Tag("1?PLC_PRG/Text?M?0?string-20"),
         Tag("1?PLC_PRG/Bool?M?0?boolean"), Tag("1?PLC_PRG/Lamp?QB?0?boolean"), Tag("1?PLC_PRG/Input?I?0?short")},
        HostValue<std::int8_t>(-100) + HostValue<std::uint8_t>(200) + HostValue<std::int16_t>(-12345) +
            HostValue<std::uint16_t>(54321) + HostValue<std::int32_t>(-123456789) +
            HostValue<std::uint32_t>(4123456789U) + HostValue(1.5F) + HostValue(-2.000000001) + Text("Hello, line") +
            Bytes(9) + Hex("01 01") + HostValue<std::int16_t>(4711)))
        << driver->GetLastErrorString();
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Sint"), -100);
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Usint"), 200);
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Int"), -12345);
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Uint"), 54321);
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Dint"), -123456789);
    EXPECT_EQ(Plc().get<std::uint32_t>("PLC_PRG.Udint"), 4123456789U);
    EXPECT_EQ(Plc().get<double>("PLC_PRG.Real"), 1.5);
    EXPECT_EQ(Plc().get<double>("PLC_PRG.Lreal"), -2.000000001);
    EXPECT_EQ(Plc().get<std::string>("PLC_PRG.Text"), "Hello, line");
    EXPECT_TRUE(Plc().get<bool>("PLC_PRG.Bool"));
    EXPECT_TRUE(Plc().get<bool>("PLC_PRG.Lamp"));
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Input"), 4711);
}

TEST_P(ValuesTest, Arrays) {
    ITag* const ints = Tag("1?PLC_PRG/Ints?M?0?short-10");
    Bytes numbers;
    for (std::int16_t i = 0; i < 10; ++i) {
        numbers = numbers + HostValue<std::int16_t>(static_cast<std::int16_t>(i * 1000 - 5000));
    }
    EXPECT_TRUE(Write({ints}, numbers)) << driver->GetLastErrorString();
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Ints[0]"), -5000);
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Ints[9]"), 4000);
    EXPECT_EQ(Read({ints}).values, numbers);
    Plc().setValue("PLC_PRG.Reals[2]", 0.25);
    EXPECT_EQ(Read({Tag("1?PLC_PRG/Reals?M?0?float-3")}).values, HostValue(0.0F) + HostValue(0.25F) + HostValue(0.0F));
    ITag* const bytes = Tag("1?PLC_PRG/Bytes?M?0?unsignedByte-1000");
    EXPECT_TRUE(Write({bytes}, Counting(1000, 5))) << driver->GetLastErrorString();
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Bytes[999]"), (999 + 5) % 256);
    EXPECT_EQ(Read({bytes}).values, Counting(1000, 5));
}

TEST_P(ValuesTest, FirstWriteOfABitTouchesThatBitAlone) {
    ITag* const lamp = Tag("1?PLC_PRG/Lamp?QB?0?boolean");
    EXPECT_TRUE(Write({lamp}, Hex("01"))) << driver->GetLastErrorString();
    EXPECT_EQ(Plc().memory().area(2)[0], 0x00);
    EXPECT_EQ(Plc().memory().area(2)[1], 0x20);
    Plc().memory().area(2)[1] = 0xFF;
    EXPECT_TRUE(Write({lamp}, Hex("00")));
    EXPECT_EQ(Plc().memory().area(2)[1], 0xDF);
}

TEST_P(ValuesTest, SingleValues) {
    Bytes value = HostValue<std::int32_t>(77);
    ITag* const tag = Tag("1?PLC_PRG/Dint?M?0?int");
    EXPECT_TRUE(driver->Write(tag, value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Dint"), 77);
    Plc().setValue("PLC_PRG.Dint", 78);
    EXPECT_TRUE(driver->Read(tag, value.data())) << driver->GetLastErrorString();
    EXPECT_EQ(NumberOf<std::int32_t>(value), 78);
}

TEST_P(ValuesTest, NinetyItemsInOneDatagram) {
    std::vector<ITag*> tags;
    for (int i = 0; i < 90; ++i) {
        tags.push_back(Tag(i % 2 == 0 ? "1?PLC_PRG/Int?M?0?short" : "1?PLC_PRG/Usint?M?0?unsignedByte"));
    }
    Plc().setValue("PLC_PRG.Int", 258);
    Plc().setValue("PLC_PRG.Usint", 9);
    ReadOutcome const outcome = Read(tags);
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    Bytes expected;
    for (int i = 0; i < 45; ++i) {
        expected = expected + Hex("02 01 09");
    }
    EXPECT_EQ(outcome.values, expected);
}

TEST_P(ValuesTest, SteadyCycleIsTwoExchanges) {
    ITag* const tag = Tag("1?PLC_PRG/Dint?M?0?int");
    ExpectNumber<std::int32_t>(tag, 0);
    std::uint64_t const before = Count(plc::Cause::kExchangeDone);
    for (int i = 1; i <= 10; ++i) {
        Plc().setValue("PLC_PRG.Dint", i);
        ExpectNumber<std::int32_t>(tag, i);
    }
    EXPECT_EQ(Count(plc::Cause::kExchangeDone) - before, 20U) << "a link check and a list for each";
    EXPECT_EQ(Count(plc::Cause::kLoggedIn), 1U);
}

} // namespace
