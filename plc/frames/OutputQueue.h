#pragma once

#include "plc/frames/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace plc {

/// Takes the frames to the panel.
class FrameSink {
public:
    FrameSink() = default;
    FrameSink(FrameSink const&) = delete;
    FrameSink& operator=(FrameSink const&) = delete;
    virtual ~FrameSink() = default;

    /// Sends the bytes from `due` on. Answers when the last of them will have left.
    virtual Micros send(Bytes bytes, Micros due) = 0;
};

/// Frames on their way to the panel, each with the time at which it is due, at the pace of the line.
class OutputQueue final : public FrameSink {
public:
    /// 0 bytes a second: every frame leaves at once when it is due.
    /// @param wholeFrames what takes the bytes has the line's pace itself: a frame is given to it whole when it begins
    explicit OutputQueue(std::uint32_t bytesPerSecond, bool wholeFrames = false)
        : bytesPerSecond_(bytesPerSecond), wholeFrames_(wholeFrames) {}

    Micros send(Bytes bytes, Micros due) override;

    /// Removes the bytes that have left by `now`.
    [[nodiscard]] Bytes take(Micros now);
    /// Whether a frame is due that has not been taken whole.
    [[nodiscard]] bool isSending(Micros now) const { return !frames_.empty() && start() <= now; }
    /// When the next byte leaves.
    [[nodiscard]] std::optional<Micros> nextDue() const;

private:
    struct Frame {
        Bytes bytes{};
        Micros due{};
    };

    [[nodiscard]] Micros start() const;
    [[nodiscard]] Micros lasts(std::size_t bytes) const;
    void takeWhole(Bytes& out);
    [[nodiscard]] bool takePaced(Bytes& out, Micros now);

    std::uint32_t bytesPerSecond_;
    bool wholeFrames_;
    std::vector<Frame> frames_; ///< by due time; of frames due at the same time the one sent first comes first
    std::size_t left_ = 0;      ///< bytes of the first frame that have left; such a frame is not overtaken
    Micros lineFree_{Micros::min()};
    Micros lastLeaves_{Micros::min()};
};

} // namespace plc
