#include "plc/program/VariableBehaviours.h"

#include "plc/files/ProgramFile.h"
#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using namespace plctest;
using plc::BehaviourDescription;
using plc::BehaviourKind;

/** A line with one station that runs the program; its time starts at 0. */
class Moving {
public:
    explicit Moving(std::string_view program) : line_(description(plc::readProgramText(program, "p.toml"))) {
        line_.advance(0ms);
    }
    explicit Moving(plc::ProgramDescription const& program) : line_(description(program)) { line_.advance(0ms); }

    template <typename T>
    T at(plc::Micros time, std::string_view variable = "v") {
        line_.advance(time);
        return line_.station().get<T>(variable);
    }
    plc::Line& line() { return line_; }

private:
    static plc::LineDescription description(plc::ProgramDescription program) {
        plc::StationDescription station;
        station.program = std::move(program);
        return BareLine(std::move(station));
    }

    plc::Line line_;
};

TEST(Behaviour, ACounterGoesUpAndBeginsAgain) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'INT'\nvalue = 8\n"
                   "behaviour = { kind = 'counter', low = 3, high = 10, every_ms = 100 }");
    EXPECT_EQ(program.at<int>(0ms), 8);
    EXPECT_EQ(program.at<int>(99ms), 8);
    EXPECT_EQ(program.at<int>(100ms), 9);
    EXPECT_EQ(program.at<int>(299ms), 10);
    EXPECT_EQ(program.at<int>(300ms), 3);
}

TEST(Behaviour, ACounterGoesDown) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'INT'\n"
                   "behaviour = { kind = 'counter', step = -4, low = -5, high = 5 }");
    EXPECT_EQ(program.at<int>(100ms), -4);
    EXPECT_EQ(program.at<int>(200ms), 5);
}

TEST(Behaviour, ACounterWithoutBoundsHasThoseOfItsType) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'SINT'\nvalue = 127\nbehaviour = { kind = 'counter' }");
    EXPECT_EQ(program.at<int>(100ms), -128);
}

TEST(Behaviour, ACounterOfATruthValueBlinks) {
    for (char const* const type : {"BOOL", "BIT"}) {
        Moving program("[[variable]]\nname = 'v'\ntype = '" + std::string(type) +
                       "'\nbehaviour = { kind = 'counter', every_ms = 500 }");
        EXPECT_FALSE(program.at<bool>(499ms));
        EXPECT_TRUE(program.at<bool>(500ms));
        EXPECT_FALSE(program.at<bool>(1000ms));
    }
}

TEST(Behaviour, ACounterGoesOnFromWhatAPanelWrote) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'DINT'\nbehaviour = { kind = 'counter' }");
    EXPECT_EQ(program.at<int>(200ms), 2);
    program.line().station().setValue("v", 1000);
    EXPECT_EQ(program.at<int>(300ms), 1001);
}

TEST(Behaviour, AStepBelowOneCountsAllTheSame) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'INT'\nbehaviour = { kind = 'counter', step = 0.25 }");
    EXPECT_EQ(program.at<int>(100ms), 0);
    EXPECT_EQ(program.at<int>(400ms), 1);
    EXPECT_EQ(program.at<int>(2000ms), 5);
}

TEST(Behaviour, ARampRisesAndFallsBack) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'REAL'\n"
                   "behaviour = { kind = 'ramp', low = 10, high = 20, period_ms = 1000, every_ms = 250 }");
    EXPECT_EQ(program.at<double>(0ms), 10.0);
    EXPECT_EQ(program.at<double>(250ms), 12.5);
    EXPECT_EQ(program.at<double>(999ms), 17.5);
    EXPECT_EQ(program.at<double>(1000ms), 10.0);
    EXPECT_EQ(program.at<double>(3500ms), 15.0);
}

TEST(Behaviour, ASineSwingsFromTheMiddleUpwards) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'LREAL'\n"
                   "behaviour = { kind = 'sine', low = -1, high = 3, period_ms = 4000, every_ms = 1000 }");
    EXPECT_NEAR(program.at<double>(0ms), 1.0, 1e-12);
    EXPECT_NEAR(program.at<double>(1000ms), 3.0, 1e-12);
    EXPECT_NEAR(program.at<double>(2000ms), 1.0, 1e-12);
    EXPECT_NEAR(program.at<double>(3000ms), -1.0, 1e-12);
}

TEST(Behaviour, APhaseMovesTheStart) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'INT'\n"
                   "behaviour = { kind = 'sine', low = -100, high = 100, period_ms = 4000, phase = 0.75 }");
    EXPECT_EQ(program.at<int>(0ms), -100);
}

