#include "base/Signals.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using base::Signals;

constexpr std::int64_t kVeryLong = 3'600'000'000; // microseconds; a test that really waited this long would be noticed

/** These signals may be ignored when the tests are started in the background. */
class SignalsTest : public testing::Test {
protected:
    SignalsTest() {
        for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGCONT}) {
            std::signal(signal, SIG_DFL);
        }
    }
};

/** A pipe that is closed at the end of the test. */
struct Pipe {
    Pipe() {
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        reading = base::FileDescriptor(ends[0]);
        writing = base::FileDescriptor(ends[1]);
    }
    base::FileDescriptor reading;
    base::FileDescriptor writing;
};

TEST_F(SignalsTest, TheEndIsNotRequestedByItself) {
    Signals const signals;
    EXPECT_FALSE(signals.requested());
}

TEST_F(SignalsTest, ATimeThatIsOverIsNotWaitedFor) {
    Signals signals;
    Pipe const pipe;
    EXPECT_TRUE(signals.pause(-1));
    EXPECT_TRUE(signals.pause(0));
    EXPECT_TRUE(signals.waitForInput(pipe.reading.get(), -1));
}

TEST_F(SignalsTest, ASignalRequestsTheEndForGood) {
    Signals signals;
    ASSERT_EQ(raise(SIGINT), 0);
    EXPECT_TRUE(signals.requested());
    EXPECT_TRUE(signals.requested()) << "asking does not take it away";
    EXPECT_FALSE(signals.pause(kVeryLong)) << "nobody waits any more";
}

TEST_F(SignalsTest, EverySignalOfTheUserCounts) {
    for (int const signal : {SIGTERM, SIGHUP}) {
        Signals const signals;
        ASSERT_EQ(raise(signal), 0);
        EXPECT_TRUE(signals.requested()) << signal;
    }
}

TEST_F(SignalsTest, ASignalThatTheProgramWasStartedWithoutStaysIgnored) {
    ASSERT_NE(std::signal(SIGHUP, SIG_IGN), SIG_ERR);
    {
        Signals const signals;
        ASSERT_EQ(raise(SIGHUP), 0);
        EXPECT_FALSE(signals.requested()) << "nohup";
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST_F(SignalsTest, EndsWaitingForInput) {
    Signals signals;
    Pipe const pipe;
    EXPECT_TRUE(signals.waitForInput(pipe.reading.get(), 0)) << "the time is over";
    ASSERT_EQ(write(pipe.writing.get(), "x", 1), 1);
    EXPECT_TRUE(signals.waitForInput(pipe.reading.get()));
    signals.request();
    EXPECT_FALSE(signals.waitForInput(pipe.reading.get())) << "the end comes before the input";
}

TEST_F(SignalsTest, AResumptionIsTakenOnceForEachTimeThatTheProgramGoesOn) {
    Signals signals;
    EXPECT_FALSE(signals.takeResumption());
    for (int time = 0; time < 2; ++time) {
        ASSERT_EQ(raise(SIGCONT), 0);
        EXPECT_TRUE(signals.takeResumption()) << time;
        EXPECT_FALSE(signals.takeResumption()) << time;
    }
}

TEST_F(SignalsTest, AResumptionEndsAWaitForInputThatDoesNotCome) {
    Signals signals;
    ASSERT_EQ(raise(SIGCONT), 0);
    EXPECT_TRUE(signals.waitForInputOrResumption(-1));
    signals.request();
    EXPECT_FALSE(signals.waitForInputOrResumption(-1)) << "the end comes before all else";
}

extern "C" void doNothing(int /*signal*/) {}

TEST_F(SignalsTest, GiveEverySignalBackToItsHandlerFromBefore) {
    std::signal(SIGTERM, doNothing);
    {
        Signals const signals;
        struct sigaction taken {};
        ASSERT_EQ(sigaction(SIGTERM, nullptr, &taken), 0);
        EXPECT_NE(taken.sa_handler, doNothing);
    }
    EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), doNothing);
    for (int const signal : {SIGINT, SIGHUP, SIGTSTP, SIGCONT}) {
        EXPECT_EQ(std::signal(signal, SIG_DFL), SIG_DFL) << signal;
    }
}

TEST_F(SignalsTest, AreTakenOverByOneObjectAtATime) {
    Signals signals;
    EXPECT_THROW(Signals(), std::logic_error);
    ASSERT_EQ(raise(SIGINT), 0);
    EXPECT_TRUE(signals.requested()) << "the first one goes on";
}

/** Sends itself the signals one after the other, and exits successfully if it survives. */
[[noreturn]] void receive(std::initializer_list<int> signals) {
    Signals const taken;
    for (int const signal : signals) {
        static_cast<void>(raise(signal));
    }
    std::_Exit(taken.requested() ? EXIT_SUCCESS : EXIT_FAILURE);
}

TEST_F(SignalsTest, ASecondOneEndsTheProgramAtOnce) {
    EXPECT_EXIT(receive({SIGINT}), testing::ExitedWithCode(EXIT_SUCCESS), "");
    EXPECT_EXIT(receive({SIGINT, SIGINT}), testing::KilledBySignal(SIGINT), "");
    EXPECT_EXIT(receive({SIGTERM, SIGTERM}), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EXIT(receive({SIGHUP, SIGINT}), testing::KilledBySignal(SIGINT), "");
    EXPECT_EXIT(receive({SIGINT, SIGHUP}), testing::ExitedWithCode(EXIT_SUCCESS), "")
        << "a terminal that closes may send it besides";
}

TEST_F(SignalsTest, TheTimeIsCountedInWhichTheProgramIsStopped) {
    pid_t const child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        setpgid(0, 0); // otherwise nobody could resume it, and the signal would not stop it
        Signals signals;
        bool const before = Signals::stoppedMicroseconds() == 0 && !signals.takeResumption();
        static_cast<void>(raise(SIGTSTP));
        std::_Exit(before && Signals::stoppedMicroseconds() > 0 && signals.takeResumption() ? EXIT_SUCCESS
                                                                                            : EXIT_FAILURE);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, WUNTRACED), child);
    ASSERT_TRUE(WIFSTOPPED(status)) << status;
    ASSERT_EQ(kill(child, SIGCONT), 0);
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS) << status;
}

} // namespace
