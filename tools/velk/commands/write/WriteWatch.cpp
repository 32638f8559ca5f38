#include "tools/velk/commands/write/WriteWatch.h"

namespace velk {
namespace {

/** A coupler sends a frame back that it could not pass on: that is not an answer of the PLC. */
bool isOfCoupler(trace::Frame const& frame) {
    return frame.routing && frame.routing->status != 0;
}

} // namespace

void WriteWatch::onFrame(host::PortFrame const& frame) {
    if (frame.direction == host::FrameDirection::Sent) {
        onSent(frame.bytes);
    } else {
        onReceived(frame.bytes);
    }
}

/** All of it may have been sent before the port failed. */
void WriteWatch::onUnsent(std::span<unsigned char const> bytes) {
    onSent(bytes);
}

void WriteWatch::onSent(plc::ByteView bytes) {
    trace::Step const step = conversation_.next(trace::Way::ToPlc, bytes);
    if (step.request && step.request->service == plc::ServiceKind::kWriteList) {
        ++sent_;
    }
}

void WriteWatch::onReceived(plc::ByteView bytes) {
    trace::Step const step = conversation_.next(trace::Way::FromPlc, bytes);
    if (isOfCoupler(step.frame) || !step.response || step.response->service != plc::ServiceKind::kWriteList ||
        !step.response->status) {
        return;
    }
    if (trace::isSuccess(step.response->service, *step.response->status)) {
        accepted_ = true;
    } else {
        ++refused_;
    }
}

void WriteWatch::begin() {
    sent_ = 0;
    refused_ = 0;
    accepted_ = false;
}

Delivery WriteWatch::delivery() const {
    if (accepted_) {
        return Delivery::Accepted;
    }
    if (sent_ == 0) {
        return Delivery::NotSent;
    }
    return refused_ >= sent_ ? Delivery::Refused : Delivery::Unanswered;
}

} // namespace velk
