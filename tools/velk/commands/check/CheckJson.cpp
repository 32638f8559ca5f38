#include "tools/velk/commands/check/CheckJson.h"

#include "tools/velk/line/FailureJson.h"
#include "tools/velk/line/Readings.h"
#include "tools/velk/text/Text.h"
#include "tools/velk/trace/Hex.h"

#include <nlohmann/json.hpp>

namespace velk {
namespace {

using Json = nlohmann::ordered_json;

std::string document(Json const& json) {
    constexpr int kIndent = 2;
    return json.dump(kIndent) + "\n";
}

char const* nameOf(CheckStep step) {
    switch (step) {
    case CheckStep::Port:
        return "port";
    case CheckStep::Bytes:
        return "bytes";
    case CheckStep::LinkCheck:
        return "link_check";
    case CheckStep::Login:
        return "login";
    case CheckStep::SymbolFile:
        return "symbol_file";
    case CheckStep::Read:
        break;
    }
    return "read";
}

char const* nameOf(StepOutcome outcome) {
    switch (outcome) {
    case StepOutcome::Ok:
        return "ok";
    case StepOutcome::Failed:
        return "failed";
    case StepOutcome::Skipped:
        return "skipped";
    case StepOutcome::NotReached:
        break;
    }
    return "not reached";
}

char const* nameOf(Answer answer) {
    switch (answer) {
    case Answer::NotPossible:
        return "not possible";
    case Answer::Bytes:
        return "bytes";
    case Answer::LinkCheck:
        return "answered";
    case Answer::None:
        break;
    }
    return "silent";
}

Json candidateJson(LineCandidate const& candidate) {
    return {{"baud", candidate.baud},
            {"parity", candidate.parity},
            {"framing", candidate.framing},
            {"byte_order", candidate.byteOrder}};
}

Json lineJson(CheckedLine const& line) {
    CheckedSettings const& settings = line.settings;
    Json json{{"port", toUtf8(line.port)}, {"station", toUtf8(line.station)}, {"node", line.node}};
    json["settings"] = candidateJson(
        {settings.baud, settings.parity, settings.routed ? "routed" : "bare", settings.bigEndian ? "big" : "little"});
    json["settings"]["block_size"] = settings.blockSize;
    json["settings"]["timeout_ms"] = settings.timeoutMs;
    return json;
}

/** On one line. */
std::string meaningOf(std::string words) {
    for (std::size_t end = words.find('\n'); end != std::string::npos; end = words.find('\n', end)) {
        words.replace(end, 1, "; ");
    }
    return toUtf8(words);
}

/** The last sent frame of a step and the replies: as bytes, and each in words. */
void putWords(Json& json, LastWords const& words) {
    if (words.sent.empty() && words.came.empty()) {
        return;
    }
    json["sent"] = trace::hexText(words.sent);
    json["received"] = Json::array();
    json["meaning"] = Json::array();
    for (std::size_t i = 0; i < words.came.size(); ++i) {
        json["received"].push_back(trace::hexText(words.came[i]));
        json["meaning"].push_back(meaningOf(words.words[i]));
    }
    json["timed_out"] = words.timedOut;
}

Json stepJson(StepReport const& step) {
    Json json{{"name", nameOf(step.step)}, {"text", stepText(step.step)}, {"outcome", nameOf(step.outcome)}};
    if (step.failure) {
        putFailure(json, *step.failure);
    } else if (!step.found.empty()) {
        json[step.outcome == StepOutcome::Ok ? "found" : "reason"] = toUtf8(step.found);
    }
    putWords(json, step.words);
    if (step.at) {
        json["time"] = utcText(*step.at);
    }
    return json;
}

Json programJson(FoundProgram const& program) {
    return {{"project", program.project},
            {"variables", program.variables},
            {"stored", program.pieces == 0},
            {"pieces", program.pieces}};
}

} // namespace

std::string checkJson(CheckReport const& report) {
    Json json = lineJson(report.line);
    json["steps"] = Json::array();
    for (StepReport const& step : report.steps) {
        json["steps"].push_back(stepJson(step));
    }
    StepReport const* const failed = report.failed();
    json["failed"] = failed != nullptr ? Json(nameOf(failed->step)) : Json();
    json["causes"] = report.causes;
    json["program"] = report.program ? programJson(*report.program) : Json();
    return document(json);
}

std::string scanJson(ScanReport const& report) {
    Json json = lineJson(report.line);
    json["attempts"] = Json::array();
    for (ScanAttempt const& attempt : report.attempts) {
        Json one = candidateJson(attempt.candidate);
        one["outcome"] = nameOf(attempt.answer);
        one["time"] = utcText(attempt.at);
        json["attempts"].push_back(std::move(one));
    }
    LineCandidate const* const found = report.found();
    json["found"] = found != nullptr ? candidateJson(*found) : Json();
    return document(json);
}

} // namespace velk
