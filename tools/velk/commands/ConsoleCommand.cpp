#include "tools/velk/commands/ConsoleCommand.h"

#include "interfaces/IProtocol.h"
#include "tools/velk/Context.h"
#include "tools/velk/Interrupt.h"
#include "tools/velk/LineEditor.h"
#include "tools/velk/Session.h"
#include "tools/velk/Terminal.h"

#include <optional>
#include <string>
#include <vector>

namespace velk {
namespace {

constexpr std::size_t kReplySize = 64 * 1024;
constexpr char const* kHistoryFile = "console-history";

std::vector<std::string> knownWords() {
    return {"deletetags", "exit", "getid", "getmaxtm", "help",  "info",
            "lasterror",  "quit", "read",  "setid",    "write", "xml"};
}

/** Runs one line in the module; false when it does not know the command. */
bool runLine(IProtocol& module, std::string const& line, Terminal& terminal) {
    std::vector<char> reply(kReplySize + 1); // the reply of a full buffer has no zero of its own
    if (!module.DoCommand(line.c_str(), reply.data(), static_cast<int>(kReplySize))) {
        terminal.complain("the module knows no command '" + line.substr(0, line.find(' ')) + "'; try help");
        return false;
    }
    std::string text = reply.data();
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
    terminal.out(text);
    return true;
}

} // namespace

ExitCode runConsole(Context& context) {
    Settings const settings = readSettings(context);
    echoSettings(settings, context);
    Session session(settings, context);
    session.require(session.open());
    StreamKinds const& streams = context.terminal.kinds();
    LineEditor editor(streams.inputIsTerminal && streams.outputIsTerminal, settings.storage / kHistoryFile,
                      knownWords(), context.interrupt);
    bool allKnown = true;
    while (std::optional<std::string> const line = editor.next("velk> ")) {
        if (*line == "exit" || *line == "quit") {
            break;
        }
        if (!line->empty()) {
            allKnown = runLine(session.panel().driver().protocol(), *line, context.terminal) && allKnown;
        }
    }
    return allKnown ? ExitCode::Good : ExitCode::ItemNotGood;
}

void addConsoleCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("console", "Talk to the module's own console, with its diagnostic commands");
    addLineOptions(*command, context);
    command->callback([&context] { context.action = [&context] { return runConsole(context); }; });
}

} // namespace velk
