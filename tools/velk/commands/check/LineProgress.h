#pragma once

#include "host/serial/PortObserver.h"
#include "tools/velk/commands/check/CheckSteps.h"
#include "tools/velk/trace/Conversation.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velk {

/** What was received after the last sent block; acknowledges sent since are left out. */
struct LastWords {
    plc::Bytes sent;                       ///< no bytes when nothing was sent
    std::vector<plc::Bytes> came;          ///< frames, in their order; the last few
    std::vector<trace::Frame> meant;       ///< the same decoded, without their payloads
    std::vector<std::string> words;        ///< the same as text, a line for the frame and one for a response
    bool timedOut = false;                 ///< the driver's last wait timed out
    std::optional<std::uint16_t> status{}; ///< of the response, when one is complete
};

/** When a step was reached, and the frames until then. */
struct ReachedStep {
    std::int64_t at = 0; ///< microseconds of the observing clock
    LastWords words;
};

/**
 * Determines from the frames on a line how far the driver has got with a PLC.
 *
 * A step that has been reached stays reached. Any frames are accepted, in any order.
 */
class LineProgress final : public host::PortObserver {
public:
    using WhenReached = std::function<void(CheckStep)>;

    /** @p whenReached is called once for each step, in the middle of an exchange with the PLC. */
    explicit LineProgress(WhenReached whenReached = nullptr) : whenReached_(std::move(whenReached)) {}

    void onFrame(host::PortFrame const& frame) override;
    void onTimeout(std::int64_t at) override;
    void onDropped(std::span<unsigned char const> bytes, std::int64_t at) override;

    [[nodiscard]] bool reached(CheckStep step) const { return reached_.contains(step); }

    /** Null when the step was not reached. */
    [[nodiscard]] ReachedStep const* find(CheckStep step) const;

    [[nodiscard]] LastWords const& lastWords() const { return lastWords_; }

    /** The driver has gone on from the link check to the login. */
    [[nodiscard]] bool triedLogin() const { return triedLogin_; }

    /** Received pieces of the symbol file. */
    [[nodiscard]] std::uint64_t filePieces() const { return filePieces_; }

private:
    void onSent(plc::ByteView bytes);
    void onReceived(plc::ByteView bytes, std::int64_t at);
    std::optional<CheckStep> onResponse(trace::Response const& response);
    void keep(plc::ByteView bytes, trace::Step step);
    void reach(CheckStep step, std::int64_t at);

    WhenReached whenReached_;
    trace::Conversation conversation_;
    std::map<CheckStep, ReachedStep> reached_;
    LastWords lastWords_;
    std::uint64_t filePieces_ = 0;
    bool triedLogin_ = false;
};

} // namespace velk
