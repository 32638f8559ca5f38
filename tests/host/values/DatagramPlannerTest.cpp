#include "host/values/DatagramPlanner.h"

#include "tests/host/FakeProtocol.h"

#include <gtest/gtest.h>

#include <deque>

namespace hosttest {
namespace {

class DatagramPlanner : public testing::Test {
protected:
    FakeTag& add(int node, int length = 2, ICU_Type type = ICU_SHORT) {
        tags.emplace_back("t" + std::to_string(tags.size()), node, type, length);
        list.push_back(&tags.back());
        return tags.back();
    }

    /** The plan as text: "1[0 2] 2[1]"; a "!" after a tag that needs a single call. */
    std::string plan(host::Purpose purpose = host::Purpose::Read) {
        std::string text;
        for (auto const& datagram : host::planDatagrams(protocol, list, purpose)) {
            text += (text.empty() ? "" : " ") + std::to_string(datagram.node) + "[";
            for (std::size_t i = 0; i < datagram.items.size(); ++i) {
                text += (i > 0 ? " " : "") + std::to_string(datagram.items[i]);
            }
            text += datagram.single ? "]!" : "]";
        }
        return text;
    }

    FakeProtocol protocol;
    std::deque<FakeTag> tags;
    std::vector<ITag*> list;
};

TEST_F(DatagramPlanner, NoTagsNeedNoDatagram) {
    EXPECT_EQ(plan(), "");
}

TEST_F(DatagramPlanner, TagsOfOneNodeShareADatagramInTheCallersOrder) {
    add(1);
    add(1);
    add(1);
    EXPECT_EQ(plan(), "1[0 1 2]");
    EXPECT_EQ(plan(host::Purpose::Write), "1[0 1 2]");
}

TEST_F(DatagramPlanner, NodesAreServedOneAfterTheOtherInOrderOfAppearance) {
    protocol.maxItems = 2;
    for (int const node : {2, 1, 2, 1, 2}) {
        add(node);
    }
    EXPECT_EQ(plan(), "2[0 2] 2[4] 1[1 3]");
}

TEST_F(DatagramPlanner, TheItemLimitIsKept) {
    protocol.maxItems = 3;
    for (int i = 0; i < 7; ++i) {
        add(1);
    }
    EXPECT_EQ(plan(), "1[0 1 2] 1[3 4 5] 1[6]");
}

TEST_F(DatagramPlanner, TheByteLimitCountsPackedLengths) {
    protocol.maxLength = 10;
    add(1, 6);
    add(1, 6);
    add(1, 32, ICU_BOOLEAN_ARRAY).packed = 4;
    EXPECT_EQ(plan(), "1[0 2] 1[1]") << "six and four bytes fill the first one";
}

TEST_F(DatagramPlanner, AReadFillsGapsAndAWriteKeepsItsOrder) {
    protocol.maxLength = 10;
    add(1, 6);
    add(1, 8);
    add(1, 4);
    EXPECT_EQ(plan(host::Purpose::Read), "1[0 2] 1[1]");
    EXPECT_EQ(plan(host::Purpose::Write), "1[0] 1[1] 1[2]") << "a later write must not overtake an earlier one";
}

TEST_F(DatagramPlanner, ATagThatCoexistsWithNothingGetsADatagramOfItsOwn) {
    add(1);
    add(1, 4, ICU_UNSIGNED_INT).alone = true;
    add(1);
    add(1, 4, ICU_UNSIGNED_INT).alone = true;
    EXPECT_EQ(plan(), "1[0 2] 1[1] 1[3]");
    EXPECT_EQ(plan(host::Purpose::Write), "1[0] 1[1]! 1[2] 1[3]!") << "written through the single call, in order";
}

TEST_F(DatagramPlanner, ManyTagsThatGoAloneDoNotPartTheOthers) {
    add(1);
    for (int i = 0; i < 10; ++i) {
        add(1, 4, ICU_UNSIGNED_INT).alone = true;
    }
    add(1);
    EXPECT_EQ(plan(), "1[0 11] 1[1] 1[2] 1[3] 1[4] 1[5] 1[6] 1[7] 1[8] 1[9] 1[10]");
}

TEST_F(DatagramPlanner, ATagTooLongForADatagramStillGetsOne) {
    protocol.maxLength = 10;
    add(1, 100);
    add(1, 2);
    EXPECT_EQ(plan(), "1[0] 1[1]");
}

TEST_F(DatagramPlanner, EqualTagsAndEqualAddressesAllSurvive) {
    add(1, 4, ICU_INT).name = "1?PLC_PRG.x?M?0?int";
    add(1, 4, ICU_FLOAT).name = "1?PLC_PRG.x?M?0?float";
    list.push_back(list[0]);
    EXPECT_EQ(plan(), "1[0 1 2]");
}

TEST_F(DatagramPlanner, AMissingTagDoesNotSpoilTheOthers) {
    add(1);
    list.push_back(nullptr);
    add(1);
    EXPECT_EQ(plan(), "1[0 2]");
    list = {nullptr};
    EXPECT_EQ(plan(), "");
}

TEST_F(DatagramPlanner, ADriverWithoutDatagramsIsAskedTagByTag) {
    add(1);
    add(1);
    protocol.maxItems = 0;
    EXPECT_EQ(plan(), "1[0]! 1[1]!");
    protocol.maxItems = 90;
    protocol.writesDatagrams = false;
    EXPECT_EQ(plan(host::Purpose::Read), "1[0 1]");
    EXPECT_EQ(plan(host::Purpose::Write), "1[0]! 1[1]!");
}

TEST_F(DatagramPlanner, EveryTagOfALongListIsInExactlyOneDatagram) {
    protocol.maxLength = 100;
    for (int i = 0; i < 1000; ++i) {
        add(i % 3, 1 + (i * 37) % 90);
    }
    std::vector<int> seen(list.size(), 0);
    for (auto const& datagram : host::planDatagrams(protocol, list, host::Purpose::Read)) {
        int length = 0;
        for (std::size_t const item : datagram.items) {
            ++seen.at(item);
            length += tags.at(item).packed;
            EXPECT_EQ(tags.at(item).node, datagram.node);
        }
        EXPECT_LE(length, 100);
        EXPECT_TRUE(std::is_sorted(datagram.items.begin(), datagram.items.end()));
    }
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 1), 1000);
}

} // namespace
} // namespace hosttest
