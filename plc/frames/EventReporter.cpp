#include "plc/frames/EventReporter.h"

namespace plc {

void EventReporter::report(int station, Cause cause, std::string text) {
    all_.count(cause);
    if (station != kNoStation) {
        stations_[static_cast<std::size_t>(station)].count(cause);
    }
    if (observer_ != nullptr) {
        observer_->onEvent({.time = now_, .station = station, .cause = cause, .text = std::move(text)});
    }
}

void EventReporter::bytes(Direction direction, ByteView bytes) const {
    if (observer_ != nullptr && !bytes.empty()) {
        observer_->onBytes(direction, bytes, now_);
    }
}

} // namespace plc