TEST(Behaviour, ARandomWalkStaysWithinItsBoundsAndIsTheSameEveryTime) {
    std::string const text = "[[variable]]\nname = 'v'\ntype = 'REAL'\nvalue = 5\n"
                             "behaviour = { kind = 'random_walk', low = 4, high = 6, step = 0.5, seed = 7 }";
    Moving one(text);
    Moving other(text);
    double before = 5;
    bool moved = false;
    for (plc::Micros time = 100ms; time < 100s; time += 100ms) {
        double const value = one.at<double>(time);
        ASSERT_GE(value, 4);
        ASSERT_LE(value, 6);
        ASSERT_LE(std::abs(value - before), 0.5001);
        ASSERT_EQ(value, other.at<double>(time));
        moved = moved || value != before;
        before = value;
    }
    EXPECT_TRUE(moved);
}

TEST(Behaviour, AVariableFollowsAnotherOne) {
    Moving program(
        "variable = [{ name = 'set', type = 'INT', value = 10 },\n"
        "{ name = 'v', type = 'REAL', behaviour = { kind = 'follow', source = 'SET', factor = 2, offset = 0.5 } }]");
    EXPECT_EQ(program.at<double>(0ms), 20.5);
    program.line().station().setValue("set", 20);
    EXPECT_EQ(program.at<double>(99ms), 20.5);
    EXPECT_EQ(program.at<double>(100ms), 40.5);
}

TEST(Behaviour, AVariableFollowsWithALag) {
    Moving program("variable = [{ name = 'set', type = 'INT', value = 100 },\n"
                   "{ name = 'v', type = 'REAL', behaviour = { kind = 'follow', source = 'set', lag_ms = 1000 } }]");
    EXPECT_EQ(program.at<double>(0ms), 0.0);
    EXPECT_NEAR(program.at<double>(1000ms), 63.2, 0.1); // 1 - 1/e
    EXPECT_NEAR(program.at<double>(2000ms), 86.5, 0.1);
    EXPECT_NEAR(program.at<double>(30s), 100.0, 0.1);
}

TEST(Behaviour, ATruthValueCanFollowANumber) {
    Moving program("variable = [{ name = 'level', type = 'INT' },\n"
                   "{ name = 'v', type = 'BOOL', behaviour = { kind = 'follow', source = 'level', offset = -9 } }]");
    EXPECT_FALSE(program.at<bool>(100ms));
    program.line().station().setValue("level", 10);
    EXPECT_TRUE(program.at<bool>(200ms));
}

TEST(Behaviour, WhatIsBeyondTheTypeStopsAtItsEnd) {
    Moving program("variable = [{ name = 'set', type = 'LREAL', value = 1e308 },\n"
                   "{ name = 'v', type = 'USINT', behaviour = { kind = 'follow', source = 'set', factor = 1e10 } },\n"
                   "{ name = 'w', type = 'USINT', behaviour = { kind = 'follow', source = 'set', factor = -1 } }]");
    EXPECT_EQ(program.at<unsigned>(100ms, "w"), 0U);
    EXPECT_EQ(program.at<unsigned>(100ms, "v"), 0U); // infinity does not fit: the lowest value
    program.line().station().setValue("set", 1e6);
    EXPECT_EQ(program.at<unsigned>(200ms, "v"), 255U);
}

TEST(Behaviour, AConstantDoesNotKeepWhatAPanelWrote) {
    Moving program(
        "[[variable]]\nname = 'v'\ntype = 'INT'\nvalue = 7\nbehaviour = { kind = 'constant', every_ms = 50 }");
    program.line().station().setValue("v", 8);
    EXPECT_EQ(program.at<int>(49ms), 8);
    EXPECT_EQ(program.at<int>(50ms), 7);
}

TEST(Behaviour, MembersAndElementsMoveToo) {
    Moving program("[[structure]]\nname = 'PUMP'\nmembers = [['Speed', 'INT'], ['Levels', 'ARRAY [1..2] OF INT']]\n"
                   "[[variable]]\nname = 'Pump'\ntype = 'PUMP'\n"
                   "[[behaviour]]\nvariable = 'Pump.Speed'\nkind = 'counter'\n"
                   "[[behaviour]]\nvariable = 'pump.levels[2]'\nkind = 'counter'\nstep = 10\n");
    EXPECT_EQ(program.at<int>(300ms, "Pump.Speed"), 3);
    EXPECT_EQ(program.at<int>(300ms, "Pump.Levels[1]"), 0);
    EXPECT_EQ(program.at<int>(300ms, "Pump.Levels[2]"), 30);
}

TEST(Behaviour, BothByteOrdersMove) {
    plc::StationDescription station;
    station.byteOrder = plc::ByteOrder::kBig;
    station.program = plc::readProgramText(
        "[[variable]]\nname = 'v'\ntype = 'INT'\nvalue = 0x12FF\nbehaviour = { kind = 'counter' }", "p.toml");
    plc::Line line(BareLine(std::move(station)));
    line.advance(0ms);
    line.advance(100ms);
    EXPECT_EQ(Show(line.station().memory().area(0).first(2)), "13 00");
}

