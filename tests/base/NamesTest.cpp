#include "base/Names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

TEST(SameName, IsOneWhateverTheCaseOfItsLetters) {
    EXPECT_TRUE(base::sameName("Array_1", "aRRAY_1"));
    EXPECT_FALSE(base::sameName("Array_1", "Array_10"));
    EXPECT_FALSE(base::sameName("", "a"));
    EXPECT_FALSE(base::sameName("@[", "`{")) << "only letters have a case";
}

TEST(SimilarNames, FindSlipsOfTheKeyboard) {
    Texts const names{"PLC_PRG.Counter", "PLC_PRG.Pieces", "PLC_PRG.Count"};
    EXPECT_THAT(base::similarNames("PLC_PRG.Conter", names), ElementsAre("PLC_PRG.Counter", "PLC_PRG.Count"));
    EXPECT_THAT(base::similarNames("Counter", names), ElementsAre("PLC_PRG.Counter"))
        << "the program's name is easily left out";
    EXPECT_THAT(base::similarNames("Conter", names), ElementsAre("PLC_PRG.Counter")) << "a slip in the rest of it";
    EXPECT_THAT(base::similarNames("Zzz", names), ElementsAre());
}

TEST(SimilarNames, TakeSwappedNeighboursForOneSlip) {
    Texts const names{"read", "write", "trace"};
    EXPECT_THAT(base::similarNames("raed", names), ElementsAre("read"));
    EXPECT_THAT(base::similarNames("raedx", names), ElementsAre()) << "two slips are too many for five letters";
    EXPECT_THAT(base::similarNames("rtace", names), ElementsAre("trace"));
    EXPECT_THAT(base::similarNames("daer", names), ElementsAre()) << "these are not neighbours";
}

TEST(SimilarNames, AreSaidAsAQuestion) {
    EXPECT_EQ(base::didYouMean("bauds", Texts{"baud", "port"}), "; did you mean baud?");
    EXPECT_EQ(base::didYouMean("xyz", Texts{"baud", "port"}), "");
}

TEST(OrList, ReadsAsEnglish) {
    EXPECT_EQ(base::orList(Texts{}), "");
    EXPECT_EQ(base::orList(Texts{"a"}), "a");
    EXPECT_EQ(base::orList(Texts{"a", "b"}), "a or b");
    EXPECT_EQ(base::orList(Texts{"a", "b", "c"}), "a, b or c");
    EXPECT_EQ(base::andList(Texts{"a", "b", "c"}), "a, b and c");
}

} // namespace
