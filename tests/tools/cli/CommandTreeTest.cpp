#include "tools/velk/cli/CommandTree.h"

#include "base/Signals.h"
#include "host/services/Clock.h"
#include "tools/velk/cli/CommandLine.h"
#include "tools/velk/cli/Completions.h"
#include "tools/velk/cli/HelpFormatter.h"
#include "tools/velk/cli/Manual.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Wrapping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using velk::CommandInfo;

/** The tree of a small program. */
class SmallTree : public testing::Test {
protected:
    SmallTree() {
        app.set_help_flag();
        CLI::App* const read = app.add_subcommand("read", "Read a [thing]");
        read->set_help_flag();
        read->add_option("names", names, "What")->type_name("NAME");
        read->add_option("-p,--port", port, "A port's name")->type_name("PORT")->group("Line");
        read->add_option("--parity", parity, "Parity")->check(CLI::IsMember(std::vector<std::string>{"none", "even"}));
        read->add_option("--stop", stop, "Stop bits")->check(CLI::Range(1, 2))->type_name("");
        read->add_flag("--json", json, "As JSON");
        read->add_option("--secret", secret, "Hidden")->group("");
        CLI::Option_group* const form = read->add_option_group("Form");
        form->add_flag("--csv", csv, "As CSV");
        CLI::App* const config = app.add_subcommand("config", "Configuration");
        config->set_help_flag();
        CLI::App* const check = config->add_subcommand("check", "Check it");
        check->set_help_flag();
        check->add_option("file", file, "The file")->type_name("FILE")->required();
        tree = velk::describeCommand(app);
    }

    std::vector<std::string> names;
    std::string port;
    std::string parity;
    std::string secret;
    std::string file;
    int stop = 0;
    bool json = false;
    bool csv = false;
    CLI::App app{"A program", "velk"};
    CommandInfo tree;
};

TEST_F(SmallTree, IsDescribedAsItIsParsed) {
    ASSERT_EQ(tree.commands.size(), 2U);
    CommandInfo const& read = tree.commands[0];
    EXPECT_EQ(read.name, "read");
    ASSERT_EQ(read.words.size(), 1U);
    EXPECT_EQ(read.words[0].name, "NAME");
    EXPECT_TRUE(read.words[0].repeated);
    EXPECT_FALSE(read.words[0].required);
    ASSERT_EQ(read.flags.size(), 5U) << "what is hidden is not described";
    EXPECT_THAT(read.flags[0].names, ElementsAre("-p", "--port"));
    EXPECT_EQ(read.flags[0].group, "Line");
    EXPECT_EQ(read.flags[0].value.placeholder, "PORT");
    EXPECT_THAT(read.flags[1].value.choices, ElementsAre("none", "even"));
    EXPECT_EQ(read.flags[1].value.placeholder, "none|even");
    EXPECT_EQ(read.flags[2].value.placeholder, "1..2");
    EXPECT_EQ(read.flags[3].value.placeholder, "") << "a flag without a value";
    EXPECT_THAT(read.flags[4].names, ElementsAre("--csv"));
    EXPECT_EQ(read.flags[4].group, "Form") << "one of several that exclude each other";
    EXPECT_EQ(velk::usageLine(read, "velk read"), "velk read [OPTION]... [NAME]...");
    EXPECT_EQ(velk::usageLine(tree, "velk"), "velk [OPTION]... COMMAND ...");
    EXPECT_EQ(velk::usageLine(tree.commands[1].commands[0], "velk config check"), "velk config check [OPTION]... FILE");
}

TEST(DescribedFlag, KeepsAColonWithinBracketsOfItsPlaceholder) {
    CLI::App app;
    std::string text;
    CLI::Option const& plain = *app.add_option("--after", text, "When")->type_name("TIME[:FILE]");
    EXPECT_EQ(velk::describeFlag(plain).value.placeholder, "TIME[:FILE]");
    CLI::Option const& checked = *app.add_option("--in", text, "Where")->type_name("FILE")->check(CLI::ExistingFile);
    EXPECT_EQ(velk::describeFlag(checked).value.placeholder, "FILE");
}