TEST(Behaviour, EveryTickHasItsTimeHoweverLateTheLineIsLookedAt) {
    Moving program("variable = [{ name = 'set', type = 'INT', behaviour = { kind = 'counter', every_ms = 100 } },\n"
                   "{ name = 'v', type = 'INT', behaviour = { kind = 'follow', source = 'set', every_ms = 250 } }]");
    EXPECT_EQ(program.line().nextDeadline(), 100ms);
    EXPECT_EQ(program.at<int>(999ms), 7); // the counter at 750 ms
    EXPECT_EQ(program.at<int>(999ms, "set"), 9);
    EXPECT_EQ(program.line().nextDeadline(), 1000ms);
}

TEST(Behaviour, StartsAnewWithAnotherProgram) {
    std::string const text = "[[variable]]\nname = 'v'\ntype = 'INT'\nvalue = 5\n"
                             "behaviour = { kind = 'ramp', low = 0, high = 100, period_ms = 1000 }";
    Moving program(text);
    EXPECT_EQ(program.at<int>(550ms), 50);
    program.line().station().replaceProgram(plc::readProgramText(text, "p.toml"));
    EXPECT_EQ(program.at<int>(560ms), 0);
    EXPECT_EQ(program.at<int>(660ms), 10);
}

TEST(Behaviour, AProgramThatDoesNotMoveHasNoTicks) {
    Moving program("[[variable]]\nname = 'v'\ntype = 'INT'");
    EXPECT_FALSE(program.line().nextDeadline());
}

std::string ComplaintAboutBehaviour(std::string const& behaviour, std::string const& type = "INT") {
    try {
        static_cast<void>(plc::readProgramText(
            "[[variable]]\nname = 'v'\ntype = '" + type + "'\n\nbehaviour = " + behaviour, "p.toml"));
        return "";
    } catch (base::FileError const& fault) {
        return fault.what();
    }
}

TEST(Behaviour, ComplaintsNameTheirPlace) {
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'counter' }"), "");
    EXPECT_EQ(ComplaintAboutBehaviour("3"), "p.toml:5:13: 'behaviour' must be a table, not a whole number");
    EXPECT_EQ(ComplaintAboutBehaviour("{ }"), "p.toml:5:13: 'kind' is missing");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'x' }"),
              "p.toml:5:22: 'kind' is 'x'; it must be constant, counter, ramp, sine, random_walk or follow");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'constant', low = 1 }"),
              "p.toml:5:34: there is no 'low' in [behaviour]");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'counter', step = 'x' }"),
              "p.toml:5:40: 'step' must be a number, not a text");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'counter', step = nan }"),
              "p.toml:5: behaviour of v: a number must be finite");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'counter', every_ms = 0 }"),
              "p.toml:5:44: 'every_ms' is 0; it must be 1 to 86400000");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'ramp' }"), "p.toml:5: behaviour of v: low and high are missing");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'counter' }", "REAL"),
              "p.toml:5: behaviour of v: low and high are missing");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'sine', low = 1, high = 1 }"),
              "p.toml:5: behaviour of v: low must be below high");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'sine', low = 0, high = 256 }", "BYTE"),
              "p.toml:5: behaviour of v: low or high is beyond the type's range");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'sine', low = 0, high = 1, phase = 2 }"),
              "p.toml:5:57: 'phase' must be a number from 0 to 1");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'follow' }"), "p.toml:5:13: 'source' is missing");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'follow', source = 'w' }"),
              "p.toml:5: behaviour of v: there is no variable w");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'counter' }", "STRING(5)"),
              "p.toml:5: behaviour of v: v is not a number or BOOL with memory");
    EXPECT_EQ(ComplaintAboutBehaviour("{ kind = 'counter' }", "ARRAY [0..1] OF INT"),
              "p.toml:5: behaviour of v: v is not a number or BOOL with memory");
}

TEST(Behaviour, WrittenInCodeItIsCheckedToo) {
    plc::ProgramDescription program;
    program.variables = {{.name = "v", .type = "INT"}};
    BehaviourDescription behaviour;
    behaviour.variable = "v";
    behaviour.kind = BehaviourKind::kCounter;
    behaviour.every = 0us;
    program.behaviours = {behaviour};
    EXPECT_THROW(static_cast<void>(Moving(program)), plc::DescriptionError);
    program.behaviours[0].every = 1us;
    program.behaviours[0].period = 0us;
    EXPECT_THROW(static_cast<void>(Moving(program)), plc::DescriptionError);
    program.behaviours[0].period = 1us;
    EXPECT_EQ(Moving(program).at<int>(5us), 5);
}

} // namespace
