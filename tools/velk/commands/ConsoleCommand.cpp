#include "tools/velk/commands/ConsoleCommand.h"

#include "base/Signals.h"
#include "host/instance/DriverFailure.h"
#include "host/instance/ModuleConsole.h"
#include "interfaces/IProtocol.h"
#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/terminal/LineEditor.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Text.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velk {
namespace {

constexpr char const* kHistoryFile = "console-history";

std::vector<std::string> knownWords() {
    return {"deletetags", "exit", "getmaxtm", "help", "info", "lasterror", "quit", "read", "write", "xml"};
}

/** Lines for the module, one after the other. */
class Console {
public:
    explicit Console(Context& context)
        : context_(context), settings_(readSettings(context)), session_(std::make_unique<Session>(settings_, context)) {
    }

    ExitCode run();

private:
    ExitCode runLine(std::string const& line);
    ExitCode lineFailed(base::Failure const& failure);
    bool openAgain();

    Context& context_;
    Settings settings_;
    std::unique_ptr<Session> session_;
    bool away_ = false; ///< the port failed and is not open again
};

/** False while the port is still away. */
bool Console::openAgain() {
    session_.reset(); // with its login, which a restarted PLC does not know; only one session may exist at a time
    session_ = std::make_unique<Session>(settings_, context_);
    if (base::Outcome const opened = session_->open(); !opened.ok()) {
        if (!session_->hasModule()) {
            session_->require(opened);
        }
        context_.terminal.complain(displayable(opened.failure().text));
        return false;
    }
    away_ = false;
    context_.terminal.note("the port is back");
    return true;
}

ExitCode Console::lineFailed(base::Failure const& failure) {
    ExitCode const code = session_->exitCode(failure);
    away_ = code == ExitCode::Port;
    context_.terminal.complain(session_->describe(failure) + (away_ ? "; the next read or write opens it again" : ""));
    return code;
}

/** Runs one line in the module. */
ExitCode Console::runLine(std::string const& line) {
    if (host::asksPlc(line) && away_ && !openAgain()) {
        return ExitCode::Port;
    }
    IProtocol& module = session_->panel().driver().protocol();
    host::ConsoleReply const reply = host::runConsoleLine(module, line);
    switch (reply.kind) {
    case host::ConsoleReply::Kind::UnknownCommand:
        context_.terminal.complain("the module knows no command '" + line.substr(0, line.find(' ')) + "'; try help");
        return ExitCode::ItemNotGood;
    case host::ConsoleReply::Kind::DriverFailed:
        return lineFailed(host::driverFailure(module));
    case host::ConsoleReply::Kind::Complaint:
        context_.terminal.out(reply.text);
        return ExitCode::ItemNotGood;
    case host::ConsoleReply::Kind::Answer:
        break;
    }
    context_.terminal.out(reply.text);
    return ExitCode::Good;
}

ExitCode Console::run() {
    echoSettings(settings_, context_);
    session_->require(session_->open());
    StreamKinds const& streams = context_.terminal.kinds();
    LineEditor editor(streams.inputIsTerminal && streams.outputIsTerminal, settings_.storage / kHistoryFile,
                      knownWords(), context_.interrupt);
    std::vector<ExitCode> codes;
    while (std::optional<std::string> const line = editor.next("velk> ")) {
        if (*line == "exit" || *line == "quit") {
            break;
        }
        if (!line->empty()) {
            codes.push_back(runLine(*line));
        }
    }
    return exitCodeOfItems(codes);
}

ExitCode runConsole(Context& context) {
    return Console(context).run();
}

} // namespace

Command consoleCommand(Context& context) {
    return {.name = "console",
            .description = "Use the module's own console, with its diagnostic commands",
            .flags = lineFlags(context),
            .action = [&context] { return runConsole(context); }};
}

} // namespace velk
