#include "plc/frames/OutputQueue.h"

#include <algorithm>
#include <utility>

namespace plc {

Micros OutputQueue::send(Bytes bytes, Micros due) {
    if (bytes.empty()) {
        return due;
    }
    Micros leaves = due;
    if (bytesPerSecond_ != 0) {
        leaves = std::max(due, lastLeaves_) + lasts(bytes.size());
        lastLeaves_ = leaves;
    }
    auto const first = frames_.begin() + (left_ == 0 ? 0 : 1);
    auto const place =
        std::upper_bound(first, frames_.end(), due, [](Micros time, Frame const& frame) { return time < frame.due; });
    frames_.insert(place, {.bytes = std::move(bytes), .due = due});
    return leaves;
}

Bytes OutputQueue::take(Micros now) {
    Bytes out;
    while (!frames_.empty() && start() <= now) {
        if (bytesPerSecond_ == 0 || wholeFrames_) {
            takeWhole(out);
        } else if (!takePaced(out, now)) {
            break;
        }
    }
    return out;
}

std::optional<Micros> OutputQueue::nextDue() const {
    if (frames_.empty()) {
        return std::nullopt;
    }
    if (bytesPerSecond_ == 0) {
        return frames_.front().due;
    }
    return wholeFrames_ ? start() : start() + lasts(left_ + 1);
}

/// When the first frame started or starts to be sent.
Micros OutputQueue::start() const {
    return std::max(frames_.front().due, lineFree_);
}

Micros OutputQueue::lasts(std::size_t bytes) const {
    std::uint64_t const micros = (std::uint64_t{bytes} * 1'000'000U + bytesPerSecond_ - 1) / bytesPerSecond_;
    return Micros(static_cast<Micros::rep>(micros));
}

void OutputQueue::takeWhole(Bytes& out) {
    Bytes const& bytes = frames_.front().bytes;
    out.insert(out.end(), bytes.begin(), bytes.end());
    if (bytesPerSecond_ != 0) {
        lineFree_ = start() + lasts(bytes.size());
    }
    frames_.erase(frames_.begin());
}

/// Takes the bytes of the first frame sent by now; true when these are all of them.
bool OutputQueue::takePaced(Bytes& out, Micros now) {
    Bytes const& bytes = frames_.front().bytes;
    Micros const begun = start();
    while (left_ < bytes.size() && begun + lasts(left_ + 1) <= now) {
        out.push_back(bytes[left_++]);
    }
    if (left_ < bytes.size()) {
        return false;
    }
    lineFree_ = begun + lasts(bytes.size());
    frames_.erase(frames_.begin());
    left_ = 0;
    return true;
}

} // namespace plc
