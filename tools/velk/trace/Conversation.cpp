#include "tools/velk/trace/Conversation.h"

#include <fmt/format.h>

namespace velk::trace {
namespace {

/** The longest payload that either side accepts. */
constexpr std::size_t kLongestPayload = 75'000;

} // namespace

Step Conversation::next(Way way, plc::ByteView bytes) {
    Step step;
    step.frame = decodeFrame(bytes, way, usualOrder(way));
    switch (step.frame.kind) {
    case FrameKind::Block:
        onBlock(way, step);
        break;
    case FrameKind::Acknowledge:
    case FrameKind::Turnaround:
    case FrameKind::Closing:
        onAcknowledge(way, step.frame);
        break;
    case FrameKind::Unknown:
        break;
    }
    compareOrders(way, step.frame);
    learnOrder(way, step.frame);
    return step;
}

void Conversation::onBlock(Way way, Step& step) {
    if (way == Way::ToPlc) {
        onSent(step);
    } else {
        onReceived(step);
    }
}

void Conversation::onSent(Step& step) {
    if (step.frame.number == 1) {
        sent_ = {};
        received_ = {};
        request_.reset();
    }
    collect(sent_, step.frame);
    if (step.frame.last && sent_.whole) {
        request_ = decodeRequest(sent_.bytes, step.frame.order);
        step.request = request_;
    }
}

void Conversation::onReceived(Step& step) {
    collect(received_, step.frame);
    if (step.frame.last && received_.whole && request_) {
        step.response = decodeResponse(received_.bytes, step.frame.order, *request_);
    }
}

void Conversation::collect(Collected& collected, Frame& frame) {
    auto const due = static_cast<std::uint16_t>(collected.blocks + 1);
    if (frame.number != due) {
        frame.faults.push_back(fmt::format("block {} instead of block {}", frame.number, due));
        collected.whole = false;
        return;
    }
    if (frame.checksum != frame.rightChecksum || collected.bytes.size() + frame.payload.size() > kLongestPayload) {
        collected.whole = false;
        return;
    }
    collected.blocks = due;
    collected.bytes.insert(collected.bytes.end(), frame.payload.begin(), frame.payload.end());
}

void Conversation::onAcknowledge(Way way, Frame& frame) const {
    if (frame.kind != FrameKind::Acknowledge) {
        return;
    }
    std::uint16_t const due = way == Way::ToPlc ? received_.blocks : sent_.blocks;
    if (frame.number != due) {
        frame.faults.push_back(
            due == 0 ? fmt::format("no block {} was sent before", frame.number)
                     : fmt::format("block {} is acknowledged, block {} was sent last", frame.number, due));
    }
}

/** Both sides of a line must use the same byte order. */
void Conversation::compareOrders(Way way, Frame& frame) const {
    auto const panels = orders_.find(Way::ToPlc);
    if (way == Way::FromPlc && frame.orderIsCertain && panels != orders_.end() && panels->second != frame.order) {
        frame.faults.push_back(
            fmt::format("it is {}, the panel's frames are {}", orderText(frame.order), orderText(panels->second)));
    }
}

/** The next exchange may be with another station, which has its own byte order. */
void Conversation::learnOrder(Way way, Frame const& frame) {
    if (frame.kind == FrameKind::Closing) {
        orders_.clear();
    } else if (frame.orderIsCertain) {
        orders_[way] = frame.order;
    }
}

std::optional<plc::ByteOrder> Conversation::usualOrder(Way way) const {
    Way const other = way == Way::ToPlc ? Way::FromPlc : Way::ToPlc;
    for (Way const each : {way, other}) {
        if (auto const found = orders_.find(each); found != orders_.end()) {
            return found->second;
        }
    }
    return std::nullopt;
}

} // namespace velk::trace
