#include "tools/velk/cli/CommandTree.h"

#include "base/Signals.h"
#include "host/services/Clock.h"
#include "tools/velk/cli/Candidates.h"
#include "tools/velk/cli/Help.h"
#include "tools/velk/cli/Manual.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Wrapping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using velk::Argument;
using velk::Command;
using velk::flag;
using velk::Offer;
using velk::Range;
using velk::word;

/** A small program. */
class SmallTree : public testing::Test {
protected:
    SmallTree() {
        Argument csv = flag("--csv", {}, "As CSV", {});
        csv.group = "Form";
        Argument port = flag("-p,--port", {"PORT", Offer::Ports}, "A port's name", {}, {.byDefault = "ttyS0"});
        port.group = "Line";
        Command read{.name = "read",
                     .description = "Read a [thing]",
                     .words = {word("NAME", Offer::Variables, "What", {}, {.repeats = true})},
                     .flags = {port, flag("--parity", std::vector<std::string>{"none", "even"}, "Parity", {}),
                               flag("--stop", Range{1, 2}, "Stop bits", {}), flag("--json", {}, "As JSON", {}), csv}};
        Command check{.name = "check",
                      .description = "Check it",
                      .words = {word("FILE", Offer::Files, "The file", {}, {.required = true})},
                      .flags = {flag("--storage", {"DIR", Offer::Folders}, "The folder", {})}};
        Command config{.name = "config", .description = "Configuration", .commands = {check}};
        Command trace{.name = "trace",
                      .description = "Trace it",
                      .words = {word("COMMAND", Offer::CommandLine, "The command", {}, {.repeats = true})},
                      .flags = {flag("-o,--output", {"FILE", Offer::Files}, "The file", {})}};
        Command help{.name = "help",
                     .description = "Help",
                     .words = {word("COMMAND", Offer::Commands, "The command", {}, {.repeats = true})}};
        tree = {.name = "velk", .description = "A program", .commands = {read, config, trace, help}};
    }

    [[nodiscard]] std::string offered(std::vector<std::string> const& words) const {
        return velk::candidates(tree, words);
    }

    Command tree;
};

TEST_F(SmallTree, SaysWhatStandsForAValue) {
    std::vector<Argument> const& flags = tree.commands[0].flags;
    EXPECT_THAT(flags[0].names(), ElementsAre("-p", "--port"));
    EXPECT_EQ(flags[0].value.text(), "PORT");
    EXPECT_EQ(flags[1].value.text(), "none|even");
    EXPECT_EQ(flags[2].value.text(), "1..2");
    EXPECT_EQ(flags[3].value.text(), "") << "a flag without a value";
}

TEST_F(SmallTree, HasAUsageLineForEachCommand) {
    EXPECT_EQ(velk::usageLine(tree.commands[0], "velk read"), "velk read [OPTION]... [NAME]...");
    EXPECT_EQ(velk::usageLine(tree, "velk"), "velk [OPTION]... COMMAND ...");
    EXPECT_EQ(velk::usageLine(tree.commands[1].commands[0], "velk config check"), "velk config check [OPTION]... FILE");
}

TEST_F(SmallTree, HelpHasTwoColumns) {
    EXPECT_EQ(velk::helpText(tree.commands[0], "velk read"), R"(Usage: velk read [OPTION]... [NAME]...

Read a [thing]

Words:
  NAME                    What

Line:
  -p, --port PORT         A port's name; ttyS0 by default

Options:
      --parity none|even  Parity
      --stop 1..2         Stop bits
      --json              As JSON

Form:
      --csv               As CSV
)");
}

TEST(Wrapped, BreaksBetweenWords) {
    EXPECT_EQ(velk::wrapped("one two three", 2, 9), "one two\n  three");
    EXPECT_EQ(velk::wrapped("unbreakable", 0, 5), "unbreakable");
    EXPECT_EQ(velk::wrapped("", 0, 5), "");
}

TEST(Into, PutsValuesWhereTheyBelong) {
    bool on = false;
    std::optional<int> number;
    std::optional<std::string> text;
    std::vector<std::string> texts{"a"};
    EXPECT_EQ(velk::into(on)("true"), "");
    EXPECT_EQ(velk::into(number)("-5"), "");
    EXPECT_EQ(velk::into(text)("x y"), "");
    EXPECT_EQ(velk::into(texts)("b"), "");
    EXPECT_TRUE(on);
    EXPECT_EQ(number, -5);
    EXPECT_EQ(text, "x y");
    EXPECT_THAT(texts, ElementsAre("a", "b"));
}

TEST(Into, RefusesWhatIsNoNumberAndWhatFailsTheCheck) {
    std::optional<int> number;
    std::optional<std::string> text;
    for (char const* const wrong : {"", "x", "5x", "5.5", "99999999999"}) {
        EXPECT_EQ(velk::into(number)(wrong), "'" + std::string(wrong) + "' is not a whole number");
    }
    EXPECT_EQ(velk::into(text, [](std::string const& each) { return "no " + each; })("x"), "no x");
    EXPECT_EQ(number, std::nullopt);
    EXPECT_EQ(text, std::nullopt);
}