TEST_F(SmallTree, HelpHasTwoColumns) {
    EXPECT_EQ(velk::helpText(tree.commands[0], "velk read"), R"(Usage: velk read [OPTION]... [NAME]...

Read a [thing]

Words:
  NAME                    What

Line:
  -p, --port PORT         A port's name

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

TEST_F(SmallTree, BashOffersCommandsFlagsAndValues) {
    std::string const script = velk::bashCompletion(tree);
    EXPECT_THAT(script, HasSubstr("\"read\"|\"config\"|\"config check\")"));
    EXPECT_THAT(script, HasSubstr("compgen -W 'read config'"));
    EXPECT_THAT(script, HasSubstr("compgen -W '-p --port --parity --stop --json --csv'"));
    EXPECT_THAT(script,
                HasSubstr("\"read:--parity\")\n        mapfile -t COMPREPLY < <(compgen -W 'none even' -- \"$cur\")"));
    EXPECT_THAT(script, HasSubstr("\"read:-p\"|\"read:--port\")\n        mapfile -t COMPREPLY < <(compgen -G"));
    EXPECT_THAT(script, HasSubstr("compgen -W 'check'"));
    EXPECT_THAT(script, Not(HasSubstr("secret")));
}

TEST_F(SmallTree, ZshOffersCommandsFlagsAndValues) {
    std::string const script = velk::zshCompletion(tree);
    EXPECT_THAT(script, testing::StartsWith("#compdef velk\n"));
    EXPECT_THAT(script, HasSubstr("('read'|'config'|'config check')"));
    EXPECT_THAT(script, HasSubstr("'(-p --port)--port[A port'\\''s name]:PORT:_files -W /dev -g \"tty*\"'"));
    EXPECT_THAT(script, HasSubstr("'--parity[Parity]:none|even:(none even)'"));
    EXPECT_THAT(script, HasSubstr("'--json[As JSON]'"));
    EXPECT_THAT(script, HasSubstr("':FILE:_files'"));
    EXPECT_THAT(script, HasSubstr("'*:NAME:()'")) << "nothing to offer, and nothing in the way of flags";
    EXPECT_THAT(script, Not(HasSubstr("secret")));
}

TEST_F(SmallTree, FishOffersCommandsFlagsAndValues) {
    std::string const script = velk::fishCompletion(tree);
    EXPECT_THAT(script, HasSubstr("complete -c velk -n '__fish_use_subcommand' -a read -d 'Read a [thing]'\n"));
    EXPECT_THAT(script, HasSubstr("complete -c velk -n '__fish_seen_subcommand_from read' -l parity -x -a 'none even' "
                                  "-d 'Parity'\n"));
    EXPECT_THAT(script, HasSubstr("-a '(complete -C (__velk_traced))'\n"));
    EXPECT_THAT(script, HasSubstr("-s p -l port -x -a '(ls -d /dev/tty*)' -d 'A port'\\''s name'\n"));
    EXPECT_THAT(script, HasSubstr("complete -c velk -n '__fish_seen_subcommand_from config; and not "
                                  "__fish_seen_subcommand_from check' -a check -d 'Check it'\n"));
    EXPECT_THAT(script, Not(HasSubstr("secret")));
}

TEST_F(SmallTree, TheManualHasEveryCommand) {
    EXPECT_EQ(velk::manCommands(tree), R"(.SS "velk read [OPTION]... [NAME]..."
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
Takes the options of every command with a line.
.SS "velk config [OPTION]... COMMAND ..."
Configuration.
.SS "velk config check [OPTION]... FILE"
Check it.
.TP
\fIFILE\fR
The file.
)");
    EXPECT_EQ(velk::manCommonOptions(tree), ".TP\n\\fB\\-p\\fR, \\fB\\-\\-port\\fR \\fIPORT\\fR\nA port's name.\n");
}

TEST(Manual, AFlagThatMeansAnotherThingToOneCommandIsExplainedThere) {
    CLI::App app{"A program", "velk"};
    app.set_help_flag();
    std::string file;
    for (char const* const name : {"init", "read", "watch"}) {
        CLI::App* const command = app.add_subcommand(name, "Does something");
        command->set_help_flag();
        bool const writes = command->get_name() == "init";
        command->add_option("--file", file, writes ? "File to write" : "File to read")->type_name("F")->group("Line");
    }
    CommandInfo const tree = velk::describeCommand(app);
    EXPECT_EQ(velk::manCommonOptions(tree), ".TP\n\\fB\\-\\-file\\fR \\fIF\\fR\nFile to read.\n");
    std::string const commands = velk::manCommands(tree);
    EXPECT_THAT(commands, HasSubstr("Does something.\n.TP\n\\fB\\-\\-file\\fR \\fIF\\fR\nFile to write.\n"));
    EXPECT_THAT(commands, Not(HasSubstr("File to read")));
}

TEST(Manual, TakesNoTextForItsOwnSigns) {
    EXPECT_EQ(velk::manText(".dot -x \\ \"q\"\n'line"), "\\&.dot \\-x \\e \\(dqq\\(dq\n\\&'line");
}

TEST_F(SmallTree, AnotherMarkInTheTemplateStays) {
    EXPECT_EQ(velk::fillManual("a @VERSION@ b @OTHER@ @VERSION@", tree, "1.2"), "a 1.2 b @OTHER@ 1.2");
}

/** The tree of velk itself. */
class WholeTree : public testing::Test {
protected:
    static void forEach(CommandInfo const& command, std::string const& path,
                        std::function<void(CommandInfo const&, std::string const&)> const& visit) {
        visit(command, path);
        for (CommandInfo const& each : command.commands) {
            forEach(each, path + " " + each.name, visit);
        }
    }

    velk::Terminal terminal{velk::StreamKinds{}};
    base::Signals interrupt;
    host::SteadyClock clock;
    velk::Context context{.terminal = terminal, .interrupt = interrupt, .clock = clock};
    CommandInfo tree = velk::describeCommand(*velk::makeCommandTree(context));
};

TEST_F(WholeTree, HasEveryCommand) {
    std::vector<std::string> names;
    std::transform(tree.commands.begin(), tree.commands.end(), std::back_inserter(names),
                   [](CommandInfo const& each) { return each.name; });
    EXPECT_THAT(names, testing::UnorderedElementsAre("ports", "init", "check", "symbols", "read", "write", "watch",
                                                     "console", "trace", "plc", "config", "completions", "help"));
}

TEST_F(WholeTree, EverythingIsExplainedInOneWay) {
    forEach(tree, "velk", [](CommandInfo const& command, std::string const& path) {
        EXPECT_FALSE(command.description.empty()) << path;
        EXPECT_FALSE(command.description.ends_with('.')) << path << ": the manual puts it there";
        for (velk::FlagInfo const& flag : command.flags) {
            EXPECT_FALSE(flag.description.empty()) << path << " " << flag.names.back();
            EXPECT_FALSE(flag.description.ends_with('.')) << path << " " << flag.names.back();
        }
        for (velk::WordInfo const& word : command.words) {
            EXPECT_FALSE(word.description.empty()) << path << " " << word.name;
        }
    });
}

TEST_F(WholeTree, InitSaysWhatItsFlagsMeanToIt) {
    auto const init = std::find_if(tree.commands.begin(), tree.commands.end(),
                                   [](CommandInfo const& each) { return each.name == "init"; });
    std::map<std::string, velk::FlagInfo> flags;
    for (velk::FlagInfo const& flag : init->flags) {
        flags[flag.names.back()] = flag;
    }
    EXPECT_EQ(flags["--file"].description, "Project file to write; velk.toml in the current folder by default");
    EXPECT_EQ(flags["--node"].description, "Node number of the station; 0 by default");
    EXPECT_EQ(flags["--node"].value.placeholder, "0..256");
}

TEST_F(WholeTree, EveryDefaultOfALineIsTheDriversOwnAndIsNamed) {
    auto const read = std::find_if(tree.commands.begin(), tree.commands.end(),
                                   [](CommandInfo const& each) { return each.name == "read"; });
    std::map<std::string, std::string> const wanted{
        {"--baud", "19200"},     {"--parity", "none"},    {"--stopbits", "1"},
        {"--mode", "RS-232"},    {"--framing", "routed"}, {"--repeat", "2"},
        {"--byte-order", "big"}, {"--block-size", "128"}, {"--timeout", "10000"}};
    std::size_t found = 0;
    for (velk::FlagInfo const& flag : read->flags) {
        if (auto const each = wanted.find(flag.names.back()); each != wanted.end()) {
            EXPECT_THAT(flag.description, testing::EndsWith("; " + each->second + " by default")) << each->first;
            ++found;
        }
    }
    EXPECT_EQ(found, wanted.size());
}

TEST_F(SmallTree, TheManualNamesTheDriversOwnSettings) {
    EXPECT_EQ(velk::fillManual("@BAUD@ @PARITY@ @STOPBITS@ @MODE@ @FRAMING@ @BYTE_ORDER@ @BLOCK_SIZE@ @TIMEOUT_MS@ "
                               "@REPEAT@ @ROUTING_LEVELS@ @COUPLER@ @CHANNEL@ @ADDRESS@",
                               tree, "1.2"),
              "19200 none 1 RS\\-232 routed big 128 10000 2 0 0 0 0.0.0.0");
}

TEST_F(WholeTree, NoLineOfHelpIsTooLong) {
    forEach(tree, "velk", [](CommandInfo const& command, std::string const& path) {
        std::istringstream lines(velk::helpText(command, path));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 80U) << path << ": " << line;
        }
    });
}

} // namespace
