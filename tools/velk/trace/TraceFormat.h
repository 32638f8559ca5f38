#pragma once

#include "tools/velk/trace/Conversation.h"
#include "tools/velk/trace/Frame.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace velk::trace {

/** Times are microseconds since 1970, UTC. */
struct TraceStart {
    std::int64_t at = 0;
    std::string program; ///< what writes the trace, for example "velk 1.0"
};

struct TracedFrame {
    Way way;
    plc::ByteView bytes;    ///< as they were on the line
    std::int64_t at = 0;    ///< of the first byte
    std::int64_t lasts = 0; ///< microseconds until the last byte
    Step const& step;
};

/** Records what is sent on a line. Every function returns the bytes to append to the trace. */
class TraceFormat {
public:
    virtual ~TraceFormat() = default;
    TraceFormat(TraceFormat const&) = delete;
    TraceFormat& operator=(TraceFormat const&) = delete;

    virtual std::string begin(TraceStart const& start) = 0;
    virtual std::string frame(TracedFrame const& frame) = 0;

    /** Nothing was received within the time that the panel waits. */
    virtual std::string timeout(std::int64_t /*at*/) { return ""; }

    /** Received bytes that were not expected. */
    virtual std::string dropped(plc::ByteView bytes, std::int64_t at) = 0;

    /** The port failed. */
    virtual std::string fault(std::string_view /*reason*/, std::int64_t /*at*/) { return ""; }

protected:
    TraceFormat() = default;
};

} // namespace velk::trace
