#pragma once

#include "host/serial/PortObserver.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace velk {

/** Statistics of the line over a period. */
struct LineSummary {
    std::uint64_t exchanges = 0; ///< frames that asked for an answer
    std::uint64_t answered = 0;
    std::map<std::string, std::uint64_t> failures;  ///< by cause, as the driver words it
    std::map<std::string, std::uint64_t> badValues; ///< of single variables that were not good, by cause
    double answerMedianMs = 0;                      ///< from the end of a frame to the first byte of its answer
    double answer95Ms = 0;
    double answerWorstMs = 0;
    double busyMs = 0; ///< the least time that the traffic takes on this line
};

/**
 * Measures a line: answer times, failures, and the least time that its traffic needs.
 *
 * The least time is that of the bytes at the line's speed and of the silence that ends each received frame. No cycle
 * can be shorter.
 */
class LineFigures final : public host::PortObserver {
public:
    /** Microseconds for which the program was stopped so far; not counted as answer time. */
    using StoppedTime = std::function<std::int64_t()>;

    /** @param baud bit/s; @param bitsPerByte start, data, parity and stop bits together */
    LineFigures(int baud, int bitsPerByte, StoppedTime stopped = nullptr);

    void onFrame(host::PortFrame const& frame) override;
    void onTimeout(std::int64_t at) override;

    /** Counts a failure that was reported for a call. */
    void countFailure(std::string const& cause) { ++failures_[cause]; }

    /** Counts a variable that was not good although its station answered. */
    void countBadValue(std::string const& cause) { ++badValues_[cause]; }

    [[nodiscard]] std::uint64_t failureCount() const;
    [[nodiscard]] double busyMs() const { return busyMicroseconds_ / 1'000; }
    [[nodiscard]] LineSummary summary() const;

private:
    [[nodiscard]] std::int64_t stoppedTime() const { return stopped_ ? stopped_() : 0; }

    double microsecondsPerByte_;
    StoppedTime stopped_;
    double busyMicroseconds_ = 0;
    std::uint64_t exchanges_ = 0;
    std::uint64_t answered_ = 0;
    std::int64_t askedAt_ = 0;
    std::int64_t stoppedBefore_ = 0; ///< it was asked
    bool asked_ = false;
    std::vector<std::int64_t> answerTimes_; ///< microseconds, the latest ones
    std::size_t nextTime_ = 0;
    std::map<std::string, std::uint64_t> failures_;
    std::map<std::string, std::uint64_t> badValues_;
};

/** Start, data, parity and stop bits of a byte. */
int bitsPerByte(std::string const& parity, int stopBits);

/** The closing line: "120 exchanges, 118 answered, ...". @param elapsedMs of the whole stretch */
std::string summaryText(LineSummary const& summary, double elapsedMs);

} // namespace velk
