#include "protlib/safety/NoThrow.h"

#include "tests/support/Cancellation.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>

namespace {

using ProtUtilsN::contain;
using ProtUtilsN::noThrow;
using ProtUtilsN::Outcome;

TEST(Contain, StepThatReturnsIsDone) {
    int runs = 0;
    EXPECT_EQ(contain([&] { ++runs; }), Outcome::Done);
    EXPECT_EQ(runs, 1);
}

TEST(Contain, ShortMemoryIsToldFromWhatElseTheHostThrows) {
    EXPECT_EQ(contain([] { throw std::bad_alloc(); }), Outcome::OutOfMemory);
    EXPECT_EQ(contain([] { throw std::bad_array_new_length(); }), Outcome::OutOfMemory);
    EXPECT_EQ(contain([] { throw std::runtime_error("no device"); }), Outcome::HostException);
    EXPECT_EQ(contain([] { throw 7; }), Outcome::HostException);
}

TEST(NoThrow, AnswersTheResultOfTheStepOrTheFallback) {
    EXPECT_EQ(noThrow([] { return 3; }, 5), 3);
    EXPECT_EQ(noThrow([]() -> int { throw 7; }, 5), 5);
    EXPECT_EQ(*noThrow([] { return std::make_unique<int>(3); }, nullptr), 3);
    EXPECT_EQ(noThrow([]() -> std::unique_ptr<int> { throw std::bad_alloc(); }, nullptr), nullptr);
}

TEST(NoThrow, SaysWhetherAStepWithoutResultCameToItsEnd) {
    EXPECT_TRUE(noThrow([] {}));
    EXPECT_FALSE(noThrow([] { throw 7; }));
    EXPECT_FALSE(noThrow([] { throw std::bad_alloc(); }));
}

TEST(Contain, CancelledThreadEndsAndTakesNothingWithIt) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    bool wentOn = false;
    auto const owned = std::make_shared<int>(0);
    EXPECT_TRUE(velktest::IsCancelledIn([&] {
        contain([&, copy = owned] { velktest::CancelThisThread(); });
        wentOn = true;
    }));
    EXPECT_FALSE(wentOn);
    EXPECT_EQ(owned.use_count(), 1);
}

TEST(NoThrow, CancelledThreadEndsAndTakesNothingWithIt) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    EXPECT_TRUE(velktest::IsCancelledIn([] { noThrow([] { velktest::CancelThisThread(); }); }));
    EXPECT_TRUE(velktest::IsCancelledIn([] {
        noThrow(
            [] {
                velktest::CancelThisThread();
                return 3;
            },
            5);
    }));
}

} // namespace
