#include "tools/common/UploadProgress.h"

#include <algorithm>
#include <utility>

namespace tools {
namespace {

constexpr unsigned char kBlockMark = 0xAA;
constexpr std::size_t kBlockHeaderLength = 8;
constexpr std::size_t kNumberOffset = 4; // of the block number, in either byte order
constexpr std::size_t kLastFlagOffset = 7;
constexpr std::size_t kFileReplyHeaderLength = 6; // status, more-data flag, byte count
constexpr unsigned char kOpenAndRead = 0x31;
constexpr unsigned char kReadOn = 0x32;
constexpr double kMicrosecondsPerSecond = 1e6;

bool isBlock(std::span<unsigned char const> frame) {
    return frame.size() > kBlockHeaderLength && frame[0] == kBlockMark && frame[1] == kBlockMark;
}

bool isFirstBlock(std::span<unsigned char const> block) {
    return block[kNumberOffset] + block[kNumberOffset + 1] == 1;
}

/** The block begins a good reply, which is the last one: both words are 0 in any byte order. */
bool isLastPiece(std::span<unsigned char const> block) {
    constexpr std::size_t kStatusAndMore = 4;
    std::span<unsigned char const> const payload = block.subspan(kBlockHeaderLength);
    return payload.size() >= kFileReplyHeaderLength &&
           std::all_of(payload.begin(), payload.begin() + kStatusAndMore, [](unsigned char byte) { return byte == 0; });
}

} // namespace

double Upload::rate() const {
    return microseconds > 0 ? static_cast<double>(bytes) * kMicrosecondsPerSecond / static_cast<double>(microseconds)
                            : 0;
}

UploadProgress::UploadProgress(std::size_t routingHeaderLength, Listener listener)
    : routingHeaderLength_(routingHeaderLength), listener_(std::move(listener)) {}

void UploadProgress::onFrame(host::PortFrame const& frame) {
    if (frame.bytes.size() <= routingHeaderLength_) {
        return;
    }
    std::span<unsigned char const> const block = frame.bytes.subspan(routingHeaderLength_);
    if (!isBlock(block)) {
        return;
    }
    if (frame.direction == host::FrameDirection::Sent) {
        onSent(block, frame.firstByteAt);
    } else {
        onReceived(block, frame.lastByteAt);
    }
}

void UploadProgress::onSent(std::span<unsigned char const> block, std::int64_t at) {
    if (!isFirstBlock(block)) {
        return;
    }
    unsigned char const service = block[kBlockHeaderLength];
    if (service == kOpenAndRead) {
        upload_ = {};
        began_ = at;
        underWay_ = true;
        lastPiece_ = false;
    } else if (service != kReadOn) {
        underWay_ = false; // it was aborted
    }
    pieceBegins_ = underWay_;
}

void UploadProgress::onReceived(std::span<unsigned char const> block, std::int64_t at) {
    if (!underWay_) {
        return;
    }
    std::size_t const payload = block.size() - kBlockHeaderLength;
    std::size_t const header = pieceBegins_ ? kFileReplyHeaderLength : 0;
    lastPiece_ = pieceBegins_ ? isLastPiece(block) : lastPiece_;
    upload_.bytes += payload > header ? payload - header : 0;
    upload_.pieces += block[kLastFlagOffset] != 0 ? 1 : 0;
    upload_.microseconds = at - began_;
    upload_.done = lastPiece_ && block[kLastFlagOffset] != 0;
    underWay_ = !upload_.done;
    pieceBegins_ = false;
    tell();
}

void UploadProgress::tell() {
    if (listener_) {
        listener_(upload_);
    }
}

} // namespace tools
