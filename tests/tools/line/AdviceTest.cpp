#include "tools/velk/line/Advice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::Not;
using velk::advice;
using velk::ExitCode;

TEST(Advice, SilenceIsToldFromAnAnswerThatEnds) {
    EXPECT_THAT(advice(ExitCode::Silent, {-4, "Timeout on Acknowledge"}, false), HasSubstr("cable"));
    EXPECT_THAT(advice(ExitCode::Silent, {-4, "Timeout on data receiving"}, true), HasSubstr("Bytes came"));
}

TEST(Advice, FramesThatMakeNoSenseAreOtherSettings) {
    for (char const* const text : {"Wrong Ack message received", "Too short Ack message received",
                                   "Wrong Protocol ID received", "Wrong checksum or wrong block number received"}) {
        EXPECT_THAT(advice(ExitCode::Refused, {-6, text}, true), HasSubstr("line speed")) << text;
    }
}

TEST(Advice, ARefusalIsNoWrongSetting) {
    for (char const* const text : {"Project ID mismatch", "Command not acknowledged by PLC", "Symbol file not present",
                                   "Wrong number of bytes received", "Rx Buffer dimension exceeded",
                                   "Wrong reply length or ack in WriteData operation", ""}) {
        EXPECT_THAT(advice(ExitCode::Refused, {-6, text}, true), Not(HasSubstr("line speed"))) << text;
    }
    EXPECT_THAT(advice(ExitCode::Refused, {-6, "Wrong reply length or ack in WriteData operation"}, true),
                HasSubstr("The line works"));
    EXPECT_THAT(advice(ExitCode::Refused, {1, "the driver gave no reason"}, true), HasSubstr("logged in"));
}

TEST(Advice, OfThePortAndOfUsageThereIsNone) {
    EXPECT_EQ(advice(ExitCode::Port, {0, "gone"}, true), "");
    EXPECT_EQ(advice(ExitCode::Usage, {-1, "wrong"}, true), "");
}

} // namespace
