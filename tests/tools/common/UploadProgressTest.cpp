#include "tools/common/UploadProgress.h"

#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using tools::UploadProgress;
using velktest::Bytes;
using velktest::Hex;

/** Frames of the fetching of a file, as they pass on the line. */
class Uploading : public testing::Test {
protected:
    void sent(char const* bytes) { pass(host::FrameDirection::Sent, Hex(bytes)); }
    void came(char const* bytes) { pass(host::FrameDirection::Received, Hex(bytes)); }

    UploadProgress progress{0, nullptr};

private:
    void pass(host::FrameDirection direction, Bytes const& bytes) {
        ++time_;
        progress.onFrame({direction, bytes, time_, time_});
    }

    std::int64_t time_ = 0;
};

constexpr char const* kOpen = "AA AA 10 00 01 00 00 01 | 31 00 0D 00 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00";
constexpr char const* kNext = "AA AA 02 00 01 00 00 01 | 32 00";
constexpr char const* kLogout = "AA AA 02 00 01 00 00 01 | 02 00";

TEST_F(Uploading, IsDoneWithTheLastByteOfTheLastPiece) {
    sent(kOpen);
    came("AA AA 08 00 01 00 00 01 | 00 00 01 00 02 00 | 11 22");
    EXPECT_FALSE(progress.upload().done) << "more follows";
    sent(kNext);
    came("AA AA 08 00 01 00 00 00 | 00 00 00 00 03 00 | 33 44");
    EXPECT_FALSE(progress.upload().done) << "a block of the last piece is missing";
    came("AA AA 01 00 02 00 00 01 | 55");
    EXPECT_TRUE(progress.upload().done);
    EXPECT_EQ(progress.upload().bytes, 5U);
    EXPECT_EQ(progress.upload().pieces, 2U);
}

TEST_F(Uploading, OneThatBreaksOffIsNotDone) {
    sent(kOpen);
    came("AA AA 08 00 01 00 00 01 | 00 00 01 00 02 00 | 11 22");
    sent(kLogout);
    came("AA AA 02 00 01 00 00 01 | 00 00");
    EXPECT_FALSE(progress.upload().done);
    EXPECT_EQ(progress.upload().bytes, 2U);
}

TEST_F(Uploading, ARefusalIsNoFile) {
    sent(kOpen);
    came("AA AA 06 00 01 00 00 01 | 05 00 00 00 00 00");
    EXPECT_FALSE(progress.upload().done);
    EXPECT_EQ(progress.upload().bytes, 0U);
}

TEST_F(Uploading, BothByteOrdersAreRead) {
    sent("AA AA 00 10 00 01 00 01 | 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00");
    came("AA AA 00 08 00 01 00 01 | 00 00 00 01 00 02 | 11 22");
    EXPECT_FALSE(progress.upload().done);
    sent("AA AA 00 02 00 01 00 01 | 32 00");
    came("AA AA 00 07 00 01 00 01 | 00 00 00 00 00 01 | 33");
    EXPECT_TRUE(progress.upload().done);
    EXPECT_EQ(progress.upload().bytes, 3U);
}

} // namespace
