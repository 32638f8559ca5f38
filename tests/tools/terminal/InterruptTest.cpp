#include "tools/velk/terminal/Interrupt.h"

#include "tools/velk/context/Observers.h"

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

constexpr std::int64_t kVeryLong = 3'600'000'000; // microseconds; a test that waited for it would be seen

TEST(Interrupt, IsNotRequestedByItself) {
    velk::Interrupt const interrupt;
    EXPECT_FALSE(interrupt.requested());
}

TEST(Interrupt, ATimeThatIsOverIsNotWaitedFor) {
    velk::Interrupt interrupt;
    EXPECT_TRUE(interrupt.pause(-1));
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_TRUE(interrupt.waitForInput(ends[0], -1));
    close(ends[0]);
    close(ends[1]);
}

/** Whoever starts the tests in the background may have these signals ignored. */
void takeSignals() {
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_DFL);
    }
}

TEST(Interrupt, ASignalRequestsTheEndForGood) {
    takeSignals();
    velk::Interrupt interrupt;
    ASSERT_EQ(raise(SIGINT), 0);
    EXPECT_TRUE(interrupt.requested());
    EXPECT_TRUE(interrupt.requested()) << "asking does not take it away";
    EXPECT_FALSE(interrupt.pause(kVeryLong)) << "nobody waits any more";
}

TEST(Interrupt, EverySignalOfTheUserCounts) {
    takeSignals();
    for (int const signal : {SIGTERM, SIGHUP}) {
        velk::Interrupt const interrupt;
        ASSERT_EQ(raise(signal), 0);
        EXPECT_TRUE(interrupt.requested()) << signal;
    }
}

TEST(Interrupt, ASignalThatTheProgramWasStartedWithoutStaysIgnored) {
    ASSERT_NE(std::signal(SIGHUP, SIG_IGN), SIG_ERR);
    {
        velk::Interrupt const interrupt;
        ASSERT_EQ(raise(SIGHUP), 0);
        EXPECT_FALSE(interrupt.requested()) << "nohup";
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST(Interrupt, EndsWaitingForInput) {
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    velk::Interrupt interrupt;
    EXPECT_TRUE(interrupt.waitForInput(ends[0], 0)) << "the time is over";
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    EXPECT_TRUE(interrupt.waitForInput(ends[0]));
    interrupt.request();
    EXPECT_FALSE(interrupt.waitForInput(ends[0])) << "the end comes before the input";
    close(ends[0]);
    close(ends[1]);
}

TEST(Interrupt, APauseWithoutTimeIsOver) {
    velk::Interrupt interrupt;
    EXPECT_TRUE(interrupt.pause(0));
}

/** Notes what it sees, or throws it. */
class Witness final : public host::PortObserver {
public:
    void onFrame(host::PortFrame const& frame) override {
        seen += static_cast<char>(frame.bytes[0]);
        if (throws) {
            throw std::runtime_error("no room");
        }
    }
    void onTimeout(std::int64_t at) override { seen += "t" + std::to_string(at); }
    void onDropped(std::span<unsigned char const> bytes, std::int64_t /*at*/) override {
        seen += "d" + std::to_string(bytes.size());
    }
    void onFault(std::string_view reason, std::int64_t /*at*/) override { seen += reason; }

    std::string seen;
    bool throws = false;
};

TEST(Observers, AllSeeEverything) {
    velk::Observers observers;
    Witness one;
    Witness other;
    one.throws = true;
    velk::Attachment const first(observers, one);
    {
        velk::Attachment const second(observers, other);
        unsigned char const bytes[] = {'a', 'b'};
        observers.onFrame({host::FrameDirection::Sent, bytes, 0, 0});
        observers.onTimeout(5);
        observers.onDropped(bytes, 0);
        observers.onFault("gone", 0);
    }
    observers.onTimeout(6);
    EXPECT_EQ(one.seen, "at5d2gonet6");
    EXPECT_EQ(other.seen, "at5d2gone") << "what the first one throws disturbs nobody, and it is detached by now";
}

} // namespace
