#pragma once

#include "host/PortObserver.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velk {

/** How the line was in a stretch of time. */
struct LineSummary {
    std::uint64_t exchanges = 0; ///< frames that asked for an answer
    std::uint64_t answered = 0;
    std::map<std::string, std::uint64_t> failures; ///< by cause, as the driver words it
    double answerMedianMs = 0;                     ///< from the end of a frame to the first byte of its answer
    double answer95Ms = 0;
    double answerWorstMs = 0;
    double busyMs = 0; ///< the least time that what was exchanged takes on this line
};

/**
 * Measures a line: answer times, failures, and the least time that its traffic needs.
 *
 * The least time is that of the bytes at the line's speed and of the silence behind each received frame, which is
 * what ends the frame. No cycle can be shorter.
 */
class LineFigures final : public host::PortObserver {
public:
    /** @param baud bit/s; @param bitsPerByte start, data, parity and stop bits together */
    LineFigures(int baud, int bitsPerByte);

    void onFrame(host::PortFrame const& frame) override;
    void onTimeout(std::int64_t at) override;

    /** Counts a failure that was reported for a call. */
    void countFailure(std::string const& cause) { ++failures_[cause]; }

    [[nodiscard]] std::uint64_t failureCount() const;
    [[nodiscard]] double busyMs() const { return busyMicroseconds_ / 1'000; }
    [[nodiscard]] LineSummary summary() const;

private:
    double microsecondsPerByte_;
    double busyMicroseconds_ = 0;
    std::uint64_t exchanges_ = 0;
    std::uint64_t answered_ = 0;
    std::int64_t askedAt_ = 0;
    bool asked_ = false;
    std::vector<std::int64_t> answerTimes_; ///< microseconds, the latest ones
    std::size_t nextTime_ = 0;
    std::map<std::string, std::uint64_t> failures_;
};

/** Start, data, parity and stop bits of a byte. */
int bitsPerByte(std::string const& parity, int stopBits);

/** The closing line: "120 exchanges, 118 answered, ...". @param elapsedMs of the whole stretch */
std::string summaryText(LineSummary const& summary, double elapsedMs);

} // namespace velk
