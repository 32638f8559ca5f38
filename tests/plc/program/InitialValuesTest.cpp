#include "plc/files/ProgramFile.h"
#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace plctest;

plc::LineDescription LineOf(std::string_view program) {
    plc::StationDescription station;
    station.program = plc::readProgramText(program, "p.toml");
    return BareLine(std::move(station));
}

TEST(InitialValues, OfAnArrayAreAList) {
    plc::Line line(LineOf("[[variable]]\nname = 'v'\ntype = 'ARRAY [-1..2] OF INT'\nvalue = [10, 20, 30]"));
    EXPECT_EQ(Show(line.station().memory().area(0).first(8)), "0A 00 14 00 1E 00 00 00");
}

TEST(InitialValues, OfAnArrayOfManyDimensionsHaveTheLastOneFastest) {
    plc::Line line(LineOf("[[variable]]\nname = 'v'\ntype = 'ARRAY [0..1, 5..6] OF SINT'\nvalue = [1, 2, 3, 4]"));
    EXPECT_EQ(line.station().get<int>("v[0,6]"), 2);
    EXPECT_EQ(line.station().get<int>("v[1,5]"), 3);
}

TEST(InitialValues, OfAnArrayOfManyDimensionsMayBeListsInALists) {
    plc::Line line(LineOf("[[variable]]\nname = 'v'\ntype = 'ARRAY [0..1, 5..7] OF SINT'\n"
                          "value = [[1, 2], [3, 4, 5]]"));
    EXPECT_EQ(Show(line.station().memory().area(0).first(6)), "01 02 00 03 04 05");
    EXPECT_EQ(line.station().get<int>("v[1,7]"), 5);
}

TEST(InitialValues, OfArraysInArraysAreListsOfLists) {
    std::string const pumps = "[[structure]]\nname = 'PUMP'\nmembers = [['Log', 'ARRAY [0..1, 0..1] OF SINT']]\n";
    plc::Line line(LineOf(pumps + "[[variable]]\nname = 'v'\ntype = 'ARRAY [0..1, 0..1] OF PUMP'\n"
                                  "value = [[{ Log = [[1, 2], [3, 4]] }], [{ Log = [5, 6] }, { Log = [7] }]]"));
    EXPECT_EQ(Show(line.station().memory().area(0).first(16)), "01 02 03 04 00 00 00 00 05 06 00 00 07 00 00 00");
    plc::Line nested(LineOf("[[variable]]\nname = 'v'\ntype = 'ARRAY [0..1] OF ARRAY [0..1, 0..1] OF SINT'\n"
                            "value = [[[1, 2], [3, 4]], [[5, 6], [7, 8]]]"));
    EXPECT_EQ(Show(nested.station().memory().area(0).first(8)), "01 02 03 04 05 06 07 08");
}

TEST(InitialValues, OfAStructureAreATable) {
    plc::Line line(LineOf("[[structure]]\nname = 'PUMP'\nmembers = [['Speed', 'INT'], ['Name', 'STRING(5)'], ['Log', "
                          "'ARRAY [1..2] OF REAL']]\n"
                          "[[variable]]\nname = 'v'\ntype = 'ARRAY [1..2] OF PUMP'\n"
                          "value = [{ speed = 7, Name = 'P1' }, { Log = [0.5, 1.5] }]"));
    EXPECT_EQ(line.station().get<int>("v[1].Speed"), 7);
    EXPECT_EQ(line.station().get<std::string>("v[1].Name"), "P1");
    EXPECT_EQ(line.station().get<double>("v[2].Log[2]"), 1.5);
    EXPECT_EQ(line.station().get<int>("v[2].Speed"), 0);
}

TEST(InitialValues, OfALargeUlintAreATextForTomlHasNoSuchNumber) {
    plc::Line line(LineOf("[[variable]]\nname = 'v'\ntype = 'ULINT'\nvalue = '18446744073709551615'"));
    EXPECT_EQ(line.station().get<std::uint64_t>("v"), 18446744073709551615U);
}

std::string ComplaintAboutValue(std::string const& type, std::string const& value, std::string const& more = "") {
    try {
        static_cast<void>(plc::readProgramText(
            "[[variable]]\nname = 'v'\ntype = '" + type + "'\nvalue = " + value + "\n" + more, "p.toml"));
        return "";
    } catch (base::FileError const& fault) {
        return fault.what();
    }
}

TEST(InitialValues, ThatDoNotFitAreRefused) {
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "[1, 2]"), "");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "[1, 2, 3]"),
              "p.toml:1: variable v: there is no element at position 2");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "[1, 70000]"),
              "p.toml:1: variable v: the value does not fit the type");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "{ Speed = 1 }"),
              "p.toml:1: variable v: there is no member Speed");
    EXPECT_EQ(ComplaintAboutValue("ULINT", "'18446744073709551616'"),
              "p.toml:1: variable v: the value does not fit the type");
    EXPECT_EQ(ComplaintAboutValue("ULINT", "'many'"), "p.toml:1: variable v: the value does not fit the type");
    EXPECT_EQ(ComplaintAboutValue("UDINT", "'5'"), "p.toml:1: variable v: the value does not fit the type");
    EXPECT_EQ(ComplaintAboutValue("INT", "[1]"), "p.toml:1: variable v: a list stands where one INT is expected");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "3"),
              "p.toml:1: variable v: only an element or a member has a value");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "[[1]]"),
              "p.toml:1: variable v: a list stands where one INT is expected");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1, 0..1] OF INT", "[[1, 2], [3, 4, 5]]"),
              "p.toml:1: variable v: there is no element at position 1, 2");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1, 0..1] OF INT", "[[1], [2], [3]]"),
              "p.toml:1: variable v: there is no element at position 2, 0");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1, 0..1] OF INT", "[[[1]]]"),
              "p.toml:1: variable v: a list stands where one INT is expected");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1, 0..1] OF INT", "[[1, 2], 3]"),
              "p.toml:4:18: either all elements of a list are lists, or none is");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "[]"), "p.toml:4:9: 'value' holds no value");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "[\n2026-01-01]"),
              "p.toml:5:1: a value is a number, true, false, a text, or a list or table of them");
    EXPECT_EQ(ComplaintAboutValue("ARRAY [0..1] OF INT", "[1]", "listed_only = true\noffset = 0"),
              "p.toml:1: variable v is listed only: it needs an offset and has no value");
}

} // namespace
