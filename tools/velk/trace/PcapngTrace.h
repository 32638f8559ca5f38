#pragma once

#include "tools/velk/trace/TraceFormat.h"

namespace velk::trace {

/** The link type of the packets: the first of those that are free for private use. */
inline constexpr std::uint16_t kLinkType = 147;

/**
 * A trace as a capture file: one packet a frame with the bytes as they were on the line, its time in microseconds and
 * its direction, outbound to the PLC. Unexpected bytes are packets with a comment that says so. Time-outs and faults
 * have no bytes, so they have no packet.
 *
 * Little-endian; see the PCAP Next Generation Capture File Format.
 */
class PcapngTrace final : public TraceFormat {
public:
    std::string begin(TraceStart const& start) override;
    std::string frame(TracedFrame const& frame) override;
    std::string dropped(plc::ByteView bytes, std::int64_t at) override;
};

} // namespace velk::trace
