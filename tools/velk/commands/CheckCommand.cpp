#include "tools/velk/commands/CheckCommand.h"

#include "tools/velk/CommandError.h"
#include "tools/velk/Context.h"
#include "tools/velk/Interrupt.h"
#include "tools/velk/Readings.h"
#include "tools/velk/Session.h"
#include "tools/velk/Terminal.h"
#include "tools/velk/Text.h"
#include "tools/velk/check/Diagnosis.h"
#include "tools/velk/check/LineScan.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace velk {
namespace {

constexpr int kScanTimeoutMs = 300;

CheckedSettings checkedSettings(Settings const& settings) {
    LineCandidate const line = candidateOf(settings);
    host::NodeSettings const node = settings.nodeSettings(settings.node);
    return {line.baud, line.parity, line.framing == "routed", line.byteOrder == "big", node.blockSize, node.timeoutMs};
}

/** Nothing is tried twice: the first failure is the one to be told. */
Settings withOneAttempt(Settings settings) {
    settings.config.nodes.repeat = 1;
    for (host::NodeOverrides& own : settings.config.nodeOverrides) {
        own.repeat.reset();
    }
    return settings;
}

/** One walk along the line. */
class Walk {
public:
    Walk(Settings const& settings, Context& context)
        : context_(context), settings_(settings), session_(settings, context),
          attachment_(context.observers, progress_) {}

    ExitCode run();

private:
    ExitCode readOne(SymbolTable const& table);
    ExitCode fail(CheckStep step, host::Failure const& failure, ExitCode code);
    ExitCode failOnLine(host::Failure const& failure);
    void say(CheckStep step, Colour colour, std::string_view word, std::string const& detail);
    void sayUntil(CheckStep failed);

    Context& context_;
    Settings settings_;
    Session session_;
    LineProgress progress_;
    Attachment attachment_;
    std::optional<CheckStep> said_; ///< the last step that was told of
};

void Walk::say(CheckStep step, Colour colour, std::string_view word, std::string const& detail) {
    constexpr int kStepWidth = 26;
    constexpr int kWordWidth = 7;
    std::string line = fmt::format("{:{}} ", stepText(step), kStepWidth);
    line += context_.terminal.coloured(colour, fmt::format("{:{}}", word, detail.empty() ? 0 : kWordWidth));
    context_.terminal.out(line + (detail.empty() ? "" : " " + detail) + "\n");
    said_ = step;
}

/** The steps before the one that failed went well. */
void Walk::sayUntil(CheckStep failed) {
    for (CheckStep const step : kCheckSteps) {
        if (step < failed && (!said_ || step > *said_)) {
            say(step, Colour::Green, "good", "");
        }
    }
}

ExitCode Walk::fail(CheckStep step, host::Failure const& failure, ExitCode code) {
    if (code == ExitCode::Interrupted) {
        return code;
    }
    CheckedSettings const settings = checkedSettings(settings_);
    sayUntil(step);
    say(step, Colour::Red, "FAILED", session_.describe(failure));
    for (CheckStep const later : kCheckSteps) {
        if (later > step) {
            say(later, Colour::Dim, "not reached", "");
        }
    }
    std::string text = "\n";
    if (step != CheckStep::Port) {
        for (std::string const& line : lastWordsText(progress_.lastWords(), settings)) {
            text += line + "\n";
        }
        text += "\n";
    }
    text += "Likeliest causes:\n";
    int number = 0;
    for (std::string const& cause :
         likelyCauses(step, symptomOf(step, progress_.lastWords(), failure, settings), settings)) {
        text += fmt::format("  {}. {}\n", ++number, cause);
    }
    context_.terminal.out(text);
    return code;
}

/** The port is open: the frames tell which step it was. */
ExitCode Walk::failOnLine(host::Failure const& failure) {
    return fail(failedStep(progress_, true), failure, session_.exitCode(failure));
}

/** A variable that can be read as it is, and fast, or null. */
Variable const* readable(SymbolTable const& table) {
    auto const& variables = table.variables();
    constexpr std::uint16_t kAreas = 6;
    constexpr std::uint32_t kMostBytes = 256;
    auto const found = std::find_if(variables.begin(), variables.end(), [](Variable const& each) {
        return each.area < kAreas && each.size > 0 && each.size <= kMostBytes && each.type != "DATA" &&
               each.name.find_first_of("?*[:=") == std::string::npos;
    });
    return found == variables.end() ? nullptr : &*found;
}

ExitCode Walk::run() {
    if (host::Outcome const opened = session_.open(); !opened.ok()) {
        return fail(CheckStep::Port, opened.failure(), session_.exitCode(opened.failure()));
    }
    say(CheckStep::Port, Colour::Green, "good", displayable(settings_.config.uart));
    host::Result<SymbolTable const*> const symbols = session_.symbols(settings_.node);
    if (!symbols.ok()) {
        return failOnLine(symbols.failure());
    }
    SymbolTable const& table = *symbols.value();
    sayUntil(CheckStep::SymbolFile);
    std::string const origin = progress_.filePieces() > 0
                                   ? "fetched in " + counted(progress_.filePieces(), "piece", "pieces")
                                   : "stored already";
    say(CheckStep::SymbolFile, Colour::Green, "good",
        fmt::format("{} variables, {}", table.variables().size(), origin));
    return readOne(table);
}

ExitCode Walk::readOne(SymbolTable const& table) {
    Variable const* const variable = readable(table);
    if (variable == nullptr) {
        say(CheckStep::Read, Colour::Yellow, "skipped", "the program has no variable that can be read");
        return ExitCode::Good;
    }
    TagRequest request;
    request.shown = variable->name;
    request.node = settings_.node;
    request.variable = variable->name;
    host::Result<std::vector<Tag>> const tags = session_.createTags(request);
    if (!tags.ok()) {
        return failOnLine(tags.failure());
    }
    host::TagResult const result = session_.read(tags.value()).front();
    if (!result.good) {
        return fail(CheckStep::Read, result.failure, session_.exitCode(result));
    }
    say(CheckStep::Read, Colour::Green, "good",
        displayable(variable->name) + " = " + displayable(tags.value().front().text(result.value)));
    return ExitCode::Good;
}

/** How far the PLC answers to one candidate. */
enum class Answer {
    NotPossible, ///< the port does not take such settings
    None,
    Bytes,
    LinkCheck,
};

/** Seeks the settings of a line by trying them. */
class Scan {
public:
    Scan(Settings settings, Context& context)
        : context_(context), settings_(std::move(settings)),
          timeoutMs_(context.options.timeoutMs.value_or(kScanTimeoutMs)) {}

