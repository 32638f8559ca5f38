#pragma once

#include "tools/velk/trace/Frame.h"
#include "tools/velk/trace/Payload.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace velk::trace {

/** A frame with its meaning at its place in the conversation. */
struct Step {
    Frame frame;
    std::optional<Request> request{};   ///< complete with this frame
    std::optional<Response> response{}; ///< complete with this frame
};

/**
 * Follows the conversation on a line: one exchange after another, each a request in blocks and a response in blocks.
 *
 * A frame that is not expected at its place is listed with a fault. Any frames are accepted, in any order; at most
 * the longest payloads are kept.
 */
class Conversation {
public:
    /** The payload of the returned frame is part of @p bytes. */
    Step next(Way way, plc::ByteView bytes);

private:
    /** A payload received in blocks. */
    struct Collected {
        plc::Bytes bytes;
        std::uint16_t blocks = 0;
        bool whole = true; ///< no block is missing or wrong
    };

    void compareOrders(Way way, Frame& frame) const;
    void learnOrder(Way way, Frame const& frame);
    [[nodiscard]] std::optional<plc::ByteOrder> usualOrder(Way way) const;
    void onBlock(Way way, Step& step);
    void onSent(Step& step);
    void onReceived(Step& step);
    void onAcknowledge(Way way, Frame& frame) const;
    static void collect(Collected& collected, Frame& frame);

    std::map<Way, plc::ByteOrder> orders_; ///< as the latest frames showed them
    Collected sent_;
    Collected received_;
    std::optional<Request> request_; ///< of the exchange under way, once it is complete
};

} // namespace velk::trace
