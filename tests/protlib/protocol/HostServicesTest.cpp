#include "protlib/protocol/HostServiceVariables.h"
#include "protlib/text/InterfaceNames.h"
#include "tests/support/Cancellation.h"
#include "tests/support/FakeHost.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(HostServices, AreAllAbsentBeforeTheModuleIsInitialised) {
    EXPECT_EQ(piMultiTask, nullptr);
    EXPECT_EQ(piSerialFactory, nullptr);
    EXPECT_EQ(piSocketFactory, nullptr);
    EXPECT_EQ(piCDSBuffer, nullptr);
    EXPECT_EQ(piDiag, nullptr);
    EXPECT_EQ(piPermanentStorage, nullptr);
    EXPECT_EQ(piDriverInterface, nullptr);
    EXPECT_EQ(piSmux, nullptr);
    EXPECT_EQ(piFastTimer, nullptr);
}

TEST(Yield, CallsTheSchedulerWithOneAndNothingElseOfIt) {
    velktest::FakeScheduler scheduler;
    piMultiTask = &scheduler;
    yieldToHost();
    piMultiTask = nullptr;
    EXPECT_EQ(scheduler.yields, 1);
    EXPECT_EQ(scheduler.lastAmount, 1);
    EXPECT_EQ(scheduler.foreignCalls, 0);
}

TEST(Yield, ToleratesAnAbsentScheduler) {
    ASSERT_EQ(piMultiTask, nullptr);
    yieldToHost();
    velktest::FakeScheduler scheduler;
    piMultiTask = &scheduler;
    yieldToHost();
    piMultiTask = nullptr;
    yieldToHost();
    EXPECT_EQ(scheduler.yields, 1);
}

TEST(Yield, ThreadThatTheSchedulerCancelsEnds) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    class CancellingScheduler : public velktest::FakeScheduler {
        void Yield(int /*amount*/) override { velktest::CancelThisThread(); }
    } scheduler;
    piMultiTask = &scheduler;
    EXPECT_TRUE(velktest::IsCancelledIn(yieldToHost));
    piMultiTask = nullptr;
}

TEST(InterfaceName, EqualsOnlyItselfByteForByte) {
    std::string const copy = "IProtocol";
    EXPECT_TRUE(CompareInterface("IProtocol", copy.c_str()));
    EXPECT_TRUE(CompareInterface("", ""));
    EXPECT_FALSE(CompareInterface("IProtocol", "iprotocol"));
    EXPECT_FALSE(CompareInterface("IProtocol", "IProtocol "));
    EXPECT_FALSE(CompareInterface("IProtocol", " IProtocol"));
    EXPECT_FALSE(CompareInterface("IProtocol", "IProtocol2"));
    EXPECT_FALSE(CompareInterface("IProtocol2", "IProtocol"));
    EXPECT_FALSE(CompareInterface("IProtocol", ""));
}

} // namespace
