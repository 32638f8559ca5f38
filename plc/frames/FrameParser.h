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

/// The properties of a station needed to read its frames.
struct FrameKey {
    ByteOrder order = ByteOrder::kLittle;
    std::size_t blockSize = 0;
    RoutingHeader header{}; ///< the header that all its frames carry; with routed framing only
};

/// A valid block frame; the payload is part of the parsed bytes.
struct BlockReceived {
    int station = 0;
    std::uint16_t number = 0;
    bool last = false;
    ByteView payload{};
};

/// A valid acknowledge.
struct AckReceived {
    int station = 0;
    std::uint16_t number = 0;
};

/// Bytes that are not a valid frame.
struct BadBytes {
    int station = kNoStation;
    Cause cause = Cause::kGarbage;
    std::string text{};
};

/// A frame that may still become valid: more bytes are needed.
struct IncompleteFrame {
    int station = kNoStation;
};

struct ParsedFrame {
    std::variant<IncompleteFrame, BlockReceived, AckReceived, BadBytes> result{};
    std::size_t size = 0; ///< length of the valid frame, routing header included
};

/// Whether a frame can begin with these bytes, as far as they go.
[[nodiscard]] bool canBeginFrame(Framing framing, ByteView bytes);

/// The frame at the start of the bytes. Its end is found by its length field; what follows is ignored.
[[nodiscard]] ParsedFrame parseFrame(Framing framing, std::span<FrameKey const> keys, ByteView bytes);

/// Why bytes, for which parseFrame() returned `parsed`, are not a frame although the line was silent after them.
[[nodiscard]] BadBytes explainRest(Framing framing, std::span<FrameKey const> keys, ByteView bytes,
                                   ParsedFrame const& parsed);

} // namespace plc
