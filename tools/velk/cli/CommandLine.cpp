#include "tools/velk/cli/CommandLine.h"

#include "base/Complaints.h"
#include "base/Signals.h"
#include "tools/velk/cli/CompletionsCommand.h"
#include "tools/velk/cli/HelpCommand.h"
#include "tools/velk/cli/HelpFormatter.h"
#include "tools/velk/cli/MisplacedFlag.h"
#include "tools/velk/cli/UsageText.h"
#include "tools/velk/cli/Version.h"
#include "tools/velk/commands/ConfigCommand.h"
#include "tools/velk/commands/ConsoleCommand.h"
#include "tools/velk/commands/InitCommand.h"
#include "tools/velk/commands/ReadCommand.h"
#include "tools/velk/commands/TraceCommand.h"
#include "tools/velk/commands/check/CheckCommand.h"
#include "tools/velk/commands/ports/PortsCommand.h"
#include "tools/velk/commands/simulate/PlcCommand.h"
#include "tools/velk/commands/symbols/SymbolsCommand.h"
#include "tools/velk/commands/watch/WatchCommand.h"
#include "tools/velk/commands/write/WriteCommand.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <algorithm>
#include <span>
#include <sstream>
#include <utility>

namespace velk {
namespace {

/** In the order in which somebody at a machine needs them. */
void addCommands(CLI::App& app, Context& context) {
    addPortsCommand(app, context);
    addInitCommand(app, context);
    addCheckCommand(app, context);
    addSymbolsCommand(app, context);
    addReadCommand(app, context);
    addWriteCommand(app, context);
    addWatchCommand(app, context);
    addConsoleCommand(app, context);
    addTraceCommand(app, context);
    addPlcCommand(app, context);
    addConfigCommand(app, context);
    addCompletionsCommand(app, context);
    addHelpCommand(app, context);
}

/** Answers what the parser itself has to say: help, the version, or a complaint about the words. */
ExitCode answerParser(CLI::App const& app, CLI::ParseError const& answer, Terminal& terminal) {
    std::ostringstream out;
    std::ostringstream complaint;
    if (app.exit(answer, out, complaint) == 0) {
        terminal.out(out.str());
        return ExitCode::Good;
    }
    std::string text = complaint.str();
    text.erase(text.find_last_not_of('\n') + 1);
    terminal.complain(text);
    return ExitCode::Usage;
}

void refuseMisplacedFlag(CLI::App const& at, std::string const& path, std::span<std::string const> words) {
    if (std::string const reason = misplacedFlag(at, path, words); !reason.empty()) {
        throw CommandError(ExitCode::Usage, reason);
    }
}

/** The parser would answer the help of what it knows, or ask for a command where one is misspelt. */
void refuseUnknownCommand(CLI::App& app, std::span<std::string const> words) {
    CLI::App* at = &app;
    std::string path = app.get_name();
    for (; !words.empty(); words = words.subspan(1)) {
        std::string const& word = words.front();
        std::vector<std::string> const commands = commandsOf(*at);
        if (commands.empty()) {
            return;
        }
        if (word.starts_with('-')) {
            return refuseMisplacedFlag(*at, path, words);
        }
        if (std::find(commands.begin(), commands.end(), word) == commands.end()) {
            throw CommandError(ExitCode::Usage, "there is no command '" + displayable(word) + "'" +
                                                    didYouMean(word, commands) + "\n" + path +
                                                    " --help lists the commands");
        }
        at = at->get_subcommand(word);
        path += " " + word;
    }
}

ExitCode parseAndRun(std::vector<std::string> words, Context& context) {
    std::unique_ptr<CLI::App> const app = makeCommandTree(context);
    if (words.empty()) {
        context.terminal.complain("what is to be done?\n\n" + app->help());
        return ExitCode::Usage;
    }
    refuseUnknownCommand(*app, words);
    context.action = nullptr;
    context.options = {};
    std::reverse(words.begin(), words.end()); // the parser takes them from the end
    try {
        app->parse(words);
    } catch (CLI::ParseError const& answer) {
        return answerParser(*app, answer, context.terminal);
    }
    if (!context.action) {
        throw CommandError(ExitCode::Usage, "this command does nothing yet");
    }
    context.terminal.setQuiet(context.options.quiet);
    Context::Action const action = std::move(context.action); // it may run a command line of its own
    return action();
}

} // namespace

std::unique_ptr<CLI::App> makeCommandTree(Context& context) {
    auto app = std::make_unique<CLI::App>("Variables of a PLC by name, over its serial line", "velk");
    app->require_subcommand(1);
    app->formatter(std::make_shared<HelpFormatter>());
    app->failure_message([](CLI::App const* top, CLI::Error const& error) { return usageText(*top, error); });
    app->set_version_flag("-V,--version", versionText, "Print the versions of velk and of the driver module");
    app->set_help_flag("-h,--help", "Print this help");
    addCommands(*app, context);
    return app;
}

ExitCode runCommandLine(std::vector<std::string> const& arguments, Context& context) {
    context.runCommandLine = [&context](std::vector<std::string> const& words) { return parseAndRun(words, context); };
    try {
        ExitCode const answer = parseAndRun(arguments, context);
        return context.interrupt.requested() ? ExitCode::Interrupted : answer;
    } catch (base::FileError const& error) {
        if (context.interrupt.requested()) { // while it waited for a pipe
            return ExitCode::Interrupted;
        }
        for (std::string const& line : error.complaints()) {
            context.terminal.error(line);
        }
        return ExitCode::Usage;
    } catch (CommandError const& error) {
        if (context.interrupt.requested()) {
            return ExitCode::Interrupted;
        }
        context.terminal.complain(error.what());
        return error.code();
    } catch (std::exception const& problem) {
        context.terminal.complain(problem.what());
        return ExitCode::ItemNotGood;
    }
}

} // namespace velk
