#pragma once

#include "plc/frames/Bytes.h"
#include "plc/frames/FrameParser.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace plc {

/// Receives frames and rejected bytes.
class FrameHandler {
public:
    FrameHandler() = default;
    FrameHandler(FrameHandler const&) = delete;
    FrameHandler& operator=(FrameHandler const&) = delete;
    virtual ~FrameHandler() = default;

    virtual void onBlock(BlockReceived const& block, Micros now) = 0;
    virtual void onAck(AckReceived const& ack, Micros now) = 0;
    virtual void onBadBytes(BadBytes const& bad, Micros now) = 0;
};

/**
 * Makes frames from bytes that arrive split or merged.
 *
 * A valid frame is passed on with its last byte. From the first wrong byte on, everything is kept until the line has
 * been silent; then, if the kept bytes end with a valid frame, that frame is passed on, and the rest is reported with
 * its cause.
 */
class FrameReader {
public:
    FrameReader(Framing framing, std::vector<FrameKey> keys, Micros silence, FrameHandler& handler);

    /// The time must not run backwards.
    void receive(ByteView bytes, Micros now);
    /// Ends the burst when the line has been silent long enough.
    void advance(Micros now);
    /// When the silence would be long enough.
    [[nodiscard]] std::optional<Micros> deadline() const;

private:
    void takeFrames(Micros now);
    void handOn(ParsedFrame const& frame, Micros now);
    void endBurst(Micros now);
    [[nodiscard]] std::size_t frameAtEnd(ByteView burst) const;
    void limitKept();

    Framing framing_;
    std::vector<FrameKey> keys_;
    Micros silence_;
    FrameHandler& handler_;
    Bytes kept_;
    std::size_t lost_ = 0; ///< bytes of an endless burst that were not kept
    bool waitForSilence_ = false;
    Micros lastByte_{};
};

} // namespace plc
