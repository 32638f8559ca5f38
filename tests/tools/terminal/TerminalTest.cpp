#include "tools/velk/terminal/Terminal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace {

using velk::StreamKinds;
using velk::Terminal;

constexpr StreamKinds kTerminals{true, true, true, true, true};
constexpr StreamKinds kDumb{true, true, true, false, false};

/** What goes to standard error; both streams lead to files, of which no width is known. */
template <typename Action>
std::string errorOf(Action const& action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    testing::internal::GetCapturedStdout();
    return testing::internal::GetCapturedStderr();
}

TEST(StatusLine, IsReplacedByTheNextOneAndTakenAwayAtTheEnd) {
    EXPECT_EQ(errorOf([] {
                  Terminal terminal{kTerminals};
                  terminal.status("one");
                  terminal.status("two");
              }),
              "one\r\x1B[Ktwo\r\x1B[K");
}

TEST(StatusLine, LeavesTheLastColumnFreeAndRoomForTheEchoOfCtrlC) {
    EXPECT_EQ(errorOf([] { Terminal{kTerminals}.status(std::string(200, 'x')); }), std::string(77, 'x') + "\r\x1B[K");
}

TEST(StatusLine, MakesRoomForALineThatStays) {
    EXPECT_EQ(errorOf([] {
                  Terminal terminal{kTerminals};
                  terminal.status("one");
                  terminal.note("stays");
              }),
              "one\r\x1B[Kstays\n");
}

TEST(StatusLine, IsNotThereWhereLinesCannotBeReplaced) {
    EXPECT_EQ(errorOf([] { Terminal{kDumb}.status("one"); }), "");
    EXPECT_EQ(errorOf([] { Terminal{StreamKinds{}}.status("one"); }), "");
}

/** TERM for the time of a test. */
class KindOfTerminal : public testing::Test {
protected:
    void TearDown() override { set(before_ ? before_->c_str() : nullptr); }

    static void set(char const* value) {
        if (value != nullptr) {
            setenv("TERM", value, 1);
        } else {
            unsetenv("TERM");
        }
    }

private:
    static std::optional<std::string> now() {
        char const* const value = std::getenv("TERM");
        return value == nullptr ? std::nullopt : std::optional<std::string>(value);
    }

    std::optional<std::string> before_ = now();
};

TEST_F(KindOfTerminal, ADumbOneIsNotDrawnOn) {
    for (char const* const dumb : {"dumb", static_cast<char const*>(nullptr)}) {
        set(dumb);
        EXPECT_FALSE(StreamKinds::ofThisProcess().canRedraw);
        EXPECT_FALSE(StreamKinds::ofThisProcess().coloursWanted);
    }
    set("xterm");
    EXPECT_TRUE(StreamKinds::ofThisProcess().canRedraw);
}

} // namespace
