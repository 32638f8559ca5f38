#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/frames/Bytes.h"
#include "plc/frames/LineObserver.h"
#include "plc/frames/PlcRouting.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace plc {

/// What must be known of a station to read its frames.
struct FrameKey {
    ByteOrder order = ByteOrder::kLittle;
    std::size_t blockSize = 0;
    RoutingHeader header{}; ///< the one header that its frames carry; with routed framing only
};

/// A right block frame; the payload lies in the bytes that were parsed.
struct BlockReceived {
    int station = 0;
    std::uint16_t number = 0;
    bool last = false;
    ByteView payload{};
};

/// A right acknowledge.
struct AckReceived {
    int station = 0;
    std::uint16_t number = 0;
};

/// Bytes that are no right frame.
struct BadBytes {
    int station = kNoStation;
    Cause cause = Cause::kGarbage;
    std::string text{};
};

/// A frame that may still become right: more bytes are needed.
struct IncompleteFrame {
    int station = kNoStation;
};

struct ParsedFrame {
    std::variant<IncompleteFrame, BlockReceived, AckReceived, BadBytes> result{};
    std::size_t size = 0; ///< bytes of a right frame, routing header included
};

/// Whether a frame can begin with these bytes, as far as they go.
[[nodiscard]] bool canBeginFrame(Framing framing, ByteView bytes);

/// The frame at the start of the bytes. Its end is found by its length field; what follows is not looked at.
[[nodiscard]] ParsedFrame parseFrame(Framing framing, std::span<FrameKey const> keys, ByteView bytes);

/// Why bytes, of which parseFrame() made `parsed`, are no frame although the line is silent behind them.
[[nodiscard]] BadBytes explainRest(Framing framing, std::span<FrameKey const> keys, ByteView bytes,
                                   ParsedFrame const& parsed);

} // namespace plc
