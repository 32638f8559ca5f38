#include "plc/ports/WrongSpeed.h"

#include <cstddef>

namespace plc {

namespace {

constexpr std::uint64_t kBits = 10; ///< of a character: start, eight of data, stop

/// The levels on the line while bytes are sent. The unit of time is 1 / (sender's speed * receiver's speed) seconds.
class Levels {
public:
    Levels(ByteView sent, std::uint64_t bitTime) : sent_(sent), bitTime_(bitTime) {}

    [[nodiscard]] std::uint64_t end() const { return sent_.size() * kBits * bitTime_; }

    /// The line is high when nothing is sent.
    [[nodiscard]] bool isHigh(std::uint64_t time) const { return bitIsHigh(time / bitTime_); }

    /// The first change from high to low at `time` or later; end() when there is none.
    [[nodiscard]] std::uint64_t nextStart(std::uint64_t time) const {
        std::uint64_t const bits = sent_.size() * kBits;
        for (std::uint64_t bit = (time + bitTime_ - 1) / bitTime_; bit < bits; ++bit) {
            if (!bitIsHigh(bit) && (bit == 0 || bitIsHigh(bit - 1))) {
                return bit * bitTime_;
            }
        }
        return end();
    }

private:
    [[nodiscard]] bool bitIsHigh(std::uint64_t bit) const {
        std::uint64_t const place = bit % kBits;
        if (bit / kBits >= sent_.size() || place == kBits - 1) {
            return true;
        }
        return place != 0 && (sent_[static_cast<std::size_t>(bit / kBits)] >> (place - 1) & 1U) != 0;
    }

    ByteView sent_;
    std::uint64_t bitTime_;
};

} // namespace

Bytes heardAt(std::uint32_t receiverBaud, ByteView sent, std::uint32_t senderBaud) {
    Levels const levels(sent, receiverBaud);
    std::uint64_t const bitTime = senderBaud; // of the receiver
    Bytes heard;
    std::uint64_t start = levels.nextStart(0);
    while (start < levels.end()) {
        if (levels.isHigh(start + bitTime / 2)) {
            start = levels.nextStart(start + 1); // not a start bit but a disturbance
            continue;
        }
        unsigned byte = 0;
        for (unsigned bit = 0; bit < 8; ++bit) {
            bool const high = levels.isHigh(start + bitTime * (bit + 1) + bitTime / 2);
            byte |= high ? 1U << bit : 0U;
        }
        heard.push_back(static_cast<std::uint8_t>(byte));
        start = levels.nextStart(start + bitTime * (kBits - 1) + bitTime / 2);
    }
    return heard;
}

} // namespace plc
