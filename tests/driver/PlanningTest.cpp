#include "tests/support/DriverTest.h"

#include <string>

/** Which tags may share a datagram. Nothing is sent over the line. */
namespace {

using namespace velktest;

class PlanningTest : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        ASSERT_TRUE(driver->Config(ConfigText().Node(2, "model", "Motorola").Build().c_str()));
    }

    void TearDown() override {
        EXPECT_TRUE(port.writes.empty());
        DriverTest::TearDown();
    }

    ITag* String(int length) { return Tag("1?A?M?0?string-" + std::to_string(length)); }
};

TEST_F(PlanningTest, FixedAnswers) {
    ITag* const tag = Tag("1?A?M?0?short");
    EXPECT_FALSE(driver->CanBeOptimized(tag, tag, false));
    EXPECT_FALSE(driver->CanBeOptimized(tag, tag, true));
    EXPECT_TRUE(driver->CanWriteDatagrams(tag));
    EXPECT_EQ(driver->GetMaxTm(tag), 0);
    EXPECT_FALSE(driver->NeedsReadBeforeWrite(tag));
    EXPECT_FALSE(driver->CanReadBitBlock(tag));
    EXPECT_FALSE(driver->CanWriteBitBlock(tag));
    EXPECT_EQ(driver->MaxUnusedGap(tag), 16777215);
}

TEST_F(PlanningTest, LimitsOfBothModels) {
    for (char const* address : {"1?A?M?0?short", "2?A?M?0?short", "300?A?M?0?short"}) {
        EXPECT_EQ(driver->MaxDatagramItems(Tag(address)), 90);
        EXPECT_EQ(driver->MaxDatagramLength(Tag(address)), 1024);
    }
}

TEST_F(PlanningTest, NodeOfATag) {
    EXPECT_EQ(driver->GetNodeID(Tag("1?A?M?0?short")), 1);
    EXPECT_EQ(driver->GetNodeID(Tag("?A?M?0?short")), 0);
    EXPECT_EQ(driver->GetNodeID(Tag("0x10?A?M?0?short")), 16);
    EXPECT_EQ(driver->GetNodeID(Tag("1?ID?PROJ_ID?1?unsignedInt")), 1);
}

TEST_F(PlanningTest, OnlyTagsOfOneNodeShareADatagram) {
    ITag* const one = Tag("1?A?M?0?short");
    EXPECT_TRUE(driver->CanCoexistInDatagram(one, Tag("1?B?I?0?int")));
    EXPECT_TRUE(driver->CanCoexistInDatagram(one, one));
    EXPECT_FALSE(driver->CanCoexistInDatagram(one, Tag("2?A?M?0?short")));
    EXPECT_FALSE(driver->CanCoexistInDatagram(Tag("2?A?M?0?short"), one));
}

TEST_F(PlanningTest, ProjectIdentifierSharesADatagramWithNothing) {
    ITag* const one = Tag("1?A?M?0?short");
    ITag* const id = Tag("1?ID?PROJ_ID?7?unsignedInt");
    EXPECT_FALSE(driver->CanCoexistInDatagram(one, id));
    EXPECT_FALSE(driver->CanCoexistInDatagram(id, one));
    EXPECT_FALSE(driver->CanCoexistInDatagram(id, id));
}

TEST_F(PlanningTest, JoiningADatagramTestsNodeItemsAndLength) {
    std::vector<ITag const*> const tags(90, Tag("1?A?M?0?byte"));
    ITag* const same = Tag("1?B?M?0?byte");
    ITag* const other = Tag("2?B?M?0?byte");
    EXPECT_TRUE(driver->CanAddToDatagram(tags.data(), 1, same));
    EXPECT_TRUE(driver->CanAddToWriteDatagram(tags.data(), 1, same));
    EXPECT_FALSE(driver->CanAddToDatagram(tags.data(), 1, other));
    EXPECT_FALSE(driver->CanAddToWriteDatagram(tags.data(), 1, other));
    EXPECT_TRUE(driver->CanAddToDatagram(tags.data(), 89, same));
    EXPECT_TRUE(driver->CanAddToWriteDatagram(tags.data(), 89, same));
    EXPECT_FALSE(driver->CanAddToDatagram(tags.data(), 90, same));
    EXPECT_FALSE(driver->CanAddToWriteDatagram(tags.data(), 90, same));
}

TEST_F(PlanningTest, JoiningADatagramCountsPackedBytes) {
    ITag const* const tags[] = {String(1000), Tag("1?A?M?0.6?boolean-12")}; // 1000 + 3
    EXPECT_TRUE(driver->CanAddToDatagram(tags, 2, String(21)));
    EXPECT_TRUE(driver->CanAddToWriteDatagram(tags, 2, String(21)));
    EXPECT_FALSE(driver->CanAddToDatagram(tags, 2, String(22)));
    EXPECT_FALSE(driver->CanAddToWriteDatagram(tags, 2, String(22)));
}

TEST_F(PlanningTest, EmptyDatagramStillLooksAtItsFirstTag) {
    ITag const* const tags[] = {Tag("2?A?M?0?byte")};
    EXPECT_FALSE(driver->CanAddToDatagram(tags, 0, Tag("1?A?M?0?byte")));
    EXPECT_TRUE(driver->CanAddToDatagram(tags, 0, Tag("2?B?M?0?byte")));
    EXPECT_FALSE(driver->CanAddToWriteDatagram(tags, 0, Tag("1?A?M?0?byte")));
    EXPECT_TRUE(driver->CanAddToWriteDatagram(tags, 0, Tag("2?B?M?0?byte")));
}

TEST_F(PlanningTest, HugeLengthsDoNotWrapAround) {
    ITag const* const tags[] = {String(2147483647), String(2147483647)};
    EXPECT_FALSE(driver->CanAddToDatagram(tags, 2, String(10)));
    EXPECT_FALSE(driver->CanAddToWriteDatagram(tags, 2, String(10)));
}

TEST_F(PlanningTest, OrderOfTags) {
    ITag* const low = Tag("1?A?M?10?short");
    ITag* const high = Tag("1?A?M?12?short");
    EXPECT_TRUE(driver->IsBefore(low, high));
    EXPECT_FALSE(driver->IsBefore(high, low));
    EXPECT_FALSE(driver->IsBefore(low, low));
    EXPECT_TRUE(driver->IsAdjacent(high, low)) << "the first begins where the second ends";
    EXPECT_FALSE(driver->IsAdjacent(low, high));
    EXPECT_TRUE(driver->IsAdjacent(Tag("1?A?MB?13?boolean"), Tag("1?A?MB?12?boolean")));
}

} // namespace
