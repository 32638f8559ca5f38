#include "tools/velk/cli/CommandLine.h"

#include "base/Signals.h"
#include "host/services/Clock.h"
#include "tools/velk/terminal/Terminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using velk::ExitCode;

/** Command lines of velk, and what they put on the standard streams. */
class CommandLine : public testing::Test {
protected:
    ExitCode run(std::vector<std::string> const& words) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        ExitCode const code = velk::runCommandLine(words, context_);
        output_ = testing::internal::GetCapturedStdout();
        complaint_ = testing::internal::GetCapturedStderr();
        return code;
    }

    std::string output_;
    std::string complaint_;

private:
    velk::Terminal terminal_{velk::StreamKinds{}};
    base::Signals interrupt_;
    host::SteadyClock clock_;
    velk::Context context_{.terminal = terminal_, .interrupt = interrupt_, .clock = clock_};
};

TEST_F(CommandLine, AMisspeltCommandIsToldWithTheOneThatMayBeMeant) {
    for (std::vector<std::string> const& words :
         {std::vector<std::string>{"reed"}, {"help", "reed"}, {"reed", "--help"}, {"reed", "Counter"}}) {
        EXPECT_EQ(run(words), ExitCode::Usage);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(complaint_, "velk: there is no command 'reed'; did you mean read?\nvelk --help lists the commands\n");
    }
}

TEST_F(CommandLine, TwoLettersInTheWrongOrderAreToldToo) {
    EXPECT_EQ(run({"raed"}), ExitCode::Usage);
    EXPECT_THAT(complaint_, StartsWith("velk: there is no command 'raed'; did you mean read?\n"));
}

TEST_F(CommandLine, ACommandThatIsLikeNoOtherIsToldToo) {
    for (std::vector<std::string> const& words : {std::vector<std::string>{"nix"}, {"help", "nix"}}) {
        EXPECT_EQ(run(words), ExitCode::Usage);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(complaint_, "velk: there is no command 'nix'\nvelk --help lists the commands\n");
    }
}

TEST_F(CommandLine, ACommandOfACommandIsToldInItsPlace) {
    for (std::vector<std::string> const& words :
         {std::vector<std::string>{"config", "chek"}, {"help", "config", "chek"}}) {
        EXPECT_EQ(run(words), ExitCode::Usage);
        EXPECT_EQ(complaint_,
                  "velk: there is no command 'chek'; did you mean check?\nvelk config --help lists the commands\n");
    }
}

TEST_F(CommandLine, WhatIsMissingIsCalledAsInTheHelp) {
    EXPECT_EQ(run({"write"}), ExitCode::Usage);
    EXPECT_EQ(complaint_, "velk: NAME=VALUE is missing\nvelk write --help lists what it takes\n");
    EXPECT_EQ(run({"plc"}), ExitCode::Usage);
    EXPECT_THAT(complaint_, StartsWith("velk: PROJECT is missing\n"));
    EXPECT_EQ(run({"config"}), ExitCode::Usage);
    EXPECT_THAT(complaint_, StartsWith("velk: a command is missing: check or show\n"));
}

TEST_F(CommandLine, AFlagInFrontOfItsCommandIsToldWhereItBelongs) {
    struct Case {
        std::vector<std::string> words;
        char const* reason;
    };
    for (Case const& each :
         {Case{{"-n", "2", "symbols", "A*"}, "'-n' belongs after the command: velk symbols -n 2 'A*'"},
          Case{{"--node=2", "symbols"}, "'--node' belongs after the command: velk symbols --node=2"},
          Case{{"-n", "2", "write", "X='1'"}, "'-n' belongs after the command: velk write -n 2 'X='\\''1'\\'''"},
          Case{{"-q", "-n2", "read", "X"}, "'-q' belongs after the command: velk read -q -n2 X"},
          Case{{"-f", "a.toml", "config", "show"}, "'-f' belongs after the command: velk config show -f a.toml"},
          Case{{"config", "-f", "a.toml", "show"}, "'-f' belongs after the command: velk config show -f a.toml"}}) {
        EXPECT_EQ(run(each.words), ExitCode::Usage);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(complaint_, std::string("velk: ") + each.reason + "\n");
    }
}

