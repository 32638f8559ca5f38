#pragma once

#include "host/serial/PortObserver.h"
#include "tools/velk/trace/Conversation.h"

namespace velk {

/** What became of a list on its way to the PLC. */
enum class Delivery {
    NotSent,    ///< the PLC cannot have it
    Unanswered, ///< the PLC may have it
    Refused,    ///< the PLC answered that it does not take it
    Accepted,   ///< the PLC answered that it took it, whatever came of the rest of the exchange
};

/** Sees on the line whether a list that is written went out, and what the PLC answered. */
class WriteWatch final : public host::PortObserver {
public:
    void onFrame(host::PortFrame const& frame) override;
    void onUnsent(std::span<unsigned char const> bytes) override;

    /** Another list comes. */
    void begin();

    /** Of the list that came last; the driver may have sent it several times. */
    [[nodiscard]] Delivery delivery() const;

private:
    void onSent(plc::ByteView bytes);
    void onReceived(plc::ByteView bytes);

    trace::Conversation conversation_;
    int sent_ = 0; ///< whole lists
    int refused_ = 0;
    bool accepted_ = false;
};

} // namespace velk
