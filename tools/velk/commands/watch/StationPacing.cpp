#include "tools/velk/commands/watch/StationPacing.h"

#include <algorithm>

namespace velk {
namespace {

constexpr std::int64_t kStep = 500'000;
constexpr std::int64_t kLongestPause = 10'000'000;

} // namespace

bool StationPacing::isDue(int node, std::int64_t now) const {
    auto const station = stations_.find(node);
    return station == stations_.end() || now >= station->second.dueAt;
}

void StationPacing::failed(int node, std::int64_t now) {
    Station& station = stations_[node];
    ++station.failures;
    station.dueAt = now + std::min(station.failures * kStep, kLongestPause);
}

int StationPacing::failures(int node) const {
    auto const station = stations_.find(node);
    return station == stations_.end() ? 0 : station->second.failures;
}

} // namespace velk
