#include "tools/velk/terminal/Resumption.h"

#include "tools/velk/terminal/Interrupt.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

TEST(Resumption, IsTakenOnceForEachTimeThatTheProgramGoesOn) {
    velk::Resumption resumption;
    EXPECT_FALSE(resumption.take());
    for (int time = 0; time < 2; ++time) {
        ASSERT_EQ(raise(SIGCONT), 0);
        EXPECT_TRUE(resumption.take()) << time;
        EXPECT_FALSE(resumption.take()) << time;
    }
}

TEST(Resumption, EndsAWaitForInputThatDoesNotCome) {
    velk::Interrupt interrupt;
    velk::Resumption resumption;
    ASSERT_EQ(raise(SIGCONT), 0);
    EXPECT_TRUE(interrupt.waitForEither(-1, resumption.descriptor()));
    interrupt.request();
    EXPECT_FALSE(interrupt.waitForEither(-1, resumption.descriptor())) << "the end comes before all else";
}

TEST(Resumption, GivesTheSignalBack) {
    { velk::Resumption const resumption; }
    struct sigaction now {};
    ASSERT_EQ(sigaction(SIGCONT, nullptr, &now), 0);
    EXPECT_EQ(now.sa_handler, SIG_DFL);
}

} // namespace
