#include "tools/velk/commands/ConsoleCommand.h"

#include "host/instance/ProtocolFailure.h"
#include "interfaces/IProtocol.h"
#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/terminal/Interrupt.h"
#include "tools/velk/terminal/LineEditor.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Text.h"

#include <memory>
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
    bool away_ = false; ///< the port died and is not open again
};

/** False while the port does not come back. */
bool Console::openAgain() {
    session_.reset(); // with its login, which a PLC that was off knows nothing of; the module serves one at a time
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
    if (asksPlc(line) && away_ && !openAgain()) {
        return ExitCode::Port;
    }
    IProtocol& module = session_->panel().driver().protocol();
    std::vector<char> reply(kReplySize + 1); // the reply of a full buffer has no zero of its own
    if (!module.DoCommand(line.c_str(), reply.data(), static_cast<int>(kReplySize))) {
        context_.terminal.complain("the module knows no command '" + line.substr(0, line.find(' ')) + "'; try help");
        return ExitCode::ItemNotGood;
    }
    std::string text = reply.data();
    if (asksPlc(line) && !text.ends_with('\n')) {
        return lineFailed(host::protocolFailure(module));
    }
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
    context_.terminal.out(text);
    return asksPlc(line) && text.starts_with("error: ") ? ExitCode::ItemNotGood : ExitCode::Good;
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
            .description = "Talk to the module's own console, with its diagnostic commands",
            .flags = lineFlags(context),
            .action = [&context] { return runConsole(context); }};
}

} // namespace velk
