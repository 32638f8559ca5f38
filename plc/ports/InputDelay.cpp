#include "plc/ports/InputDelay.h"

#include <algorithm>

namespace plc {

void InputDelay::put(ByteView bytes, Micros now) {
    if (bytes.empty()) {
        return;
    }
    Micros due = now;
    if (bytesPerSecond_ != 0) {
        std::uint64_t const lasts = std::uint64_t{bytes.size()} * 1'000'000U / bytesPerSecond_;
        due = std::max(now, lineFree_) + Micros(static_cast<Micros::rep>(lasts));
        lineFree_ = due;
    }
    bursts_.push_back({.bytes = Bytes(bytes.begin(), bytes.end()), .due = due});
    size_ += bytes.size();
}

Bytes InputDelay::take(Micros now) {
    Bytes arrived;
    while (!bursts_.empty() && bursts_.front().due <= now) {
        Bytes const& bytes = bursts_.front().bytes;
        arrived.insert(arrived.end(), bytes.begin(), bytes.end());
        size_ -= bytes.size();
        bursts_.pop_front();
    }
    return arrived;
}

std::optional<Micros> InputDelay::nextDue() const {
    return bursts_.empty() ? std::nullopt : std::optional(bursts_.front().due);
}

void InputDelay::clear() {
    bursts_.clear();
    size_ = 0;
    lineFree_ = Micros::min();
}

} // namespace plc
