#include "tools/velk/commands/watch/LineFigures.h"

#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace velk {
namespace {

constexpr double kMicrosecondsPerSecond = 1e6;
constexpr double kSilenceMicroseconds = 20'000; // that ends a received frame
constexpr std::size_t kMostTimes = 100'000;
constexpr double kMillisecond = 1'000; // in microseconds

/** The value that the given share of the sorted times does not exceed. */
double quantileMs(std::vector<std::int64_t> const& sorted, double share) {
    if (sorted.empty()) {
        return 0;
    }
    auto const last = static_cast<double>(sorted.size() - 1);
    auto const index = static_cast<std::size_t>(last * share + 0.5);
    return static_cast<double>(sorted[index]) / kMillisecond;
}

std::uint64_t total(std::map<std::string, std::uint64_t> const& counts) {
    return std::accumulate(counts.begin(), counts.end(), std::uint64_t{0},
                           [](std::uint64_t sum, auto const& one) { return sum + one.second; });
}

/** " (2 x this, 1 x that)", or nothing. */
std::string causes(std::map<std::string, std::uint64_t> const& counts) {
    std::string text;
    for (auto const& [cause, count] : counts) {
        text += fmt::format("{}{} x {}", text.empty() ? "" : ", ", count, cause);
    }
    return text.empty() ? text : " (" + text + ")";
}

/** How much of the time the line is in use; nothing for a port without a speed, which carries more than a line could.
 */
std::string useText(double share) {
    constexpr double kMeasuringError = 0.05;
    constexpr double kPercent = 100;
    return share > 1 + kMeasuringError
               ? std::string()
               : fmt::format("; line in use {:.0f} % of the time", kPercent * std::min(share, 1.0));
}

} // namespace

LineFigures::LineFigures(int baud, int bitsPerByte, StoppedTime stopped)
    : microsecondsPerByte_(kMicrosecondsPerSecond * bitsPerByte / std::max(baud, 1)), stopped_(std::move(stopped)) {}

void LineFigures::onFrame(host::PortFrame const& frame) {
    busyMicroseconds_ += static_cast<double>(frame.bytes.size()) * microsecondsPerByte_;
    if (frame.direction == host::FrameDirection::Sent) {
        exchanges_ += asked_ ? 0 : 1; // two frames in a row expect one answer
        asked_ = true;
        askedAt_ = frame.lastByteAt;
        stoppedBefore_ = stoppedTime();
        return;
    }
    busyMicroseconds_ += kSilenceMicroseconds;
    if (!asked_) {
        return;
    }
    asked_ = false;
    ++answered_;
    std::int64_t const stopped = stoppedTime() - stoppedBefore_;
    std::int64_t const time = std::max<std::int64_t>(frame.firstByteAt - askedAt_ - stopped, 0);
    if (answerTimes_.size() < kMostTimes) {
        answerTimes_.push_back(time);
    } else {
        answerTimes_[nextTime_] = time;
        nextTime_ = (nextTime_ + 1) % kMostTimes;
    }
}

void LineFigures::onTimeout(std::int64_t /*at*/) {
    asked_ = false;
}

std::uint64_t LineFigures::failureCount() const {
    return total(failures_);
}

LineSummary LineFigures::summary() const {
    std::vector<std::int64_t> sorted = answerTimes_;
    std::sort(sorted.begin(), sorted.end());
    LineSummary summary;
    summary.exchanges = exchanges_;
    summary.answered = answered_;
    summary.failures = failures_;
    summary.badValues = badValues_;
    summary.answerMedianMs = quantileMs(sorted, 0.5);
    summary.answer95Ms = quantileMs(sorted, 0.95);
    summary.answerWorstMs = quantileMs(sorted, 1);
    summary.busyMs = busyMs();
    return summary;
}

int bitsPerByte(std::string const& parity, int stopBits) {
    constexpr int kStartAndData = 9;
    return kStartAndData + (parity == "none" ? 0 : 1) + std::max(stopBits, 1);
}

std::string summaryText(LineSummary const& summary, double elapsedMs) {
    std::string const times = summary.answered == 0
                                  ? std::string("no answer times")
                                  : fmt::format("answer time median {:.1f} ms, 95 % within {:.1f} ms, worst {:.1f} ms",
                                                summary.answerMedianMs, summary.answer95Ms, summary.answerWorstMs);
    std::string const badValues =
        summary.badValues.empty() ? ""
                                  : fmt::format(", {} not good{}", counted(total(summary.badValues), "value", "values"),
                                                causes(summary.badValues));
    return fmt::format("{} asked, {} answered, {} failed{}{}; {}{}", counted(summary.exchanges, "frame", "frames"),
                       summary.answered, total(summary.failures), causes(summary.failures), badValues, times,
                       useText(elapsedMs > 0 ? summary.busyMs / elapsedMs : 0));
}

} // namespace velk
