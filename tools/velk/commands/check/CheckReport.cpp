#include "tools/velk/commands/check/CheckReport.h"

#include <algorithm>

namespace velk {

StepReport const* CheckReport::failed() const {
    auto const found = std::find_if(steps.begin(), steps.end(),
                                    [](StepReport const& each) { return each.outcome == StepOutcome::Failed; });
    return found == steps.end() ? nullptr : &*found;
}

LineCandidate const* ScanReport::found() const {
    bool const answered = !attempts.empty() && attempts.back().answer == Answer::LinkCheck;
    return answered ? &attempts.back().candidate : nullptr;
}

std::vector<LineCandidate> ScanReport::stirred() const {
    std::vector<LineCandidate> candidates;
    for (ScanAttempt const& attempt : attempts) {
        if (attempt.answer == Answer::Bytes) {
            candidates.push_back(attempt.candidate);
        }
    }
    return candidates;
}

CheckedLine checkedLine(Settings const& settings) {
    LineCandidate const line = candidateOf(settings);
    host::NodeSettings const node = settings.nodeSettings(settings.node);
    return {.port = settings.config.uart,
            .station = settings.stationName(settings.node),
            .node = settings.node,
            .settings = {line.baud, line.parity, line.framing == "routed", line.byteOrder == "big", node.blockSize,
                         node.timeoutMs, node.routingLevels > 0}};
}

} // namespace velk
