#pragma once

#include "host/serial/PortObserver.h"
#include "tools/velk/trace/Conversation.h"

namespace velk {

/** What happened to a list that was sent. */
enum class Delivery {
    NotSent,    ///< the PLC cannot have received it
    Unanswered, ///< the PLC may have received it
    Refused,    ///< the PLC answered that it rejects it
    Accepted,   ///< the PLC answered that it accepts it, however the rest of the exchange ended
};

/** Sees on the line whether a written list was sent, and the PLC's answer. */
class WriteWatch final : public host::PortObserver {
public:
    void onFrame(host::PortFrame const& frame) override;
    void onUnsent(std::span<unsigned char const> bytes) override;

    /** Another list follows. */
    void begin();

    /** Of the latest list; the driver may have sent it several times. */
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
