#include "tools/velk/context/ExitCode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using velk::ExitCode;
using velk::exitCodeFor;
using velk::PortState;

ExitCode forCode(int code, PortState port = PortState::Fine) {
    return exitCodeFor({code, "a text"}, port);
}

TEST(ExitCode, NumbersAreAsDocumented) {
    EXPECT_EQ(static_cast<int>(ExitCode::Good), 0);
    EXPECT_EQ(static_cast<int>(ExitCode::ItemNotGood), 1);
    EXPECT_EQ(static_cast<int>(ExitCode::Usage), 2);
    EXPECT_EQ(static_cast<int>(ExitCode::Port), 3);
    EXPECT_EQ(static_cast<int>(ExitCode::Silent), 4);
    EXPECT_EQ(static_cast<int>(ExitCode::Refused), 5);
    EXPECT_EQ(static_cast<int>(ExitCode::Interrupted), 130);
}

TEST(ExitCode, FollowsTheDriversCodes) {
    EXPECT_EQ(forCode(0), ExitCode::Port);
    EXPECT_EQ(forCode(-4), ExitCode::Silent);
    EXPECT_EQ(forCode(-6), ExitCode::Refused);
    EXPECT_EQ(forCode(1), ExitCode::Refused) << "a refused login leaves no reason behind";
    EXPECT_EQ(forCode(-1), ExitCode::Usage);
    EXPECT_EQ(forCode(-3), ExitCode::Usage);
    EXPECT_EQ(forCode(-9), ExitCode::ItemNotGood);
    EXPECT_EQ(forCode(base::kHostFailure), ExitCode::Usage);
}

TEST(ExitCode, ADeadPortExplainsEverythingBehindIt) {
    for (int const code : {0, 1, -1, -4, -6, base::kHostFailure}) {
        EXPECT_EQ(forCode(code, PortState::Dead), ExitCode::Port) << code;
        EXPECT_EQ(forCode(code, PortState::Interrupted), ExitCode::Interrupted) << code;
    }
}

TEST(ExitCode, SomeOfTheDriversTextsAreAboutOneItem) {
    EXPECT_EQ(exitCodeFor({-6, "One of the values has bad quality"}, PortState::Fine), ExitCode::ItemNotGood);
    EXPECT_EQ(exitCodeFor({-1, "1?X?M?0?int not present in Symbols files"}, PortState::Fine), ExitCode::ItemNotGood);
    EXPECT_EQ(exitCodeFor({-6, "One of the values has bad quality"}, PortState::Dead), ExitCode::Port);
}

TEST(ExitCode, AResponseOfAWrongLengthIsAWrongAnswerOfThePlcAndNoMatterOfTheConfiguration) {
    EXPECT_EQ(exitCodeFor({-1, "Rx Buffer dimension exceeded"}, PortState::Fine), ExitCode::Refused);
    EXPECT_EQ(exitCodeFor({-1, "Rx Buffer dimension exceeded"}, PortState::Dead), ExitCode::Port);
    EXPECT_EQ(exitCodeFor({-1, "Tx Buffer dimension exceeded"}, PortState::Fine), ExitCode::Usage);
}

TEST(ExitCode, OfItemsIsThatOfTheLineOnlyWhenNoneIsGood) {
    auto const of = [](std::vector<ExitCode> const& items) { return velk::exitCodeOfItems(items); };
    EXPECT_EQ(of({}), ExitCode::Good);
    EXPECT_EQ(of({ExitCode::Good, ExitCode::Good}), ExitCode::Good);
    EXPECT_EQ(of({ExitCode::Good, ExitCode::ItemNotGood}), ExitCode::ItemNotGood);
    EXPECT_EQ(of({ExitCode::Good, ExitCode::Silent}), ExitCode::ItemNotGood);
    EXPECT_EQ(of({ExitCode::Silent, ExitCode::Silent}), ExitCode::Silent);
    EXPECT_EQ(of({ExitCode::ItemNotGood, ExitCode::Silent, ExitCode::Refused}), ExitCode::Silent);
    EXPECT_EQ(of({ExitCode::Good, ExitCode::Port}), ExitCode::Port) << "nothing works without a port";
    EXPECT_EQ(of({ExitCode::Good, ExitCode::Interrupted}), ExitCode::Interrupted);
}

TEST(ExitCode, TheMoreTellingOneCounts) {
    EXPECT_EQ(velk::worse(ExitCode::Good, ExitCode::ItemNotGood), ExitCode::ItemNotGood);
    EXPECT_EQ(velk::worse(ExitCode::Interrupted, ExitCode::Port), ExitCode::Interrupted);
    EXPECT_EQ(velk::worse(ExitCode::Refused, ExitCode::Silent), ExitCode::Silent);
    EXPECT_EQ(velk::worse(ExitCode::Port, ExitCode::Usage), ExitCode::Port);
}

} // namespace
