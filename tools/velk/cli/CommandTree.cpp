#include "tools/velk/cli/CommandTree.h"

#include "tools/velk/cli/ChosenCommand.h"
#include "tools/velk/cli/CompletionsCommand.h"
#include "tools/velk/cli/Help.h"
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
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Text.h"

namespace velk {
namespace {

Command helpCommand(Command const& root, Context& context) {
    auto const words = std::make_shared<std::vector<std::string>>();
    auto const run = [words, &root, &context] {
        ChosenCommand const chosen = chooseCommand(root, *words);
        if (!chosen.words.empty()) {
            throw CommandError(ExitCode::Usage, "'" + displayable(chosen.words.front()) +
                                                    "' is one word too many\nvelk help --help lists what it takes");
        }
        context.terminal.out(helpText(*chosen.command, chosen.path));
        return ExitCode::Good;
    };
    return {.name = "help",
            .description = "Show the options of velk or of a command",
            .words = {word("COMMAND", Offer::Commands, "The command", into(*words), {.repeats = true})},
            .action = run};
}

void addHelpFlag(Command& command) {
    command.flags.insert(command.flags.begin(), flag("-h,--help", {}, "Print this help", {}));
    for (Command& each : command.commands) {
        addHelpFlag(each);
    }
}

} // namespace

std::unique_ptr<Command const> makeCommandTree(Context& context) {
    auto root = std::make_unique<Command>(
        Command{.name = "velk",
                .description = "Variables of a PLC by name, over its serial line",
                .flags = {flag("-V,--version", {}, "Print the versions of velk and of the driver module", {})}});
    // In the order in which a user at a machine needs them.
    root->commands = {portsCommand(context),      initCommand(context),    checkCommand(context),
                      symbolsCommand(context),    readCommand(context),    writeCommand(context),
                      watchCommand(context),      consoleCommand(context), traceCommand(context),
                      plcCommand(context),        configCommand(context),  completionsCommand(context),
                      helpCommand(*root, context)};
    addHelpFlag(*root);
    return root;
}

} // namespace velk
