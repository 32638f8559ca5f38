#include "tools/velk/commands/check/LineProgress.h"

#include "tools/velk/trace/TextTrace.h"

#include <utility>

namespace velk {
namespace {

constexpr std::size_t kMostKept = 8; // frames after a block that was sent

std::string wordsOf(trace::Step const& step) {
    std::string words = step.frame.kind == trace::FrameKind::Unknown ? std::string() : trace::frameText(step.frame);
    for (std::string const& fault : step.frame.faults) {
        words += (words.empty() ? "" : "; ") + fault;
    }
    return step.response ? words + "\n" + trace::responseText(*step.response) : words;
}

} // namespace

void LineProgress::onFrame(host::PortFrame const& frame) {
    if (frame.direction == host::FrameDirection::Sent) {
        onSent(frame.bytes);
    } else {
        onReceived(frame.bytes, frame.lastByteAt);
    }
}

void LineProgress::onSent(plc::ByteView bytes) {
    trace::Step const step = conversation_.next(trace::Way::ToPlc, bytes);
    triedLogin_ = triedLogin_ || (step.request && step.request->service == plc::ServiceKind::kLogin);
    bool const asks =
        step.frame.kind != trace::FrameKind::Acknowledge && step.frame.kind != trace::FrameKind::Turnaround;
    if (!asks) {
        return;
    }
    lastWords_ = {};
    lastWords_.sent.assign(bytes.begin(), bytes.end());
}

void LineProgress::onReceived(plc::ByteView bytes, std::int64_t at) {
    trace::Step step = conversation_.next(trace::Way::FromPlc, bytes);
    std::optional<CheckStep> const answered = step.response ? onResponse(*step.response) : std::nullopt;
    keep(bytes, std::move(step));
    reach(CheckStep::Bytes, at);
    if (answered) {
        reach(*answered, at);
    }
}

std::optional<CheckStep> LineProgress::onResponse(trace::Response const& response) {
    lastWords_.status = response.status;
    if (response.service == plc::ServiceKind::kLinkCheck) {
        return CheckStep::LinkCheck; // the driver does not look at what is answered
    }
    if (!response.status || !trace::isSuccess(response.service, *response.status)) {
        return std::nullopt;
    }
    switch (response.service) {
    case plc::ServiceKind::kLogin:
        return CheckStep::Login;
    case plc::ServiceKind::kFileOpen:
    case plc::ServiceKind::kFileNext:
        ++filePieces_;
        return std::nullopt;
    case plc::ServiceKind::kReadList:
        return CheckStep::SymbolFile; // the PLC has compared the project identifiers
    default:
        return std::nullopt;
    }
}

void LineProgress::onTimeout(std::int64_t /*at*/) {
    lastWords_.timedOut = true;
}

void LineProgress::onDropped(std::span<unsigned char const> bytes, std::int64_t at) {
    keep(bytes, {.frame = trace::decodeFrame(bytes, trace::Way::FromPlc)});
    reach(CheckStep::Bytes, at);
}

ReachedStep const* LineProgress::find(CheckStep step) const {
    auto const found = reached_.find(step);
    return found == reached_.end() ? nullptr : &found->second;
}

void LineProgress::reach(CheckStep step, std::int64_t at) {
    bool const isNew = reached_.try_emplace(step, ReachedStep{at, lastWords_}).second;
    if (isNew && whenReached_) {
        whenReached_(step);
    }
}

void LineProgress::keep(plc::ByteView bytes, trace::Step step) {
    if (lastWords_.came.size() >= kMostKept) {
        lastWords_.came.erase(lastWords_.came.begin());
        lastWords_.meant.erase(lastWords_.meant.begin());
        lastWords_.words.erase(lastWords_.words.begin());
    }
    lastWords_.words.push_back(wordsOf(step));
    step.frame.payload = {}; // it points into bytes that are freed
    lastWords_.came.emplace_back(bytes.begin(), bytes.end());
    lastWords_.meant.push_back(std::move(step.frame));
}

} // namespace velk
