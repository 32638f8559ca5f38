#include "tools/velk/check/LineProgress.h"

#include "tools/velk/trace/TextTrace.h"

#include <utility>

namespace velk {
namespace {

constexpr std::size_t kMostKept = 8; // frames behind a block that was sent

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
        onReceived(frame.bytes);
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

void LineProgress::onReceived(plc::ByteView bytes) {
    trace::Step step = conversation_.next(trace::Way::FromPlc, bytes);
    reached_.insert(CheckStep::Bytes);
    if (step.response) {
        onResponse(*step.response);
    }
    keep(bytes, std::move(step));
}

void LineProgress::onResponse(trace::Response const& response) {
    lastWords_.status = response.status;
    if (!response.status || !trace::isSuccess(response.service, *response.status)) {
        return;
    }
    switch (response.service) {
    case plc::ServiceKind::kLinkCheck:
        reached_.insert(CheckStep::LinkCheck);
        break;
    case plc::ServiceKind::kLogin:
        reached_.insert(CheckStep::Login);
        break;
    case plc::ServiceKind::kFileOpen:
    case plc::ServiceKind::kFileNext:
        ++filePieces_;
        break;
    case plc::ServiceKind::kReadList:
        reached_.insert(CheckStep::SymbolFile); // the PLC has compared the project identifiers
        break;
    default:
        break;
    }
}

void LineProgress::onTimeout(std::int64_t /*at*/) {
    lastWords_.timedOut = true;
}

void LineProgress::onDropped(std::span<unsigned char const> bytes, std::int64_t /*at*/) {
    reached_.insert(CheckStep::Bytes);
    keep(bytes, {.frame = trace::decodeFrame(bytes, trace::Way::FromPlc)});
}

void LineProgress::keep(plc::ByteView bytes, trace::Step step) {
    if (lastWords_.came.size() >= kMostKept) {
        lastWords_.came.erase(lastWords_.came.begin());
        lastWords_.meant.erase(lastWords_.meant.begin());
        lastWords_.words.erase(lastWords_.words.begin());
    }
    lastWords_.words.push_back(wordsOf(step));
    step.frame.payload = {}; // it lies in bytes that go away
    lastWords_.came.emplace_back(bytes.begin(), bytes.end());
    lastWords_.meant.push_back(std::move(step.frame));
}

} // namespace velk