TEST(Argument, TakesAChoiceWhateverTheCaseOfItsLetters) {
    std::optional<std::string> parity;
    Argument const one = flag("--parity", std::vector<std::string>{"none", "even"}, "Parity", velk::into(parity));
    EXPECT_EQ(one.accept("EVEN"), "");
    EXPECT_EQ(parity, "even");
    EXPECT_EQ(one.accept("odd"), "'odd' is wrong; it must be none or even");
    EXPECT_EQ(parity, "even");
}

TEST(Argument, TakesTheLeastAndTheMostOfARange) {
    std::optional<int> stop;
    Argument const one = flag("--stop", Range{1, 2}, "Stop bits", velk::into(stop));
    EXPECT_EQ(one.accept("2"), "");
    EXPECT_EQ(stop, 2);
    EXPECT_EQ(one.accept("1"), "");
    for (char const* const wrong : {"0", "3", "x", ""}) {
        EXPECT_EQ(one.accept(wrong), "'" + std::string(wrong) + "' is wrong; it must be 1 to 2");
    }
    EXPECT_EQ(stop, 1);
}

TEST_F(SmallTree, OffersCommands) {
    EXPECT_EQ(offered({""}), "read\tRead a [thing]\nconfig\tConfiguration\ntrace\tTrace it\nhelp\tHelp\n");
    EXPECT_EQ(offered({"co"}), "config\tConfiguration\n");
    EXPECT_EQ(offered({"config", ""}), "check\tCheck it\n");
    EXPECT_EQ(offered({"x"}), "");
    EXPECT_EQ(offered({}), "");
}

TEST_F(SmallTree, OffersFlags) {
    EXPECT_EQ(offered({"read", "--p"}), "--port\tA port's name; ttyS0 by default\n--parity\tParity\n");
    EXPECT_EQ(offered({"read", "x", "--c"}), "--csv\tAs CSV\n");
    EXPECT_EQ(offered({"read", "--", "--c"}), "") << "behind the dashes there are no flags";
}

TEST_F(SmallTree, OffersTheValuesOfAFlag) {
    EXPECT_EQ(offered({"read", "--parity", ""}), "none\neven\n");
    EXPECT_EQ(offered({"read", "--parity", "e"}), "even\n");
    EXPECT_EQ(offered({"read", "--parity=e"}), "--parity=even\n");
    EXPECT_EQ(offered({"read", "--parity", "none", "e"}), "") << "a variable";
    EXPECT_EQ(offered({"read", "--json", "e"}), "") << "this flag has no value";
    EXPECT_EQ(offered({"read", "-p", "/dev/nul"}), "/dev/null\n");
}

TEST_F(SmallTree, LeavesFilesAndFoldersToTheShell) {
    EXPECT_EQ(offered({"config", "check", "x"}), ":files\n");
    EXPECT_EQ(offered({"config", "check", "x", "y"}), "") << "it takes one";
    EXPECT_EQ(offered({"config", "check", "--storage", ""}), ":folders\n");
    EXPECT_EQ(offered({"trace", "--output=x"}), ":files\n");
}

TEST_F(SmallTree, OffersAWholeCommandLineBehindATrace) {
    EXPECT_EQ(offered({"trace", ""}), "--\tThe command\n");
    EXPECT_EQ(offered({"trace", "-o", "--", "re"}), "") << "these dashes are the name of a file";
    EXPECT_EQ(offered({"trace", "-o", "t.txt", "--", "re"}), "read\tRead a [thing]\n");
    EXPECT_EQ(offered({"trace", "--", "read", "--parity", "e"}), "even\n");
}

TEST_F(SmallTree, OffersTheCommandsToGetHelpFor) {
    EXPECT_EQ(offered({"help", "co"}), "config\tConfiguration\n");
    EXPECT_EQ(offered({"help", "config", ""}), "check\tCheck it\n");
}

TEST_F(SmallTree, TheManualHasEveryCommand) {
    EXPECT_EQ(velk::manCommands(tree, {tree.commands[0].flags[0]}), R"(.SS "velk read [OPTION]... [NAME]..."
Read a [thing].
.TP
\fINAME\fR
What.
.TP
\fB\-\-parity\fR \fInone|even\fR
Parity.
.TP
\fB\-\-stop\fR \fI1..2\fR
Stop bits.
.TP
\fB\-\-json\fR
As JSON.
.TP
\fB\-\-csv\fR
As CSV.
.PP
Takes the options of every command that uses a line.
.SS "velk config [OPTION]... COMMAND ..."
Configuration.
.SS "velk config check [OPTION]... FILE"
Check it.
.TP
\fIFILE\fR
The file.
.TP
\fB\-\-storage\fR \fIDIR\fR
The folder.
.SS "velk trace [OPTION]... [COMMAND]..."
Trace it.
.TP
\fICOMMAND\fR
The command.
.TP
\fB\-o\fR, \fB\-\-output\fR \fIFILE\fR
The file.
.SS "velk help [OPTION]... [COMMAND]..."
Help.
.TP
\fICOMMAND\fR
The command.
)");
}

