#include "tools/velk/commands/check/Scan.h"

#include "base/Signals.h"
#include "tools/velk/commands/check/LineProgress.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Session.h"

#include <utility>

namespace velk {
namespace {

constexpr int kScanTimeoutMs = 300;

} // namespace

Scan::Scan(Settings settings, Context& context, Tell tell)
    : context_(context), settings_(std::move(settings)), tell_(std::move(tell)),
      timeoutMs_(context.options.timeoutMs.value_or(kScanTimeoutMs)) {}

Answer Scan::tryOne(LineCandidate const& candidate) {
    LineProgress progress;
    Attachment const attachment(context_.observers, progress);
    Session session(settingsFor(settings_, candidate, timeoutMs_), context_, {.vanishes = true});
    if (base::Outcome const opened = session.open(); !opened.ok()) {
        // A port that could be opened before, and still exists, just does not support these settings.
        if (triedAny_ && portSymptom(opened.failure().kind) == Symptom::PortFault) {
            return Answer::NotPossible;
        }
        throw session.error(opened.failure());
    }
    triedAny_ = true;
    base::Result<SymbolTable const*> const symbols = session.symbols(settings_.node);
    if (!symbols.ok()) {
        ExitCode const code = session.exitCode(symbols.failure());
        if (code == ExitCode::Port || code == ExitCode::Interrupted) {
            throw session.error(symbols.failure());
        }
    }
    // An answer that the driver rejects does not count, even if its frames are right in another framing or order.
    bool const wentOn = progress.triedLogin();
    if (progress.reached(CheckStep::LinkCheck) && wentOn) {
        return Answer::LinkCheck;
    }
    return progress.reached(CheckStep::Bytes) ? Answer::Bytes : Answer::None;
}

ScanReport Scan::run() {
    ScanReport report{.line = checkedLine(settings_), .attempts = {}};
    std::vector<LineCandidate> const candidates = scanCandidates(candidateOf(settings_));
    for (std::size_t i = 0; i < candidates.size() && report.found() == nullptr; ++i) {
        if (context_.interrupt.requested()) {
            break;
        }
        tell_(candidates[i], i + 1, candidates.size());
        auto const at = std::chrono::system_clock::now();
        report.attempts.push_back({candidates[i], tryOne(candidates[i]), at});
    }
    return report;
}

} // namespace velk
