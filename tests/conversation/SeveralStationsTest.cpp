#include "tests/support/ConversationTest.h"

#include <random>
#include <string>

/** Several stations with different programs, reached through couplers, on one line. */
namespace {

using namespace velktest;

/** Stations 1 (Intel), 2 (Motorola, two levels) and 3 (Intel); the same names at different places in each. */
class SeveralStationsTest : public ConversationTest {
protected:
    void SetUp() override {
        stations.framing = plc::Framing::kRouted;
        for (int node = 1; node <= 3; ++node) {
            stations.stations.push_back(Station(node));
        }
        config.Set("protType", "ABB_RS232_AC").Set("RoutingLevels", "1").Set("CouplerLV1", "1");
        config.Node(1, "ChannelLV1", "1");
        config.Node(2, "ChannelLV1", "2")
            .Node(2, "RoutingLevels", "2")
            .Node(2, "CouplerLV2", "4")
            .Node(2, "ChannelLV2", "5")
            .Node(2, "AddressLV2", "1.2.3.4")
            .Node(2, "BlockSize", "500")
            .Node(2, "model", "Motorola");
        config.Node(3, "ChannelLV1", "3");
        Begin(stations, config);
    }

    static plc::StationDescription Station(int node) {
        plc::StationDescription station;
        station.name = "plc" + std::to_string(node);
        station.route.levels = node == 2 ? 2 : 1;
        station.route.level[0] = {1, node, {}};
        if (node == 2) {
            station.route.level[1] = {4, 5, {1, 2, 3, 4}};
            station.blockSize = 500;
            station.byteOrder = plc::ByteOrder::kBig;
        }
        station.program.projectId = 100U + static_cast<std::uint32_t>(node);
        for (std::uint32_t i = 0; i < kVariables; ++i) {
            station.program.variables.push_back(
                {.name = "V" + std::to_string(i),
                 .type = "DINT",
                 .area = static_cast<std::uint16_t>(i % 3),
                 .offset = 4 * ((i * 7 + static_cast<std::uint32_t>(node) * 31) % 101)});
        }
        return station;
    }

    static std::string Address(int node, std::uint32_t variable) {
        return std::to_string(node) + "?V" + std::to_string(variable) + "?M?900?int";
    }

    plc::Station& Plc(int node) { return line->station("plc" + std::to_string(node)); }

    /** Sets the variable in its PLC and reads it through the driver. */
    void ExpectReadable(ITag* tag, int node, std::uint32_t variable, int value) {
        Plc(node).setValue("V" + std::to_string(variable), value);
        ExpectNumber<std::int32_t>(tag, value);
    }

    static constexpr std::uint32_t kVariables = 30;
    plc::LineDescription stations;
    ConfigText config;
};

TEST_F(SeveralStationsTest, EveryVariableOfEveryStationInAnyOrder) {
    std::mt19937 random(5);
    for (int i = 0; i < 600; ++i) {
        int const node = static_cast<int>(random() % 3) + 1;
        auto const variable = static_cast<std::uint32_t>(random() % kVariables);
        int const value = static_cast<int>(random());
        ITag* const tag = Tag(Address(node, variable)); // each time a tag that must be bound
        if (random() % 2 == 0) {
            ExpectReadable(tag, node, variable, value);
        } else {
            ASSERT_TRUE(Write({tag}, HostValue<std::int32_t>(value))) << driver->GetLastErrorString();
            EXPECT_EQ(Plc(node).get<int>("V" + std::to_string(variable)), value);
        }
        driver->FreeTag(tag);
    }
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 3U) << "each file came over the line once";
    ExpectNoComplaints();
}

TEST_F(SeveralStationsTest, SwitchLogsOutOfOneAndInToTheOther) {
    ExpectReadable(Tag(Address(1, 0)), 1, 0, 1);
    EXPECT_TRUE(Plc(1).loggedIn());
    ExpectReadable(Tag(Address(2, 0)), 2, 0, 2);
    EXPECT_FALSE(Plc(1).loggedIn());
    EXPECT_TRUE(Plc(2).loggedIn());
    ExpectReadable(Tag(Address(3, 0)), 3, 0, 3);
    EXPECT_FALSE(Plc(2).loggedIn());
    EXPECT_TRUE(Plc(3).loggedIn());
    EXPECT_EQ(Count(plc::Cause::kLoggedOut), 2U);
    ExpectNoComplaints();
}

TEST_F(SeveralStationsTest, StationThatDiesWhileLoggedInBlocksTheOthersForFiveCalls) {
    ITag* const one = Tag(Address(1, 0));
    ITag* const two = Tag(Address(2, 0));
    ExpectReadable(one, 1, 0, 1);
    ExpectReadable(two, 2, 0, 2);
    Plc(2).faults().add({.kind = plc::FaultKind::kSilent});
    for (int call = 0; call < 5; ++call) {
        EXPECT_FALSE(Read({one}).ok) << call;
    }
    ExpectReadable(one, 1, 0, 3);
    // From now on only the calls to the dead station itself fail.
    for (int round = 0; round < 10; ++round) {
        EXPECT_FALSE(Read({two}).ok);
        ExpectReadable(one, 1, 0, round);
        ExpectReadable(Tag(Address(3, 5)), 3, 5, round);
    }
    Plc(2).faults().clear();
    port->Wait(std::chrono::seconds(5));
    ExpectReadable(two, 2, 0, 4);
    ExpectReadable(one, 1, 0, 5);
    ExpectNoComplaints();
}

TEST_F(SeveralStationsTest, ProgramChangeOfOneStationLeavesTheOthersAlone) {
    ITag* const one = Tag(Address(1, 3));
    ITag* const two = Tag(Address(2, 3));
    ExpectReadable(one, 1, 3, 1);
    ExpectReadable(two, 2, 3, 2);
    plc::ProgramDescription changed = Station(3).program;
    changed.projectId = 999;
    Plc(2).replaceProgram(changed);
    EXPECT_FALSE(Read({two}).ok);
    ExpectReadable(one, 1, 3, 5);
    ExpectReadable(Tag(Address(1, 4)), 1, 4, 6);
    ExpectReadable(two, 2, 3, 7);
    ExpectReadable(Tag(Address(2, 4)), 2, 4, 8);
    ExpectNoComplaints();
}

TEST_F(SeveralStationsTest, DeclaredProjectOfOneNodeOnly) {
    ITag* const one = Tag(Address(1, 3));
    Tag("2?ID?PROJ_ID?102?unsignedInt");
    auto const place = Plc(2).program().program.find("V6"); // area 0
    ASSERT_TRUE(place.has_value());
    ITag* const two = Tag("2?V6?M?" + std::to_string(place->offset) + "?int");
    ExpectReadable(two, 2, 6, 1);
    ExpectReadable(one, 1, 3, 2);
    ExpectReadable(two, 2, 6, 3);
    EXPECT_EQ(line->counters(1).of(plc::Cause::kFileOpened), 0U);
    EXPECT_EQ(line->counters(0).of(plc::Cause::kFileOpened), 1U);
    ExpectNoComplaints();
}

} // namespace
