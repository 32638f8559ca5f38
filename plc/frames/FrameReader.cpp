#include "plc/frames/FrameReader.h"

#include "plc/frames/Text.h"

#include <utility>

namespace plc {

namespace {

/// The most bytes kept of an endless burst: any frame fits into them.
constexpr std::size_t kMostKept = 4096;

} // namespace

FrameReader::FrameReader(Framing framing, std::vector<FrameKey> keys, Micros silence, FrameHandler& handler)
    : framing_(framing), keys_(std::move(keys)), silence_(silence), handler_(handler) {}

void FrameReader::receive(ByteView bytes, Micros now) {
    advance(now);
    if (bytes.empty()) {
        return;
    }
    lastByte_ = now;
    kept_.insert(kept_.end(), bytes.begin(), bytes.end());
    if (!waitForSilence_) {
        takeFrames(now);
    }
    limitKept();
}

void FrameReader::advance(Micros now) {
    if (auto const end = deadline(); end && now >= *end) {
        endBurst(now);
    }
}

std::optional<Micros> FrameReader::deadline() const {
    return kept_.empty() && lost_ == 0 ? std::nullopt : std::optional(lastByte_ + silence_);
}

/// Passes on the valid frames at the start, up to the first byte that cannot belong to one.
void FrameReader::takeFrames(Micros now) {
    while (!kept_.empty()) {
        ParsedFrame const frame = parseFrame(framing_, keys_, kept_);
        if (std::holds_alternative<IncompleteFrame>(frame.result)) {
            return;
        }
        ByteView const behind = ByteView(kept_).subspan(frame.size);
        if (std::holds_alternative<BadBytes>(frame.result) || !canBeginFrame(framing_, behind)) {
            waitForSilence_ = true;
            return;
        }
        handOn(frame, now);
        kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(frame.size));
    }
}

void FrameReader::handOn(ParsedFrame const& frame, Micros now) {
    if (auto const* const block = std::get_if<BlockReceived>(&frame.result)) {
        handler_.onBlock(*block, now);
    } else if (auto const* const ack = std::get_if<AckReceived>(&frame.result)) {
        handler_.onAck(*ack, now);
    }
}

/// The line is silent: the kept bytes are complete.
void FrameReader::endBurst(Micros now) {
    Bytes const burst = std::exchange(kept_, {});
    std::size_t const lost = std::exchange(lost_, 0);
    waitForSilence_ = false;

    BadBytes const rest = explainRest(framing_, keys_, burst, parseFrame(framing_, keys_, burst));
    std::size_t const start = frameAtEnd(burst);
    if (start < burst.size()) {
        handler_.onBadBytes(
            {.cause = Cause::kGarbage, .text = textOf(lost + start, " bytes in front of a frame: ", rest.text)}, now);
        handOn(parseFrame(framing_, keys_, ByteView(burst).subspan(start)), now);
    } else if (lost != 0) {
        handler_.onBadBytes({.text = textOf(lost + burst.size(), " bytes without a pause")}, now);
    } else {
        handler_.onBadBytes(rest, now);
    }
}

/// The position of a valid frame at the end of the bytes, or their size if there is none. Position 0 is not tried.
std::size_t FrameReader::frameAtEnd(ByteView burst) const {
    for (std::size_t start = 1; start < burst.size(); ++start) {
        ByteView const bytes = burst.subspan(start);
        if (canBeginFrame(framing_, bytes) && parseFrame(framing_, keys_, bytes).size == bytes.size()) {
            return start;
        }
    }
    return burst.size();
}

void FrameReader::limitKept() {
    if (kept_.size() > kMostKept) {
        std::size_t const surplus = kept_.size() - kMostKept;
        kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(surplus));
        lost_ += surplus;
    }
}

} // namespace plc
