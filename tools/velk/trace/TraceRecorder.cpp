#include "tools/velk/trace/TraceRecorder.h"

#include <exception>
#include <utility>

namespace velk::trace {

TraceRecorder::TraceRecorder(std::unique_ptr<TraceFormat> format, Sink sink, Complain complain, std::int64_t unixAtZero)
    : format_(std::move(format)), sink_(std::move(sink)), complain_(std::move(complain)), unixAtZero_(unixAtZero) {}

void TraceRecorder::begin(std::int64_t at, std::string program) {
    write(format_->begin({.at = unixAtZero_ + at, .program = std::move(program)}));
}

void TraceRecorder::onFrame(host::PortFrame const& frame) {
    Way const way = frame.direction == host::FrameDirection::Sent ? Way::ToPlc : Way::FromPlc;
    Step const step = conversation_.next(way, frame.bytes);
    write(format_->frame({.way = way,
                          .bytes = frame.bytes,
                          .at = unixAtZero_ + frame.firstByteAt,
                          .lasts = frame.lastByteAt - frame.firstByteAt,
                          .step = step}));
}

void TraceRecorder::onTimeout(std::int64_t at) {
    write(format_->timeout(unixAtZero_ + at));
}

void TraceRecorder::onDropped(std::span<unsigned char const> bytes, std::int64_t at) {
    write(format_->dropped(bytes, unixAtZero_ + at));
}

void TraceRecorder::onFault(std::string_view reason, std::int64_t at) {
    write(format_->fault(reason, unixAtZero_ + at));
}

void TraceRecorder::write(std::string_view text) {
    if (failed_ || text.empty()) {
        return;
    }
    try {
        sink_(text);
    } catch (std::exception const& problem) {
        failed_ = true;
        complain_(problem.what());
    }
}

} // namespace velk::trace
