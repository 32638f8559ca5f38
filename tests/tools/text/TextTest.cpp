#include "tools/velk/text/Text.h"

#include <gtest/gtest.h>

namespace {

TEST(Counted, OneIsNotMany) {
    EXPECT_EQ(velk::counted(0, "piece", "pieces"), "0 pieces");
    EXPECT_EQ(velk::counted(1, "piece", "pieces"), "1 piece");
    EXPECT_EQ(velk::counted(12'345, "piece", "pieces"), "12,345 pieces");
}

TEST(Utf8, StaysAsItIs) {
    EXPECT_EQ(velk::toUtf8("25 \xC2\xB5m \xE2\x82\xAC \xF0\x9F\x98\x80"), "25 \xC2\xB5m \xE2\x82\xAC \xF0\x9F\x98\x80");
}

TEST(Utf8, AnythingElseIsTakenForLatin1) {
    EXPECT_EQ(velk::toUtf8("25 \xB5m"), "25 \xC2\xB5m");
    EXPECT_EQ(velk::toUtf8("\xC2"), "\xC3\x82") << "cut off";
    EXPECT_EQ(velk::toUtf8("\xC0\x80"), "\xC3\x80\xC2\x80") << "too long a form";
    EXPECT_EQ(velk::toUtf8("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80") << "half a pair";
}

TEST(Displayable, DoesNothingToATerminal) {
    EXPECT_EQ(velk::displayable("a\x1B[31mb\x7F\r\n"), "a\\x1B[31mb\\x7F\\x0D\\x0A");
    EXPECT_EQ(velk::displayable("\xC2\x9B[31m"), "\\x9B[31m");
    EXPECT_EQ(velk::displayable("\x9B[31m"), "\\x9B[31m");
    EXPECT_EQ(velk::displayable("µm"), "µm");
}

TEST(CsvField, IsQuotedWhereItHasTo) {
    EXPECT_EQ(velk::csvField("plain text"), "plain text");
    EXPECT_EQ(velk::csvField("a,b"), "\"a,b\"");
    EXPECT_EQ(velk::csvField("say \"x\""), "\"say \"\"x\"\"\"");
    EXPECT_EQ(velk::csvField("two\nlines"), "\"two\nlines\"");
}

TEST(Grouped, HasCommasBetweenThousands) {
    EXPECT_EQ(velk::grouped(0), "0");
    EXPECT_EQ(velk::grouped(999), "999");
    EXPECT_EQ(velk::grouped(1000), "1,000");
    EXPECT_EQ(velk::grouped(1234567), "1,234,567");
}

} // namespace
