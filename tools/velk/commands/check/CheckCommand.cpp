#include "tools/velk/commands/check/CheckCommand.h"

#include "base/Signals.h"
#include "tools/velk/commands/check/CheckJson.h"
#include "tools/velk/commands/check/CheckText.h"
#include "tools/velk/commands/check/Scan.h"
#include "tools/velk/commands/check/Walk.h"
#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"

#include <fmt/format.h>

#include <limits>
#include <memory>

namespace velk {
namespace {

struct CheckOptions {
    bool scan = false;
    bool json = false;
};

/** Between words on a terminal; programs get a line for each cause. */
std::size_t columnsOf(Terminal const& terminal) {
    return terminal.kinds().outputIsTerminal ? static_cast<std::size_t>(terminal.width())
                                             : std::numeric_limits<std::size_t>::max();
}

ExitCode walk(Settings const& settings, CheckOptions const& options, Context& context) {
    UploadStyle const uploads{.label = stepLabel(CheckStep::SymbolFile), .vanishes = true};
    Walk walk(settings, context, uploads, [&](StepReport const& step) {
        if (!options.json) {
            context.terminal.out(stepLine(step, context.terminal));
        }
    });
    ExitCode const code = walk.run();
    if (code == ExitCode::Interrupted) {
        return code;
    }
    context.terminal.out(options.json ? checkJson(walk.report())
                                      : failureText(walk.report(), columnsOf(context.terminal)));
    return code;
}

void tellFound(LineCandidate const& candidate, Settings const& settings, Context& context) {
    context.terminal.note("The PLC answers at " + candidateText(candidate) + ". For the project file:");
    context.terminal.out(projectLines(settings, candidate));
}

ExitCode tellNothingFound(std::vector<LineCandidate> const& stirred, Terminal& terminal) {
    if (stirred.empty()) {
        terminal.complain(
            "no bytes came back with any of the usual settings: likely the wiring, a PLC that is off, or a "
            "route through couplers that is not in the settings");
        return ExitCode::Silent;
    }
    terminal.complain("the PLC answers to none of the usual settings; bytes came back with these:");
    for (LineCandidate const& candidate : stirred) {
        terminal.error("  " + candidateText(candidate));
    }
    return ExitCode::Refused;
}

ExitCode scan(Settings const& settings, CheckOptions const& options, Context& context) {
    Scan scan(settings, context, [&](LineCandidate const& candidate, std::size_t number, std::size_t count) {
        context.terminal.status(fmt::format("{} of {}: {}", number, count, candidateText(candidate)));
    });
    ScanReport const report = scan.run();
    context.terminal.status("");
    if (context.interrupt.requested()) {
        return ExitCode::Interrupted;
    }
    if (options.json) {
        context.terminal.out(scanJson(report));
    }
    LineCandidate const* const found = report.found();
    if (found == nullptr) {
        return tellNothingFound(report.stirred(), context.terminal);
    }
    if (!options.json) {
        tellFound(*found, settings, context);
    }
    return ExitCode::Good;
}

ExitCode runCheck(CheckOptions const& options, Context& context) {
    Settings const settings = readSettings(context);
    echoSettings(settings, context);
    return options.scan ? scan(settings, options, context) : walk(settings, options, context);
}

} // namespace

Command checkCommand(Context& context) {
    auto const options = std::make_shared<CheckOptions>();
    return {.name = "check",
            .description = "Check the line step by step and say what is wrong at the first step that fails",
            .flags = withLineFlags(
                {flag("--scan", {},
                      "Try the usual speeds, parities, framings and byte orders and show which the PLC answers to",
                      into(options->scan)),
                 flag("--json", {}, "As a JSON document, when all is done", into(options->json))},
                context),
            .action = [options, &context] { return runCheck(*options, context); }};
}

} // namespace velk