TEST_F(CommandLine, AFlagWithoutACommandIsToldThatItNeedsOne) {
    for (std::vector<std::string> const& words : {std::vector<std::string>{"-n", "2"}, {"-n", "2", "symbls"}}) {
        EXPECT_EQ(run(words), ExitCode::Usage);
        EXPECT_EQ(complaint_, "velk: '-n' belongs after a command\nvelk --help lists the commands\n");
    }
}

TEST_F(CommandLine, AFlagThatDoesNotExistIsCalledSo) {
    EXPECT_EQ(run({"--nonsense", "read"}), ExitCode::Usage);
    EXPECT_EQ(complaint_, "velk: there is no option '--nonsense'\nvelk --help lists what it takes\n");
    EXPECT_EQ(run({"symbols", "--nonsense", "5"}), ExitCode::Usage);
    EXPECT_EQ(complaint_, "velk: there is no option '--nonsense'\nvelk symbols --help lists what it takes\n");
}

TEST_F(CommandLine, AWordTooManyIsNamed) {
    EXPECT_EQ(run({"ports", "now", "please"}), ExitCode::Usage);
    EXPECT_EQ(complaint_, "velk: 'now' is one word too many\nvelk ports --help lists what it takes\n");
}

TEST_F(CommandLine, WrongWordsAreToldInOneVoiceAndWithTheirCommand) {
    struct Case {
        std::vector<std::string> words;
        std::string reason;
        std::string command;
    };
    for (Case const& each : {
             Case{{"read", "--nonsense"}, "there is no option '--nonsense'", "read"},
             Case{{"read", "--quite", "X"}, "there is no option '--quite'; did you mean --quiet?", "read"},
             Case{{"write", "--bad"}, "there is no option '--bad'; did you mean --baud?", "write"},
             Case{{"config", "show", "--json"}, "there is no option '--json'", "config show"},
             Case{{"config", "check", "a", "b"}, "'b' is one word too many", "config check"},
             Case{{"help", "read", "write"}, "'write' is one word too many", "help"},
             Case{{"symbols", "--csv", "--tree"}, "--tree and --csv do not go together", "symbols"},
             Case{{"symbols", "--fetch", "--stored"}, "--stored and --fetch do not go together", "symbols"},
             Case{{"read", "--json", "--csv"}, "--json and --csv do not go together", "read"},
             Case{{"read", "--trace-format", "text"}, "--trace-format needs --trace", "read"},
             Case{{"read", "--trace", "a", "--trace", "b"}, "--trace is given more than once", "read"},
             Case{{"read", "--port"}, "--port needs a value: PORT", "read"},
             Case{{"read", "--json=x"}, "--json takes no value", "read"},
             Case{{"plc", "x", "--seed", "x"}, "--seed: 'x' is not a whole number", "plc"},
             Case{{"plc", "x", "--drop", "much"}, "--drop: 'much' is not a share such as 1% or 0.01", "plc"},
             Case{{"plc", "x", "--silent", "5s"},
                  "--silent: '5s' is not written as 5s@60s (for 5 s, every 60 s), 5s@60s/once or always",
                  "plc"},
             Case{{"plc", "x", "--replace-program", "x"},
                  "--replace-program: 'x' is not written as 30s or 30s:FILE",
                  "plc"},
             Case{{"plc", "x", "--restart", "1s", "--restart", "x"}, "--restart: 'x' is not a time such as 30s", "plc"},
             Case{{"plc", "x", "--for", "1"}, "--for: '1' is not a time such as 500ms, 2s or 1min", "plc"},
             Case{{"watch", "--every", "0s"}, "--every: '0s' is not an interval such as 500ms, 2s or 1min", "watch"},
             Case{{"read", "--baud", "x"}, "--baud: 'x' is not a line speed", "read"},
             Case{{"read", "--stopbits", "3"}, "--stopbits: '3' is wrong; it must be 1 to 2", "read"},
             Case{{"read", "--stopbits", "x"}, "--stopbits: 'x' is wrong; it must be 1 to 2", "read"},
             Case{{"read", "--parity", "x"}, "--parity: 'x' is wrong; it must be none, even, odd or mark", "read"},
             Case{{"trace", "--format", "x", "--", "ports"},
                  "--format: 'x' is wrong; it must be text, jsonl or pcapng",
                  "trace"},
             Case{{"watch", "--count", "0"}, "--count: '0' is not a number of rounds (1 or more)", "watch"},
             Case{{"trace", "--"}, "COMMAND is missing", "trace"},
             Case{{"read", "--port="}, "--port needs a value: PORT", "read"},
             Case{{"read", "-qp"}, "--port needs a value: PORT", "read"},
             Case{{"read", "X", "--port", "--", "Y"}, "--port needs a value: PORT", "read"},
             Case{{"config", "show", "a", "-f", "b"}, "FILE and --file do not go together", "config show"},
             Case{{"completions", "ksh"}, "SHELL: 'ksh' is wrong; it must be bash, zsh or fish", "completions"},
             Case{{"init", "--address1", "1.2.3"}, "--address1: '1.2.3' is not an address such as 192.168.0.1", "init"},
         }) {
        EXPECT_EQ(run(each.words), ExitCode::Usage) << each.reason;
        EXPECT_EQ(output_, "");
        EXPECT_EQ(complaint_, "velk: " + each.reason + "\nvelk " + each.command + " --help lists what it takes\n");
    }
}

