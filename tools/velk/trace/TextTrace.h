#pragma once

#include "tools/velk/trace/TraceFormat.h"

namespace velk::trace {

/**
 * A trace for people:
 *
 *        0.000000 -> block 1, the last, 9 bytes, checksum 52 right, little-endian
 *                    AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05
 *                    request: link check, 9 bytes
 *        0.004210 <- acknowledge of block 1, little-endian
 *                    55 55 0A 00 01 00
 *
 * Times are seconds since the trace began; "->" goes to the PLC. Faults follow "!!".
 */
class TextTrace final : public TraceFormat {
public:
    std::string begin(TraceStart const& start) override;
    std::string frame(TracedFrame const& frame) override;
    std::string timeout(std::int64_t at) override;
    std::string dropped(plc::ByteView bytes, std::int64_t at) override;
    std::string fault(std::string_view reason, std::int64_t at) override;

private:
    [[nodiscard]] std::string headed(std::int64_t at, std::string_view mark, std::string_view text) const;

    std::int64_t start_ = 0;
};

/** "block 1, the last, 9 bytes, checksum 52 right, little-endian", and so on. */
std::string frameText(Frame const& frame);

/** "response: login, 2 bytes, status 1 (refused)", and so on. */
std::string responseText(Response const& response);

} // namespace velk::trace
