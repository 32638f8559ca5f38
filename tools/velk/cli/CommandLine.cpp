#include "tools/velk/cli/CommandLine.h"

#include "base/Complaints.h"
#include "base/Signals.h"
#include "tools/velk/cli/Arguments.h"
#include "tools/velk/cli/Candidates.h"
#include "tools/velk/cli/ChosenCommand.h"
#include "tools/velk/cli/CommandTree.h"
#include "tools/velk/cli/Help.h"
#include "tools/velk/cli/Manual.h"
#include "tools/velk/cli/Version.h"
#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/terminal/Terminal.h"

#include <iostream>
#include <iterator>
#include <span>

namespace velk {
namespace {

// Commands for programs, not shown in the help.
constexpr char const* kComplete = "__complete"; ///< completions of the last word after it
constexpr char const* kManual = "__manual";     ///< used by the build for the manual pages

/** Prints the manual page for the template on standard input. */
std::string manual(Command const& root, Context& context) {
    std::vector<Argument> common = lineFlags(context);
    common.insert(common.begin(), *root.findFlag("--help"));
    std::string const page{std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
    return fillManual(page, root, common, VELK_VERSION);
}

ExitCode parseAndRun(std::vector<std::string> const& words, Context& context) {
    std::unique_ptr<Command const> const root = makeCommandTree(context);
    if (words.empty()) {
        context.terminal.complain("what is to be done?\n\n" + helpText(*root, root->name));
        return ExitCode::Usage;
    }
    if (words.front() == kComplete || words.front() == kManual) {
        context.terminal.out(words.front() == kManual ? manual(*root, context)
                                                      : candidates(*root, std::span(words).subspan(1)));
        return ExitCode::Good;
    }
    context.options = {};
    ChosenCommand const chosen = chooseCommand(*root, words);
    ParsedWords const parsed = parseWords(*chosen.command, chosen.words);
    if (parsed.flags.contains("--help")) {
        context.terminal.out(helpText(*chosen.command, chosen.path));
        return ExitCode::Good;
    }
    if (parsed.flags.contains("--version")) {
        context.terminal.out(versionText() + "\n");
        return ExitCode::Good;
    }
    takeArguments(chosen, parsed);
    context.terminal.setQuiet(context.options.quiet);
    return chosen.command->action();
}

} // namespace

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
