#pragma once

#include "plc/frames/Bytes.h"
#include "plc/frames/EventReporter.h"
#include "plc/frames/FrameParser.h"
#include "plc/frames/OutputQueue.h"
#include "plc/frames/PlcFrame.h"
#include "plc/station/Faults.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace plc {

/// Returns the payload of the response to a request, or nothing to stay silent.
class RequestHandler {
public:
    RequestHandler() = default;
    RequestHandler(RequestHandler const&) = delete;
    RequestHandler& operator=(RequestHandler const&) = delete;
    virtual ~RequestHandler() = default;

    [[nodiscard]] virtual std::optional<Bytes> handle(ByteView request) = 0;
};

struct LinkSettings {
    Framing framing = Framing::kBare;
    FrameKey key{};
    Micros ackDelay{};
    Micros answerDelay{};
    Micros exchangeTimeout{};
};

/// The longest request and the longest response, in payload bytes.
inline constexpr std::size_t kLargestPayload = 75'000;

/**
 * The station's end of the link, one exchange after another:
 *
 *     panel: block 1, ..., block k (last)     station: an acknowledge after each
 *     panel: turnaround acknowledge (0)       station: response block 1
 *     panel: acknowledge of each block        station: the next block; after the last the closing acknowledge (0)
 *
 * A block 1 begins a new exchange in any state. An unexpected frame is reported and not answered. When the panel stops
 * sending, the exchange is given up.
 */
class LinkStation {
public:
    LinkStation(LinkSettings const& settings, FrameSink& sink, RequestHandler& handler, FaultPlan& faults,
                StationReporter reporter);

    void onBlock(BlockReceived const& block, Micros now);
    void onAck(AckReceived const& ack, Micros now);

    /// Gives up the exchange when its time is over.
    void advance(Micros now);
    [[nodiscard]] std::optional<Micros> deadline() const;

    /// Forgets the exchange under way.
    void reset() { state_ = State::kIdle; }

private:
    enum class State : std::uint8_t { kIdle, kRequest, kTurnaround, kResponse };

    [[nodiscard]] bool swallowed();
    void begin();
    void takeBlock(BlockReceived const& block, Micros now);
    void answer(Micros now);
    void sendNextBlock(Micros due);
    void sendBlock(ByteView payload, bool last, Micros due);
    void sendAck(std::uint16_t number, bool closing, Micros due);
    void close(Micros now);
    void sendFrame(Bytes frame, std::optional<std::size_t> cutTo, Micros due);
    void spoilBytes(Bytes& frame);
    void watch(Micros from) { deadline_ = from + settings_.exchangeTimeout; }
    [[nodiscard]] std::size_t headerSize() const;

    LinkSettings settings_;
    FrameSink& sink_;
    RequestHandler& handler_;
    FaultPlan& faults_;
    StationReporter reporter_;

    State state_ = State::kIdle;
    std::uint16_t block_ = 0; ///< last request block taken, or response block sent last
    Bytes request_;
    Bytes response_;
    std::size_t sent_ = 0; ///< payload bytes of the response sent so far
    Micros deadline_{};
};

} // namespace plc