    ExitCode run();

private:
    Answer tryOne(LineCandidate const& candidate);
    ExitCode found(LineCandidate const& candidate);
    ExitCode foundNone();

    Context& context_;
    Settings settings_;
    int timeoutMs_;
    bool triedAny_ = false;
    std::vector<LineCandidate> stirred_; ///< something came, and no answer
};

Answer Scan::tryOne(LineCandidate const& candidate) {
    LineProgress progress;
    Attachment const attachment(context_.observers, progress);
    Session session(settingsFor(settings_, candidate, timeoutMs_), context_);
    if (host::Outcome const opened = session.open(); !opened.ok()) {
        // A port that could be opened before, and is still there, only lacks these settings.
        if (triedAny_ && portSymptom(opened.failure().text) == Symptom::PortFault) {
            return Answer::NotPossible;
        }
        throw session.error(opened.failure());
    }
    triedAny_ = true;
    host::Result<SymbolTable const*> const symbols = session.symbols(settings_.node);
    if (!symbols.ok()) {
        ExitCode const code = session.exitCode(symbols.failure());
        if (code == ExitCode::Port || code == ExitCode::Interrupted) {
            throw session.error(symbols.failure());
        }
    }
    // An answer that the driver does not take is none, although its frames may be right in another framing or order.
    bool const wentOn = progress.triedLogin();
    if (progress.reached(CheckStep::LinkCheck) && wentOn) {
        return Answer::LinkCheck;
    }
    return progress.reached(CheckStep::Bytes) ? Answer::Bytes : Answer::None;
}

ExitCode Scan::found(LineCandidate const& candidate) {
    context_.terminal.status("");
    context_.terminal.note("The PLC answers at " + candidateText(candidate) + ". For the project file:");
    context_.terminal.out(projectLines(settings_, candidate));
    return ExitCode::Good;
}

ExitCode Scan::foundNone() {
    context_.terminal.status("");
    if (stirred_.empty()) {
        context_.terminal.complain("nothing came back with any of the usual settings: likely the wiring, a PLC that is "
                                   "off, or a way through couplers that is not in the settings");
        return ExitCode::Silent;
    }
    context_.terminal.complain("the PLC answers to none of the usual settings; bytes came back with these:");
    for (LineCandidate const& candidate : stirred_) {
        context_.terminal.note("  " + candidateText(candidate));
    }
    return ExitCode::Refused;
}

ExitCode Scan::run() {
    std::vector<LineCandidate> const candidates = scanCandidates(candidateOf(settings_));
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (context_.interrupt.requested()) {
            return ExitCode::Interrupted;
        }
        context_.terminal.status(fmt::format("{} of {}: {}", i + 1, candidates.size(), candidateText(candidates[i])));
        Answer const answer = tryOne(candidates[i]);
        if (answer == Answer::LinkCheck) {
            return found(candidates[i]);
        }
        if (answer == Answer::Bytes) {
            stirred_.push_back(candidates[i]);
        }
    }
    return foundNone();
}

} // namespace

ExitCode runCheck(CheckOptions const& options, Context& context) {
    Settings const settings = readSettings(context);
    echoSettings(settings, context);
    return options.scan ? Scan(settings, context).run() : Walk(withOneAttempt(settings), context).run();
}

void addCheckCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("check", "Walk the line step by step and tell what is wrong at the first step that fails");
    auto const options = std::make_shared<CheckOptions>();
    command->add_flag("--scan", options->scan,
                      "Try the usual speeds, parities, framings and byte orders and tell which the PLC answers to");
    addLineOptions(*command, context);
    command->callback(
        [options, &context] { context.action = [options, &context] { return runCheck(*options, context); }; });
}

} // namespace velk
