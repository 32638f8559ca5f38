#include "tools/velk/commands/check/Walk.h"

#include "tools/velk/context/Context.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace velk {
namespace {

using SystemClock = std::chrono::system_clock;

/** No retries: the first failure is the one to report. */
Settings withOneAttempt(Settings settings) {
    settings.config.nodes.repeat = 1;
    for (host::NodeOverrides& own : settings.config.nodeOverrides) {
        own.repeat.reset();
    }
    return settings;
}

/** A variable that can be read directly and fast, or null. */
Variable const* readable(SymbolTable const& table) {
    auto const& variables = table.variables();
    constexpr std::uint32_t kMostBytes = 256;
    auto const found = std::find_if(variables.begin(), variables.end(), [](Variable const& each) {
        return each.area < kAddressableAreas && each.size > 0 && each.size <= kMostBytes && each.type != "DATA" &&
               each.name.find_first_of("?*[:=") == std::string::npos;
    });
    return found == variables.end() ? nullptr : &*found;
}

std::string programText(FoundProgram const& program) {
    return fmt::format("{} variables, {}", program.variables,
                       program.pieces > 0 ? "fetched in " + counted(program.pieces, "piece", "pieces")
                                          : std::string("stored already"));
}

} // namespace

Walk::Walk(Settings settings, Context& context, UploadStyle uploads, Tell tell)
    : context_(context), settings_(withOneAttempt(std::move(settings))),
      tell_(std::move(tell)), report_{.line = checkedLine(settings_), .steps = {}, .causes = {}, .program = {}},
      session_(settings_, context, std::move(uploads)), progress_([this](CheckStep /*step*/) { tellReached(); }),
      attachment_(context.observers, progress_) {}

// ---- reporting

bool Walk::isNext(CheckStep step) const {
    return report_.steps.empty() ? step == kCheckSteps.front() : step > report_.steps.back().step;
}

void Walk::tell(StepReport step) {
    report_.steps.push_back(std::move(step));
    tell_(report_.steps.back());
}

SystemClock::time_point Walk::timeOf(ReachedStep const* reached) const {
    std::int64_t const ago = reached != nullptr ? context_.clock.microseconds() - reached->at : 0;
    return SystemClock::now() - std::chrono::microseconds(ago);
}

void Walk::tellOk(CheckStep step, std::string found) {
    ReachedStep const* const reached = progress_.find(step);
    tell({.step = step,
          .outcome = StepOutcome::Ok,
          .found = std::move(found),
          .words = reached != nullptr        ? reached->words
                   : step == CheckStep::Port ? LastWords{}
                                             : progress_.lastWords(),
          .at = timeOf(reached)});
}

/** Steps known from the frames alone; called in the middle of an exchange. */
void Walk::tellReached() {
    for (CheckStep const step : {CheckStep::Bytes, CheckStep::LinkCheck, CheckStep::Login}) {
        if (!progress_.reached(step)) {
            return;
        }
        if (isNext(step)) {
            tellOk(step, "");
        }
    }
}

/** The steps before a reached one have succeeded. */
void Walk::tellUntil(CheckStep end) {
    for (CheckStep const step : kCheckSteps) {
        if (step < end && isNext(step)) {
            tellOk(step, "");
        }
    }
}

// ---- checking

ExitCode Walk::fail(CheckStep step, base::Failure const& failure) {
    base::Failure const cause = session_.explained(failure);
    ExitCode const code = exitCodeFor(cause.kind);
    if (code == ExitCode::Interrupted) {
        return code;
    }
    LastWords const& words = progress_.lastWords();
    tellUntil(step);
    tell({.step = step, .outcome = StepOutcome::Failed, .failure = cause, .words = words, .at = SystemClock::now()});
    for (CheckStep const later : kCheckSteps) {
        if (later > step) {
            tell({.step = later});
        }
    }
    CheckedSettings const& settings = report_.line.settings;
    auto const causes = likelyCauses(step, symptomOf(step, words, cause.kind, settings), settings);
    report_.causes.assign(causes.begin(), causes.end());
    return code;
}

/** The port is open: the frames show which step failed. */
ExitCode Walk::failOnLine(base::Failure const& failure) {
    return fail(failedStep(progress_, true), failure);
}

ExitCode Walk::run() {
    if (base::Outcome const opened = session_.open(); !opened.ok()) {
        if (session_.exitCode(opened.failure()) == ExitCode::Usage) { // the module, the configuration, the storage
            throw session_.error(opened.failure());
        }
        return fail(CheckStep::Port, opened.failure());
    }
    tellOk(CheckStep::Port, displayable(settings_.config.uart));
    return findProgram();
}

ExitCode Walk::findProgram() {
    base::Result<SymbolTable const*> const symbols = session_.symbols(settings_.node);
    if (!symbols.ok()) {
        return failOnLine(symbols.failure());
    }
    SymbolTable const& table = *symbols.value();
    report_.program = FoundProgram{table.projectId(), table.variables().size(), progress_.filePieces()};
    tellUntil(CheckStep::SymbolFile);
    tellOk(CheckStep::SymbolFile, programText(*report_.program));
    return readOne(table);
}

ExitCode Walk::readOne(SymbolTable const& table) {
    Variable const* const variable = readable(table);
    if (variable == nullptr) {
        tell({.step = CheckStep::Read,
              .outcome = StepOutcome::Skipped,
              .found = "the program has no variable that can be read",
              .at = SystemClock::now()});
        return ExitCode::Good;
    }
    TagRequest request;
    request.shown = variable->name;
    request.node = settings_.node;
    request.variable = variable->name;
    base::Result<std::vector<Tag>> const tags = session_.createTags(request);
    if (!tags.ok()) {
        return failOnLine(tags.failure());
    }
    host::TagResult const result = session_.read(tags.value()).front();
    if (!result.good) {
        return fail(CheckStep::Read, result.failure);
    }
    tellOk(CheckStep::Read, displayable(variable->name) + " = " + displayable(tags.value().front().text(result.value)));
    return ExitCode::Good;
}

} // namespace velk
