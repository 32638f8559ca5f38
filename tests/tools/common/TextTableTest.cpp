#include "tools/common/TextTable.h"

#include <gtest/gtest.h>

namespace {

using tools::TextTable;

TEST(TextTable, AColumnIsAsWideAsItsWidestCell) {
    TextTable table({"name", "value", "status"});
    table.add({"a", "123456", "good"});
    table.add({"bc", "1", "good"});
    EXPECT_EQ(table.text(), "name  value   status\n"
                            "----  ------  ------\n"
                            "a     123456  good\n"
                            "bc    1       good\n");
}

TEST(TextTable, ACellBeyondTheLimitWidensNothing) {
    TextTable table({"name", "value", "status"});
    table.limitColumn(1, 8);
    table.add({"a", "123456789", "good"});
    table.add({"b", "12345678", "good"});
    table.add({"c", "1", "good"});
    EXPECT_EQ(table.text(), "name  value     status\n"
                            "----  --------  ------\n"
                            "a     123456789  good\n"
                            "b     12345678  good\n"
                            "c     1         good\n");
}

} // namespace
