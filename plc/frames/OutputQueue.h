#pragma once

#include "plc/frames/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace plc {

/// Receives the frames for the panel.
class FrameSink {
public:
    FrameSink() = default;
    FrameSink(FrameSink const&) = delete;
    FrameSink& operator=(FrameSink const&) = delete;
    virtual ~FrameSink() = default;

    /// Sends the bytes from `due` on. Returns when the last of them will be sent.
    virtual Micros send(Bytes bytes, Micros due) = 0;
};

/// Frames on their way to the panel, each with the time at which it is due, at the pace of the line.
class OutputQueue final : public FrameSink {
public:
    /// 0 bytes a second: every frame is sent at once when it is due.
    /// @param wholeFrames the receiver of the bytes has the line's pace itself, so it gets each frame as a whole when
    /// the frame begins
    explicit OutputQueue(std::uint32_t bytesPerSecond, bool wholeFrames = false)
        : bytesPerSecond_(bytesPerSecond), wholeFrames_(wholeFrames) {}

    Micros send(Bytes bytes, Micros due) override;

    /// Removes the bytes that are sent by `now`.
    [[nodiscard]] Bytes take(Micros now);
    /// Whether a frame is due that has not been taken completely.
    [[nodiscard]] bool isSending(Micros now) const { return !frames_.empty() && start() <= now; }
    /// When the next byte is sent.
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
    std::vector<Frame> frames_; ///< by due time; frames due at the same time in the order of send()
    std::size_t left_ = 0;      ///< bytes of the first frame already sent; a frame that has begun is not overtaken
    Micros lineFree_{Micros::min()};
    Micros lastLeaves_{Micros::min()};
};

} // namespace plc
