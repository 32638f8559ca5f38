#include "tools/velk/commands/ConsoleCommand.h"

#include "host/ProtocolFailure.h"
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

constexpr std::size_t kReplySize = 65'536;
constexpr char const* kHistoryFile = "console-history";

std::vector<std::string> knownWords() {
    return {"deletetags", "exit", "getmaxtm", "help", "info", "lasterror", "quit", "read", "write", "xml"};
}

/** Only these two ask the PLC; what they do not end with an end of line is the driver's last error, or nothing. */
bool asksPlc(std::string const& line) {
    std::string const word = line.substr(0, line.find(' '));
    return word == "read" || word == "write";
}

/** Runs one line in the module. */
ExitCode runLine(Session& session, std::string const& line, Terminal& terminal) {
    IProtocol& module = session.panel().driver().protocol();
    std::vector<char> reply(kReplySize + 1); // the reply of a full buffer has no zero of its own
    if (!module.DoCommand(line.c_str(), reply.data(), static_cast<int>(kReplySize))) {
        terminal.complain("the module knows no command '" + line.substr(0, line.find(' ')) + "'; try help");
        return ExitCode::ItemNotGood;
    }
    std::string text = reply.data();
    if (asksPlc(line) && !text.ends_with('\n')) {
        host::Failure const failure = host::protocolFailure(module);
        terminal.complain(session.describe(failure));
        return session.exitCode(failure);
    }
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
    terminal.out(text);
    return asksPlc(line) && text.starts_with("error: ") ? ExitCode::ItemNotGood : ExitCode::Good;
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
    std::vector<ExitCode> codes;
    while (std::optional<std::string> const line = editor.next("velk> ")) {
        if (*line == "exit" || *line == "quit") {
            break;
        }
        if (!line->empty()) {
            codes.push_back(runLine(session, *line, context.terminal));
        }
    }
    return exitCodeOfItems(codes);
}

void addConsoleCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("console", "Talk to the module's own console, with its diagnostic commands");
    addLineOptions(*command, context);
    command->callback([&context] { context.action = [&context] { return runConsole(context); }; });
}

} // namespace velk
