#include "tools/velk/line/Advice.h"

#include "tools/velk/context/ExitCode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using base::FailureKind;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using velk::advice;

TEST(Advice, SilenceIsToldFromAnAnswerThatEnds) {
    EXPECT_THAT(advice(FailureKind::Timeout, false), HasSubstr("cable"));
    EXPECT_THAT(advice(FailureKind::Timeout, true), StartsWith("Bytes were received, then nothing more"));
}

TEST(Advice, FramesThatMakeNoSenseAreOtherSettings) {
    EXPECT_THAT(advice(FailureKind::Garbled, true), HasSubstr("line speed"));
}

TEST(Advice, EachRefusalHasItsOwn) {
    EXPECT_THAT(advice(FailureKind::Coupler, true), StartsWith("Likely the coupler number"));
    EXPECT_THAT(advice(FailureKind::LoginRefused, true), HasSubstr("logged in"));
    EXPECT_THAT(advice(FailureKind::ReadRefused, true), HasSubstr("or is stopped. Try again."));
    EXPECT_THAT(advice(FailureKind::WriteRefused, true), HasSubstr("does not allow this write"));
    EXPECT_THAT(advice(FailureKind::OtherProject, true), HasSubstr("program was replaced a moment ago"));
    EXPECT_THAT(advice(FailureKind::NoSymbolFile, true), HasSubstr("without its symbol configuration"));
    EXPECT_THAT(advice(FailureKind::WrongLength, true), HasSubstr("shorter than what was asked for"));
    EXPECT_THAT(advice(FailureKind::WrongSize, true), HasSubstr("another size than the type"));
    EXPECT_THAT(advice(FailureKind::SymbolFileBroken, true), StartsWith("`velk check` walks"));
    EXPECT_THAT(advice(FailureKind::WrongReply, true), StartsWith("`velk check` walks"));
}

TEST(Advice, IsGivenForSilenceAndRefusalsAndForNothingElse) {
    for (int number = 0; number < base::kFailureKinds; ++number) {
        auto const kind = static_cast<FailureKind>(number);
        velk::ExitCode const code = velk::exitCodeFor(kind);
        bool const ofThePlc = code == velk::ExitCode::Silent || code == velk::ExitCode::Refused;
        EXPECT_EQ(!advice(kind, true).empty(), ofThePlc) << number;
        if (kind != FailureKind::Garbled && kind != FailureKind::Timeout) {
            EXPECT_THAT(advice(kind, true), Not(HasSubstr("line speed"))) << number;
        }
    }
}

} // namespace