TEST_F(CommandLine, WordsInBracketsStayWhole) {
    EXPECT_EQ(run({"config", "check", "[a,b]"}), ExitCode::Usage);
    EXPECT_THAT(complaint_, StartsWith("[a,b]: "));
    EXPECT_EQ(run({"config", "check", "--", "-x,y"}), ExitCode::Usage);
    EXPECT_THAT(complaint_, StartsWith("-x,y: "));
}

TEST_F(CommandLine, HelpCountsMoreThanWhatElseIsWrong) {
    for (std::vector<std::string> const& words :
         {std::vector<std::string>{"write", "--help"}, {"write", "--json", "-h", "X"}, {"write", "--nonsense", "-h"}}) {
        EXPECT_EQ(run(words), ExitCode::Good);
        EXPECT_THAT(output_, StartsWith("Usage: velk write "));
        EXPECT_EQ(complaint_, "");
    }
}

TEST_F(CommandLine, CompletionsAskTheProgram) {
    EXPECT_EQ(run({"__complete", "config", "ch"}), ExitCode::Good);
    EXPECT_EQ(output_, "check\tSay what is wrong in a project file, with line and column\n");
    for (std::vector<std::string> const& words :
         {std::vector<std::string>{"__complete"}, {"__complete", "nonsense", ""}, {"__complete", "-n", "--", "x"}}) {
        EXPECT_EQ(run(words), ExitCode::Good);
        EXPECT_EQ(complaint_, "");
    }
}

TEST_F(CommandLine, HelpIsDataAndGood) {
    EXPECT_EQ(run({"help"}), ExitCode::Good);
    EXPECT_THAT(output_, StartsWith("Usage: velk [OPTION]... COMMAND ..."));
    EXPECT_EQ(run({"help", "read"}), ExitCode::Good);
    EXPECT_THAT(output_, StartsWith("Usage: velk read "));
    EXPECT_EQ(run({"help", "config", "check"}), ExitCode::Good);
    EXPECT_THAT(output_, StartsWith("Usage: velk config check "));
    EXPECT_EQ(complaint_, "");
}

} // namespace
