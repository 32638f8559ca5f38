#pragma once

#include "host/serial/PortObserver.h"
#include "tools/velk/trace/Conversation.h"
#include "tools/velk/trace/TraceFormat.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace velk::trace {

/** Where a trace goes. Throws std::exception when it cannot be written. */
using Sink = std::function<void(std::string_view)>;

/**
 * Writes a trace of everything that it sees. The first failure to write is reported once, and the trace ends there:
 * an exchange with the PLC never fails because of its trace.
 */
class TraceRecorder final : public host::PortObserver {
public:
    /** Receives the message for the user when the trace cannot be written. */
    using Complain = std::function<void(std::string_view)>;

    /** @p unixAtZero microseconds since 1970 at the zero of the clock that gives the frames their times */
    TraceRecorder(std::unique_ptr<TraceFormat> format, Sink sink, Complain complain, std::int64_t unixAtZero);

    /** Starts the trace; @p at by the clock that gives the frames their times. */
    void begin(std::int64_t at, std::string program);

    void onFrame(host::PortFrame const& frame) override;
    void onTimeout(std::int64_t at) override;
    void onDropped(std::span<unsigned char const> bytes, std::int64_t at) override;
    void onFault(std::string_view reason, std::int64_t at) override;

    [[nodiscard]] bool failed() const { return failed_; }

private:
    void write(std::string_view text);

    std::unique_ptr<TraceFormat> format_;
    Sink sink_;
    Complain complain_;
    std::int64_t unixAtZero_;
    Conversation conversation_;
    bool failed_ = false;
};

} // namespace velk::trace