TEST_F(SmallTree, TheManualHasFlagsOnceThatMeanTheSame) {
    Argument port = flag("-p,--port", "PORT", "A port's name", {}, {.byDefault = "ttyS0"});
    EXPECT_EQ(velk::manOptions({port}),
              ".TP\n\\fB\\-p\\fR, \\fB\\-\\-port\\fR \\fIPORT\\fR\nA port's name; ttyS0 by default.\n");
    EXPECT_THAT(velk::manCommands(tree, {port}), Not(HasSubstr("A port's name")));
    port.description = "Another meaning";
    EXPECT_THAT(velk::manCommands(tree, {port}), HasSubstr("A port's name"))
        << "explained where it means another thing";
}

TEST(Manual, TakesNoTextForItsOwnSigns) {
    EXPECT_EQ(velk::manText(".dot -x \\ \"q\"\n'line"), "\\&.dot \\-x \\e \\(dqq\\(dq\n\\&'line");
}

TEST_F(SmallTree, AnotherMarkInTheTemplateStays) {
    EXPECT_EQ(velk::fillManual("a @VERSION@ b @OTHER@ @VERSION@", tree, {}, "1.2"), "a 1.2 b @OTHER@ 1.2");
}

/** The tree of velk itself. */
class WholeTree : public testing::Test {
protected:
    static void forEach(Command const& command, std::string const& path,
                        std::function<void(Command const&, std::string const&)> const& visit) {
        visit(command, path);
        for (Command const& each : command.commands) {
            forEach(each, path + " " + each.name, visit);
        }
    }

    velk::Terminal terminal{velk::StreamKinds{}};
    base::Signals interrupt;
    host::SteadyClock clock;
    velk::Context context{.terminal = terminal, .interrupt = interrupt, .clock = clock};
    std::unique_ptr<Command const> root = velk::makeCommandTree(context);
    Command const& tree = *root;
};

TEST_F(WholeTree, HasEveryCommand) {
    std::vector<std::string> names;
    std::transform(tree.commands.begin(), tree.commands.end(), std::back_inserter(names),
                   [](Command const& each) { return each.name; });
    EXPECT_THAT(names, testing::UnorderedElementsAre("ports", "init", "check", "symbols", "read", "write", "watch",
                                                     "console", "trace", "plc", "config", "completions", "help"));
}

TEST_F(WholeTree, EverythingIsExplainedInOneWay) {
    forEach(tree, "velk", [](Command const& command, std::string const& path) {
        EXPECT_FALSE(command.description.empty()) << path;
        EXPECT_FALSE(command.description.ends_with('.')) << path << ": the manual puts it there";
        for (Argument const& each : command.flags) {
            EXPECT_FALSE(each.description.empty()) << path << " " << each.name;
            EXPECT_FALSE(each.description.ends_with('.')) << path << " " << each.name;
        }
        for (Argument const& each : command.words) {
            EXPECT_FALSE(each.description.empty()) << path << " " << each.name;
        }
    });
}

TEST_F(WholeTree, InitSaysWhatItsFlagsMeanToIt) {
    Command const& init = *tree.findCommand("init");
    EXPECT_EQ(init.findFlag("--file")->text(), "Project file to write; velk.toml in the current folder by default");
    EXPECT_EQ(init.findFlag("-n")->text(), "Node number of the station; 0 by default");
    EXPECT_EQ(init.findFlag("--node")->value.text(), "0..256");
}

TEST_F(WholeTree, EveryDefaultOfALineIsTheDriversOwnAndIsNamed) {
    std::map<std::string, std::string> const wanted{
        {"--baud", "19200"},     {"--parity", "none"},    {"--stopbits", "1"},
        {"--mode", "RS-232"},    {"--framing", "routed"}, {"--repeat", "2"},
        {"--byte-order", "big"}, {"--block-size", "128"}, {"--timeout", "10000"}};
    Command const& read = *tree.findCommand("read");
    for (auto const& [name, value] : wanted) {
        ASSERT_NE(read.findFlag(name), nullptr) << name;
        EXPECT_THAT(read.findFlag(name)->text(), testing::EndsWith("; " + value + " by default")) << name;
    }
}

TEST_F(SmallTree, TheManualNamesTheDriversOwnSettings) {
    EXPECT_EQ(velk::fillManual("@BAUD@ @PARITY@ @STOPBITS@ @MODE@ @FRAMING@ @BYTE_ORDER@ @BLOCK_SIZE@ @TIMEOUT_MS@ "
                               "@REPEAT@ @ROUTING_LEVELS@ @COUPLER@ @CHANNEL@ @ADDRESS@",
                               tree, {}, "1.2"),
              "19200 none 1 RS\\-232 routed big 128 10000 2 0 0 0 0.0.0.0");
}

TEST_F(WholeTree, NoLineOfHelpIsTooLong) {
    forEach(tree, "velk", [](Command const& command, std::string const& path) {
        std::istringstream lines(velk::helpText(command, path));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 80U) << path << ": " << line;
        }
    });
}

} // namespace
