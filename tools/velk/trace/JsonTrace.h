#pragma once

#include "tools/velk/trace/TraceFormat.h"

namespace velk::trace {

/** A trace as JSON lines: an object for each event, whose kind is in "event". */
class JsonTrace final : public TraceFormat {
public:
    std::string begin(TraceStart const& start) override;
    std::string frame(TracedFrame const& frame) override;
    std::string timeout(std::int64_t at) override;
    std::string dropped(plc::ByteView bytes, std::int64_t at) override;
    std::string fault(std::string_view reason, std::int64_t at) override;
};

} // namespace velk::trace
